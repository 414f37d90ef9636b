#include "tests/faults/methods.h"

#include "platform/local/change/revert.h"
#include "platform/local/change/settings.h"
#include "platform/local/change/trash.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/backup.h"
#include "platform/local/maintenance/repair.h"

#include <algorithm>
#include <limits>

#define CALL(...) [] { return __VA_ARGS__; }
#define ASK(name, ...) CALL(HOST(name, __VA_ARGS__))

namespace faults {

namespace {

// As a command of the tool reports.
std::function<std::string()> command(const std::function<bool()>& action) {
    return [action]() -> std::string {
        try {
            return action() ? done : "failed";
        } catch (const local::LibraryError&) {
            return "refused";
        }
    };
}

// The first transaction of a duplicated folder: the folder alone; the second: its album, which is
// filed by the third.
std::string copyFolder() {
    return HOST(CreateFolder, "Folder copy", nullptr);
}
std::string copyFolderAndAlbum() {
    copyFolder();
    return HOST(AddAssetsToAlbum, HOST(CreateAlbum, "Inner", nullptr), {id("favorite")});
}

// What the thread that folds the log into the catalogue does.
bool foldLog() {
    const auto connection = local::Library::open()->connection();
    return sqlite3_wal_checkpoint_v2(connection->handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE,
                                     nullptr, nullptr) == SQLITE_OK;
}

// Done when every step is, as the command says it.
bool repair() {
    const auto repaired = local::repairLibrary(library(), {.apply = true});
    const auto isDone = [](const auto& step) {
        return step.outcome == local::RepairStep::Outcome::done;
    };
    return repaired.complete && std::ranges::all_of(repaired.steps, isDone);
}

bool backUp() {
    const auto made = local::backUpLibrary(library(), backup(), {});
    return made.complete && made.findings.empty();
}

// An earlier backup, and something new since.
void prepareBackedUp() {
    prepareUsual();
    if (!backUp() || HOST(ImportAssets, {picture("import")}) == "(null)")
        std::abort();
}

void nothing() {}

} // namespace

Method opening(const std::string& name, const std::function<void()>& prepare,
               const std::string& wanted, bool damaged) {
    return {.name = name,
            .run = command([] { return local::Library::open() != nullptr; }),
            .wanted = wanted,
            .prepare = prepare,
            .opensFirst = false,
            .damaged = damaged};
}

std::vector<Method> allMethods() {
    return {
        {.name = "import", .run = ASK(ImportAssets, {picture("import")}), .prepare = prepareNew},
        {.name = "import-two",
         .run = ASK(ImportAssets, {picture("import"), picture("second")}),
         .between = {ASK(ImportAssets, {picture("import")}),
                     ASK(ImportAssets, {picture("second")})}},
        {"delete", ASK(DeleteAssets, {id("plain"), id("favorite")}), "2"},
        {"favorite", ASK(SetFavorite, {id("plain")}, JNI_TRUE), "1"},
        {"hide", ASK(SetHidden, {id("plain")}, JNI_TRUE), "1"},
        {.name = "copy-attributes",
         .run = ASK(CopyAssetAttributes, id("favorite"), id("plain")),
         .wanted = "1",
         .between = {ASK(SetFavorite, {id("plain")}, JNI_TRUE),
                     ASK(AddAssetsToAlbum, id("Inner"), {id("plain")})},
         .partialSuccess = true},
        {"add-to-album", ASK(AddAssetsToAlbum, id("Album"), {id("favorite")}), "1"},
        {"remove-from-album", ASK(RemoveAssetsFromAlbum, id("Album"), {id("plain")}), "1"},
        {"create-album", ASK(CreateAlbum, "New album", nullptr)},
        {.name = "create-album-in-folder",
         .run = ASK(CreateAlbum, "New album", id("Folder")),
         .between = {ASK(CreateAlbum, "New album", nullptr)}},
        {"create-folder", ASK(CreateFolder, "New folder", nullptr)},
        {"rename-album", ASK(RenameAlbum, id("Album"), "Renamed"), "0"},
        {"rename-folder", ASK(RenameAlbum, id("Folder"), "Renamed"), "0"},
        {"delete-album", ASK(DeleteAlbum, id("Album")), "0"},
        {"delete-folder", ASK(DeleteAlbum, id("Folder")), "0"},
        {"duplicate-album", ASK(DuplicateCollection, id("Album"))},
        {.name = "duplicate-folder",
         .run = ASK(DuplicateCollection, id("Folder")),
         .between = {copyFolder, copyFolderAndAlbum},
         .partialSuccess = true},
        {"edit", ASK(ApplyEdit, id("plain"), picture("rendered")), "0"},
        {"edit-again", ASK(ApplyEdit, id("edited"), picture("again")), "0"},
        {.name = "edit-beside-the-dead",
         .run = ASK(ApplyEdit, id("plain"), picture("rendered")),
         .wanted = "0",
         .before = makeShelves},
        {"revert", command(CALL(local::revertEdits({id("edited")}), true)), done},
        {"restore", command(CALL(local::restoreFromTrash({id("trashed")}), true)), done},
        {"empty-trash",
         command(CALL(local::emptyTrash(std::numeric_limits<std::int64_t>::max()), true)), done},
        {"limit-access", command(CALL(local::limitAccess({id("plain"), id("edited")}), true)),
         done},
        {"fold-log", command(foldLog), done},
        {.name = "backup",
         .run = command(backUp),
         .wanted = done,
         .prepare = prepareBackedUp,
         .mayFailLate = true},
        {.name = "first-import",
         .run = ASK(ImportAssets, {picture("import")}),
         .prepare = nothing,
         .opensFirst = false},
        opening("create-library", nothing, done),
        opening("open-after-crash", prepareLeftBehind, done),
        opening("migrate-1", CALL(prepareOlder(1)), done, true),
        opening("migrate-2", CALL(prepareOlder(2)), done, true),
        opening("catalogue-lost", prepareWithoutCatalogue, "refused", true),
        {.name = "repair",
         .run = command(repair),
         .wanted = done,
         .between = {[] { changeRows("UPDATE library SET listed = listed - 5"); },
                     [] { fs::remove(library() / stray()); }},
         .prepare = prepareDamaged,
         .damaged = true},
    };
}

} // namespace faults
