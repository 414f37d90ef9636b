// photos-kit import: files and folders into the library, each file on its own.
#include "platform/change_requests.h"
#include "platform/files.h"
#include "platform/local/store/file_store.h"
#include "platform/local/store/incoming_file.h"
#include "platform/photo_library.h"
#include "tool/command.h"
#include "tool/files_to_import.h"
#include "tool/interruption.h"
#include "tool/library_view.h"
#include "tool/output.h"
#include "tool/text.h"

#include <cerrno>

namespace tool {

namespace {

struct Imported {
    std::string path;
    std::string identifier;
};

struct Import {
    std::vector<Imported> imported;
    std::vector<RefusedPath> refused;
    std::size_t left = 0; // not tried, because of a signal
};

long resourceTypeOf(const platform::NSURL& file) {
    const auto type = platform::contentTypeOfFileAtURL(file);
    const bool movie = type && platform::conformsToType(*type, platform::UTTypeMovie);
    return movie ? platform::PHAssetResourceTypeVideo : platform::PHAssetResourceTypePhoto;
}

[[noreturn]] void importFailed(const std::optional<platform::NSError>& error) {
    if (interrupted() && error && error->domain == local::posixErrorDomain &&
        error->code == ECANCELED)
        throw Stopped{};
    throw Failure(error && error->localizedDescription ? *error->localizedDescription
                                                       : "The reason is not known.");
}

// The new asset's identifier; throws Failure with the reason, or Stopped when nothing of it stayed.
std::string importFile(const std::filesystem::path& path) {
    const platform::NSURL file = platform::fileURLWithPath(path.string());
    const platform::PHAssetResourceCreationOptions options{// Hosts are handed this name as text.
                                                           .originalFilename =
                                                               validUtf8(path.filename().string())};
    std::optional<platform::PHObjectPlaceholder> placeholder;
    std::optional<platform::NSError> error;
    const bool imported = platform::performChangesAndWait(
        [&] {
            const auto request = platform::creationRequestForAsset();
            platform::addResourceWithType(request, resourceTypeOf(file), file, options);
            placeholder = platform::placeholderForCreatedAsset(request);
        },
        error);
    if (!imported || !placeholder || !placeholder->localIdentifier)
        importFailed(error);
    return *placeholder->localIdentifier;
}

Import importAll(const std::vector<std::string>& paths) {
    Import outcome;
    FilesToImport found = findFilesToImport(paths);
    Progress progress("Importing", found.files.size());
    const auto refuse = [&](RefusedPath refused) {
        progress.clear();
        complain(refused.path + ": " + refused.reason);
        outcome.refused.push_back(std::move(refused));
    };
    for (RefusedPath& refused : found.refused)
        refuse(std::move(refused));
    std::size_t tried = 0;
    for (const auto& path : found.files) {
        if (interrupted())
            break;
        progress.show(tried, path.filename().string());
        try {
            outcome.imported.push_back({path.string(), importFile(path)});
        } catch (const Failure& failure) {
            refuse({path.string(), failure.what()});
        } catch (const Stopped&) {
            break;
        }
        ++tried;
    }
    outcome.left = found.files.size() - tried;
    return outcome;
}

Json jsonOf(const Import& outcome) {
    Json json{{"imported", Json::array()}, {"refused", Json::array()}, {"left", outcome.left}};
    for (const Imported& one : outcome.imported)
        json["imported"].push_back({{"path", one.path}, {"id", one.identifier}});
    for (const RefusedPath& one : outcome.refused)
        json["refused"].push_back({{"path", one.path}, {"reason", one.reason}});
    return json;
}

void summarize(const Import& outcome) {
    std::string sentence =
        "Imported " +
        countText(static_cast<std::int64_t>(outcome.imported.size()), "file", "files");
    if (!outcome.refused.empty())
        sentence += "; " + std::to_string(outcome.refused.size()) + " refused";
    if (outcome.left > 0)
        sentence += "; stopped before " + std::to_string(outcome.left) + " more";
    say(sentence + ".");
}

int import(const std::vector<std::string>& paths, bool json) {
    requireOrMakeLibrary();
    requireAccess();
    noteInterruptions();
    local::stopCopiesWhen(interrupted);
    const Import outcome = importAll(paths);
    if (json)
        print(jsonOf(outcome));
    else
        summarize(outcome);
    if (interrupted())
        return stopped;
    return outcome.refused.empty() ? done : failed;
}

struct ImportOptions {
    std::vector<std::string> paths;
    bool json = false;
};

} // namespace

void addImport(Tool& tool) {
    CLI::App* command =
        tool.app.add_subcommand("import", "Copy pictures and videos into the library");
    const auto options = std::make_shared<ImportOptions>();
    command->add_option("PATH", options->paths, "Files, and folders with all that is below them")
        ->required()
        ->type_name("");
    addJson(command, options->json);
    command->footer(
        R"(Each file is copied into the library and safe there when its turn is over; the
file itself stays where it is. A file that cannot be taken costs only itself:
it is named with the reason, the others go in, and the exit code is 1. Ctrl-C
stops: what went in stays, and nothing of the file at work.

In folders, names that begin with a dot are passed over, and links to folders
are refused. A file that is imported twice is in the library twice.

Examples:
  photos-kit import ~/Camera
  photos-kit import holiday/*.jpg film.mp4
  photos-kit import --json /media/card | jq -r '.refused[].path')");
    tool.onRun(command, [options] { return import(options->paths, options->json); });
}

} // namespace tool
