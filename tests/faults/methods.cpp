#include "tests/faults/methods.h"

#include "platform/local/change/revert.h"
#include "platform/local/change/settings.h"
#include "platform/local/change/trash.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/backup.h"
#include "platform/local/maintenance/repair.h"
#include "tests/faults/prepared_libraries.h"

#include <limits>

namespace faults {

namespace {

Report answered(const std::string& answer, const char* wanted) {
    return {answer == wanted, ""};
}

// A method that answers identifiers.
Report made(const std::string& answer) {
    return {answer.find("(null)") == std::string::npos, answer.substr(0, answer.find(','))};
}

// As a command of the tool reports.
Report command(const std::function<bool()>& action) {
    try {
        return {action(), ""};
    } catch (const local::LibraryError&) {
        return {};
    }
}

// Each attribute goes over in a transaction of its own, whatever became of those before it.
std::vector<std::function<void(const Names&)>> someAttributes() {
    std::vector<std::function<void(const Names&)>> some;
    for (unsigned parts = 1; parts < 7; ++parts) {
        some.emplace_back([parts](const Names& names) {
            if ((parts & 1) != 0)
                HOST(SetFavorite, {names.at("plain")}, JNI_TRUE);
            if ((parts & 2) != 0)
                HOST(AddAssetsToAlbum, names.at("Other"), {names.at("plain")});
            if ((parts & 4) != 0)
                HOST(AddAssetsToAlbum, names.at("Inner"), {names.at("plain")});
        });
    }
    return some;
}

// The first transaction of a duplicated folder: the folder alone; the second: its album, which is
// filed by the third.
void folderCopyAndAlbumCopy(const Names& names) {
    HOST(CreateFolder, "Folder copy", nullptr);
    HOST(AddAssetsToAlbum, HOST(CreateAlbum, "Inner", nullptr), {names.at("favorite")});
}

// What the thread that folds the log into the catalogue does.
bool foldLog() {
    const auto connection = local::Library::open()->connection();
    for (const int mode : {SQLITE_CHECKPOINT_PASSIVE, SQLITE_CHECKPOINT_TRUNCATE}) {
        if (sqlite3_wal_checkpoint_v2(connection->handle(), nullptr, mode, nullptr, nullptr) !=
            SQLITE_OK)
            return false;
    }
    return true;
}

// Done when every step is, as the command says it.
bool repair() {
    local::RepairOptions options;
    options.apply = true;
    const auto repaired = local::repairLibrary(here().library(), options);
    return repaired.complete &&
           std::ranges::all_of(repaired.steps, [](const local::RepairStep& step) {
               return step.outcome == local::RepairStep::Outcome::done;
           });
}

bool backUp() {
    const auto backup = local::backUpLibrary(here().library(), here().backup(), {});
    return backup.complete && backup.findings.empty();
}

// An earlier backup, and something new since.
Names prepareBackedUp() {
    Names names = prepareUsual();
    if (!backUp())
        std::abort();
    names["new"] = HOST(ImportAssets, {pathInHome("import.jpg")});
    return names;
}

Names prepareNothing() {
    return {};
}

// Methods that answer text on the usual library, which is most of them.
#define ON_USUAL(name, body, ...)                                                                  \
    Method {                                                                                       \
        name, prepareUsual, []([[maybe_unused]] const Names& names) { return body; },              \
            __VA_OPT__(__VA_ARGS__)                                                                \
    }
#define OPENING(name, prepare, ...)                                                                \
    Method {                                                                                       \
        name, prepare, openLibrary, {}, Terms {                                                    \
            .opensFirst = false __VA_OPT__(, ) __VA_ARGS__                                         \
        }                                                                                          \
    }

std::vector<Method> makeMethods() {
    const auto import = [](const Names&) {
        return made(HOST(ImportAssets, {pathInHome("import.jpg")}));
    };
    return {
        {"import", prepareUsual, import, {}, {.emptyShelves = true}},
        ON_USUAL("import-two",
                 made(HOST(ImportAssets, {pathInHome("import.jpg"), pathInHome("second.jpg")})),
                 {[](const Names&) { HOST(ImportAssets, {pathInHome("import.jpg")}); },
                  [](const Names&) { HOST(ImportAssets, {pathInHome("second.jpg")}); }},
                 {}),
        ON_USUAL("delete",
                 answered(HOST(DeleteAssets, {names.at("plain"), names.at("favorite")}), "2")),
        ON_USUAL("favorite", answered(HOST(SetFavorite, {names.at("plain")}, JNI_TRUE), "1")),
        ON_USUAL("hide", answered(HOST(SetHidden, {names.at("plain")}, JNI_TRUE), "1")),
        ON_USUAL("copy-attributes",
                 answered(HOST(CopyAssetAttributes, names.at("favorite"), names.at("plain")), "2"),
                 someAttributes(), Terms{.partialSuccess = true}),
        ON_USUAL("add-to-album",
                 answered(HOST(AddAssetsToAlbum, names.at("Album"), {names.at("favorite")}), "1")),
        ON_USUAL(
            "remove-from-album",
            answered(HOST(RemoveAssetsFromAlbum, names.at("Album"), {names.at("plain")}), "1")),
        ON_USUAL("create-album", made(HOST(CreateAlbum, "New album", nullptr))),
        ON_USUAL("create-album-in-folder", made(HOST(CreateAlbum, "New album", names.at("Folder"))),
                 {[](const Names&) { HOST(CreateAlbum, "New album", nullptr); }}, {}),
        ON_USUAL("create-folder", made(HOST(CreateFolder, "New folder", nullptr))),
        ON_USUAL("rename-album", answered(HOST(RenameAlbum, names.at("Album"), "Renamed"), "0")),
        ON_USUAL("rename-folder", answered(HOST(RenameAlbum, names.at("Folder"), "Renamed"), "0")),
        ON_USUAL("delete-album", answered(HOST(DeleteAlbum, names.at("Album")), "0")),
        ON_USUAL("delete-folder", answered(HOST(DeleteAlbum, names.at("Folder")), "0")),
        ON_USUAL("duplicate-album", made(HOST(DuplicateCollection, names.at("Album")))),
        ON_USUAL("duplicate-folder", made(HOST(DuplicateCollection, names.at("Folder"))),
                 {[](const Names&) { HOST(CreateFolder, "Folder copy", nullptr); },
                  folderCopyAndAlbumCopy},
                 Terms{.partialSuccess = true}),
        ON_USUAL("edit",
                 answered(HOST(ApplyEdit, names.at("plain"), pathInHome("rendered.jpg")), "0")),
        ON_USUAL("edit-again",
                 answered(HOST(ApplyEdit, names.at("edited"), pathInHome("again.jpg")), "0")),
        // Processes had made shelves and died before syncing their names.
        ON_USUAL("edit-beside-the-dead",
                 (makeShelves(here().library() / "renders"),
                  answered(HOST(ApplyEdit, names.at("plain"), pathInHome("rendered.jpg")), "0"))),
        ON_USUAL("revert", command([&] { return local::revertEdits({names.at("edited")}), true; })),
        ON_USUAL("restore",
                 command([&] { return local::restoreFromTrash({names.at("trashed")}), true; })),
        ON_USUAL("empty-trash", command([] {
                     return local::emptyTrash(std::numeric_limits<std::int64_t>::max()), true;
                 })),
        ON_USUAL("limit-access", command([&] {
                     return local::limitAccess({names.at("plain"), names.at("edited")}), true;
                 })),
        ON_USUAL("fold-log", command(foldLog)),
        {"backup",
         prepareBackedUp,
         [](const Names&) { return command(backUp); },
         {},
         {.mayFailLate = true}},
        {"first-import", prepareNothing, import, {}, {.opensFirst = false}},
        OPENING("create-library", prepareNothing),
        OPENING("open-after-crash", prepareLeftBehind),
        OPENING(
            "migrate-1", [] { return prepareOlder(1); }, .damaged = true),
        OPENING(
            "migrate-2", [] { return prepareOlder(2); }, .damaged = true),
        OPENING("catalogue-lost", prepareWithoutCatalogue, .refused = true),
        {"repair",
         prepareDamaged,
         [](const Names&) { return command(repair); },
         {[](const Names&) { correctCount(-5); },
          [](const Names& names) {
              std::filesystem::remove(here().library() / names.at("stray"));
          }},
         {.damaged = true}},
    };
}

} // namespace

Report openLibrary(const Names&) {
    return command([] { return local::Library::open() != nullptr; });
}

const std::vector<Method>& allMethods() {
    static const std::vector<Method> methods = makeMethods();
    return methods;
}

} // namespace faults
