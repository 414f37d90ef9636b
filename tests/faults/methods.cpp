#include "tests/faults/methods.h"

#include "bridge/entry_points.h"
#include "platform/local/catalogue/catalogue_schema.h"
#include "platform/local/change/revert.h"
#include "platform/local/change/settings.h"
#include "platform/local/change/trash.h"
#include "platform/local/imaging/imaging.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/backup.h"
#include "platform/local/maintenance/repair.h"
#include "tests/support/files.h"
#include "tests/support/jni_double.h"

#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>
#include <stdexcept>

// A method of the host's class; its answer is text.
#define HOST(name, ...) jni::Environment().call(METHOD(name), __VA_ARGS__)
#define DO(...) [] { return __VA_ARGS__; }
#define ASK(name, ...) DO(HOST(name, __VA_ARGS__))

namespace faults {

namespace {

constexpr const char* done = "done";

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

// --- libraries ---

// The identifier of what a library holds, by its name.
std::string id(const std::string& name) {
    return support::readBytes(besideHome("id of " + name));
}
void keepId(const std::string& name, const std::string& identifier) {
    support::writeText(besideHome("id of " + name), identifier);
}

std::string picture(const std::string& name) {
    return besideHome(name + ".jpg");
}

void writePictures() {
    unsigned number = 0;
    for (const char* name : {"import", "second", "plain", "favorite", "hidden", "edited", "trashed",
                             "rendered", "again"}) {
        ++number;
        std::vector<std::uint8_t> pixels(64 * 48 * 3);
        std::ranges::generate(pixels, std::mt19937(number));
        const auto jpeg = local::encodeJpeg({64, 48, pixels}, 90).value();
        support::writeText(picture(name), std::string(jpeg.begin(), jpeg.end()));
        // In 2021, so that a capture date does not change from run to run.
        const std::chrono::sys_seconds taken(std::chrono::seconds(1614834367 + number));
        fs::last_write_time(picture(name), std::chrono::file_clock::from_sys(taken));
    }
}

// With all 256 shelves.
void prepareNew() {
    writePictures();
    for (const char* name : {"plain", "favorite", "hidden", "edited", "trashed"})
        keepId(name, HOST(ImportAssets, {picture(name)}));
    keepId("Album", HOST(CreateAlbum, "Album", nullptr));
    keepId("Folder", HOST(CreateFolder, "Folder", nullptr));
    keepId("Inner", HOST(CreateAlbum, "Inner", id("Folder")));
    std::string answers;
    for (const std::string& answer :
         {HOST(AddAssetsToAlbum, id("Album"), {id("edited"), id("plain"), id("trashed")}),
          HOST(AddAssetsToAlbum, id("Inner"), {id("favorite")}),
          HOST(SetFavorite, {id("favorite")}, JNI_TRUE), HOST(SetHidden, {id("hidden")}, JNI_TRUE),
          HOST(ApplyEdit, id("edited"), picture("rendered")),
          HOST(ApplyEdit, id("trashed"), picture("again")), HOST(DeleteAssets, {id("trashed")})})
        answers += answer;
    if (answers != "3111001")
        throw std::logic_error("a library could not be prepared: " + answers);
}

constexpr const char* stray = "originals/EE/EE000000-0000-4000-8000-000000000000.jpg";

// Puts a picture into the library past all that keeps it right.
void smuggle(const fs::path& path) {
    fs::create_directories((library() / path).parent_path());
    fs::copy_file(picture("import"), library() / path);
}

void changeRows(const std::string& sql) {
    local::Library::open()->connectionForChanges()->execute(sql.c_str());
}

// As a process left it that died: a placed original and a render without rows, a file on its way
// in, an edit in progress, a file that no row names any longer.
void prepareLeftBehind() {
    prepareUsual();
    const std::string rest = "000000-0000-4000-8000-000000000000";
    smuggle("originals/AA/AA" + rest + ".jpg");
    smuggle("renders/BB/BB" + rest + ".jpg");
    smuggle("incoming/CC" + rest + ".jpg");
    smuggle("incoming/DD" + rest + ".edit/rendered.jpg");
    for (const std::string& lock : {"AA" + rest + ".jpg.importing", "BB" + rest + ".jpg.editing",
                                    "CC" + rest + ".jpg.importing"})
        support::writeText(library() / "incoming" / lock, "");
    smuggle(stray);
    changeRows("INSERT INTO discarded_file VALUES ('" + std::string(stray) + "')");
}

// A count of five too many, and a file that no row names.
void prepareDamaged() {
    prepareUsual();
    smuggle(stray);
    changeRows("UPDATE library SET listed = listed + 5");
}

void prepareWithoutCatalogue() {
    prepareUsual();
    for (const char* name : {"library.db", "library.db-wal", "library.db-shm"})
        fs::remove(library() / name);
}

// Three assets in a catalogue of the first version; their files are not there, which is part of
// the library's state.
void prepareOlder() {
    for (const char* folder : {"originals", "renders", "incoming", "derivatives"})
        fs::create_directories(library() / folder);
    const local::UniqueFd folder(::open(library().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    local::CatalogueConnection connection(folder.get(), local::CatalogueConnection::Mode::readWrite,
                                          true);
    connection.execute("PRAGMA journal_mode=WAL");
    local::prepareSchema(connection, local::schemaSteps().first(1));
    connection.execute(R"(
        INSERT INTO asset (uuid, created, media, width, height, hidden, filename, content_type,
                           stored_as, hash, size, added)
        SELECT randomblob(16), 1600000000000 + column1, 1, 64, 48, column1 % 2, 'old.jpg',
               'public.jpeg', hex(randomblob(16)) || '.jpg', zeroblob(16), 9, 1600000000000
        FROM (VALUES (0), (1), (2));
        INSERT INTO favorite SELECT created, n FROM asset WHERE n < 3)");
}

// --- what methods do ---

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
    using Step = local::RepairStep;
    const auto isDone = [](Step::Outcome outcome) { return outcome == Step::Outcome::done; };
    return repaired.complete && std::ranges::all_of(repaired.steps, isDone, &Step::outcome);
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

} // namespace

void prepareUsual() {
    prepareNew();
    for (const auto& shelf : fs::directory_iterator(library() / "originals")) {
        if (shelf.is_directory() && fs::is_empty(shelf))
            fs::remove(shelf);
    }
}

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
         .prepare = prepareNew,
         .before = DO(fs::copy(library() / "originals", library() / "renders",
                               fs::copy_options::recursive | fs::copy_options::directories_only))},
        {"revert", command(DO(local::revertEdits({id("edited")}), true)), done},
        {"restore", command(DO(local::restoreFromTrash({id("trashed")}), true)), done},
        {"empty-trash",
         command(DO(local::emptyTrash(std::numeric_limits<std::int64_t>::max()), true)), done},
        {"limit-access", command(DO(local::limitAccess({id("plain"), id("edited")}), true)), done},
        {"fold-log", command(foldLog), done},
        {.name = "backup",
         .run = command(backUp),
         .wanted = done,
         .prepare = prepareBackedUp,
         .mayFailLate = true},
        {.name = "first-import",
         .run = ASK(ImportAssets, {picture("import")}),
         .prepare = writePictures,
         .opensFirst = false},
        opening("open-after-crash", prepareLeftBehind),
        opening("migrate", prepareOlder, done, true),
        opening("catalogue-lost", prepareWithoutCatalogue, "refused", true),
        {.name = "repair",
         .run = command(repair),
         .wanted = done,
         .between = {DO(changeRows("UPDATE library SET listed = listed - 5")),
                     DO(fs::remove(library() / stray))},
         .prepare = prepareDamaged,
         .damaged = true},
    };
}

} // namespace faults
