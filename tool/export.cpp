// photos-kit export: checked copies of assets' files.
#include "platform/local/system/library_error.h"
#include "tool/command.h"
#include "tool/export_folder.h"
#include "tool/export_name.h"
#include "tool/interruption.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

#include <sys/stat.h>

namespace tool {

namespace {

struct ExportOptions {
    std::string folder;
    std::vector<std::string> identifiers;
    std::string album;
    bool all = false;
    bool original = false;
    bool json = false;
};

struct Export {
    struct Written {
        std::string identifier;
        std::string name;
    };
    struct Failed {
        std::string identifier;
        std::string reason;
    };
    std::vector<Written> written;
    std::vector<Failed> failed;
    std::size_t left = 0;   // not tried, because of a signal
    std::size_t hidden = 0; // left out of everything that was asked for
    std::int64_t bytes = 0;
};

// Identifiers only: an export takes long, and a fetch would hold the library's snapshot as long.
std::vector<std::string> identifiersIn(const platform::PHFetchResult<platform::PHAsset>& assets) {
    std::vector<std::string> identifiers;
    const std::size_t count = assets.count();
    for (std::size_t i = 0; i < count; ++i) {
        const auto asset = assets.objectAtIndex(i);
        if (!asset)
            throw Failure("The library could not be read to its end; nothing was exported.");
        identifiers.push_back(asset->localIdentifier);
    }
    return identifiers;
}

std::vector<std::string> wantedIdentifiers(const ExportOptions& options) {
    if (options.all)
        return identifiersIn(assetsOf(nullptr));
    if (options.album.empty())
        return assetIdentifiers(options.identifiers);
    const auto album = albumWithIdentifier(options.album);
    return identifiersIn(assetsOf(&album));
}

// The edited version where there is one and it is wanted, else what was imported.
std::optional<platform::PHAssetResource> resourceOf(const platform::PHAsset& asset, bool original) {
    std::optional<platform::PHAssetResource> imported;
    for (auto& resource : platform::assetResourcesForAsset(asset)) {
        const bool edited = resource.type == platform::PHAssetResourceTypeFullSizePhoto ||
                            resource.type == platform::PHAssetResourceTypeFullSizeVideo;
        if (edited && !original)
            return std::move(resource);
        if (!imported && (resource.type == platform::PHAssetResourceTypePhoto ||
                          resource.type == platform::PHAssetResourceTypeVideo))
            imported = std::move(resource);
    }
    return imported;
}

std::string nameFor(const platform::PHAsset& asset, const platform::PHAssetResource& resource) {
    std::string name = safeName(filenameOf(asset));
    return resource.type == platform::PHAssetResourceTypeFullSizePhoto ? jpegName(std::move(name))
                                                                       : name;
}

class Exporter {
public:
    Exporter(const ExportOptions& options, std::vector<std::string> identifiers)
        : options_(options), identifiers_(std::move(identifiers)), folder_(options.folder),
          progress_("Exporting", identifiers_.size()) {}

    Export run() {
        try {
            for (const std::string& identifier : identifiers_)
                exportOne(identifier);
        } catch (const Stopped&) {
            outcome_.left = identifiers_.size() - outcome_.written.size() - outcome_.failed.size();
        }
        folder_.sync();
        return std::move(outcome_);
    }

private:
    void exportOne(const std::string& identifier) {
        if (interrupted())
            throw Stopped{};
        at_.clear();
        try {
            write(identifier);
        } catch (const std::exception& failure) {
            progress_.clear();
            const std::string name = at_.empty() ? "" : at_ + ", ";
            complain(name + shownIdentifier(identifier) + ": " + failure.what());
            outcome_.failed.push_back({identifier, failure.what()});
        }
    }

    void write(const std::string& identifier) {
        const auto assets = platform::fetchAssetsWithLocalIdentifiers({identifier});
        const auto asset = assets.count() > 0 ? assets.objectAtIndex(0) : std::nullopt;
        if (!asset)
            throw Failure("It is not in the library.");
        at_ = filenameOf(*asset);
        const auto resource = resourceOf(*asset, options_.original);
        if (!resource)
            throw Failure("It has no file to export.");
        const std::string name = nameFor(*asset, *resource);
        std::int64_t written = 0;
        show(name, written);
        std::string given = folder_.write(*resource, name, creationMilliseconds(*asset),
                                          [&](std::int64_t bytes) { show(name, bytes); });
        outcome_.written.push_back({identifier, std::move(given)});
    }

    void show(const std::string& name, std::int64_t bytes) {
        const std::string size = bytes > 0 ? " (" + sizeText(bytes) + ")" : "";
        progress_.show(outcome_.written.size() + outcome_.failed.size(), name + size);
    }

    const ExportOptions& options_;
    std::vector<std::string> identifiers_;
    ExportFolder folder_;
    Progress progress_;
    Export outcome_;
    std::string at_; // the name of the asset at work, once it is known
};

std::size_t countHidden() {
    constexpr const char* hiddenAlbum = "00000000-0000-0000-0000-000000000205/L0/040";
    const auto album = albumWithIdentifier(hiddenAlbum);
    return assetsOf(&album).count();
}

Json jsonOf(const Export& outcome) {
    Json json{{"exported", Json::array()},
              {"failed", Json::array()},
              {"left", outcome.left},
              {"hiddenLeftOut", outcome.hidden}};
    for (const auto& one : outcome.written)
        json["exported"].push_back({{"id", one.identifier}, {"filename", one.name}});
    for (const auto& one : outcome.failed)
        json["failed"].push_back({{"id", one.identifier}, {"reason", one.reason}});
    return json;
}

void summarize(const Export& outcome) {
    std::string sentence =
        "Exported " + countText(static_cast<std::int64_t>(outcome.written.size()), "file", "files");
    if (!outcome.failed.empty())
        sentence += "; " + std::to_string(outcome.failed.size()) + " failed";
    if (outcome.left > 0)
        sentence += "; stopped before " + std::to_string(outcome.left) + " more";
    say(sentence + ".");
    if (outcome.hidden > 0)
        say(countText(static_cast<std::int64_t>(outcome.hidden), "hidden asset was",
                      "hidden assets were") +
            " left out: export the album Hidden for them (see photos-kit albums).");
}

int exportAssets(const ExportOptions& options) {
    const int wishes =
        int{options.all} + int{!options.album.empty()} + int{!options.identifiers.empty()};
    if (wishes != 1) {
        complain("Say what to export: either identifiers, or --album ID, or --all.");
        return wrongUse;
    }
    requireLibrary();
    requireAccess();
    noteInterruptions();
    Export outcome = Exporter(options, wantedIdentifiers(options)).run();
    outcome.hidden = options.all ? countHidden() : 0;
    if (options.json)
        print(jsonOf(outcome));
    else
        summarize(outcome);
    if (interrupted())
        return stopped;
    return outcome.failed.empty() ? done : failed;
}

} // namespace

void addExport(Tool& tool) {
    CLI::App* command =
        tool.app.add_subcommand("export", "Copy pictures and videos out of the library");
    const auto options = std::make_shared<ExportOptions>();
    command->add_option("DIR", options->folder, "The folder, made where it is missing")
        ->required()
        ->type_name("");
    command->add_option("ID", options->identifiers, "Assets, as list shows them")->type_name("");
    command->add_option("--album", options->album, "All of an album")->type_name("ID");
    command->add_flag("--all", options->all, "All that list shows");
    command->add_flag("--original", options->original, "As imported, without edits");
    addJson(command, options->json);
    command->footer(
        R"(Files get the names they were imported with; a name that is taken gets a number,
and no file is ever overwritten. Every byte is checked on the way: a damaged
file is told and not written. Edited assets come out as edited (a JPEG), unless
--original is given. Hidden assets are no part of --all; export the album
Hidden for them. Files are dated as the pictures were taken.

Ctrl-C leaves whole files only. A process that is killed may leave one file
.photos-kit-*.part behind.

Examples:
  photos-kit export /media/stick --all
  photos-kit export ~/best --album 00000000-0000-0000-0000-000000000203
  photos-kit export . 0F4C2B1E-6D9A-4A55-9C56-0C0B2F0D8A11 --original)");
    tool.onRun(command, [options] { return exportAssets(*options); });
}

} // namespace tool
