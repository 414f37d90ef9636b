#include "tests/faults/methods.h"

#include "bridge/entry_points.h"
#include "platform/local/change/edits.h"
#include "platform/local/change/revert.h"
#include "platform/local/change/settings.h"
#include "platform/local/change/trash.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/backup.h"
#include "platform/local/maintenance/repair.h"
#include "tests/faults/prepared_libraries.h"
#include "tests/support/jni_double.h"

#include <array>
#include <cstdio>
#include <limits>

#define CALL(method) Java_com_morrowfen_lumatrice_service_PhotosService_native##method

namespace faults {

namespace {

using jni::Environment;

// Methods that answer how many, and those that answer 0.
Report counted(jint answer, jint all) {
    return {answer == all, ""};
}

Report done(jint answer) {
    return counted(answer, 0);
}

Report made(const std::string& identifier) {
    return {!identifier.empty(), identifier};
}

jobjectArray only(Environment& jvm, const std::string& identifier) {
    return jvm.array({jvm.string(identifier)});
}

// As a command of the tool reports.
Report command(const std::function<void()>& action) {
    try {
        action();
        return {true, ""};
    } catch (const local::LibraryError&) {
        return {};
    }
}

Report import(const Names&) {
    return made(importPicture(pathInHome("import.jpg")));
}

Report importTwo(const Names&) {
    Environment jvm;
    const auto answers = jvm.textsOf(CALL(ImportAssets)(
        jvm.env(), nullptr,
        jvm.array({jvm.string(pathInHome("import.jpg")), jvm.string(pathInHome("second.jpg"))})));
    return {answers.size() == 2 && answers[0] && answers[1], answers[0].value_or("")};
}

Report deleteAssets(const Names& names) {
    Environment jvm;
    return counted(CALL(DeleteAssets)(jvm.env(), nullptr,
                                      jvm.array({jvm.string(names.at("plain")),
                                                 jvm.string(names.at("favorite"))})),
                   2);
}

Report setFavorite(const Names& names) {
    Environment jvm;
    return counted(CALL(SetFavorite)(jvm.env(), nullptr, only(jvm, names.at("plain")), 1), 1);
}

Report setHidden(const Names& names) {
    Environment jvm;
    return counted(CALL(SetHidden)(jvm.env(), nullptr, only(jvm, names.at("plain")), 1), 1);
}

Report copyAttributes(const Names& names) {
    Environment jvm;
    return counted(CALL(CopyAssetAttributes)(jvm.env(), nullptr, jvm.string(names.at("favorite")),
                                             jvm.string(names.at("plain"))),
                   2);
}

// Each attribute goes over in a transaction of its own, whatever became of those before it.
std::vector<std::function<void(const Names&)>> someAttributes() {
    std::vector<std::function<void(const Names&)>> some;
    for (unsigned parts = 1; parts < 7; ++parts) {
        some.emplace_back([parts](const Names& names) {
            if ((parts & 1) != 0)
                setFavorite(names);
            if ((parts & 2) != 0)
                addToAlbum(names.at("Other"), names.at("plain"));
            if ((parts & 4) != 0)
                addToAlbum(names.at("Inner"), names.at("plain"));
        });
    }
    return some;
}

Report removeFromAlbum(const Names& names) {
    Environment jvm;
    return counted(CALL(RemoveAssetsFromAlbum)(jvm.env(), nullptr, jvm.string(names.at("Album")),
                                               only(jvm, names.at("plain"))),
                   1);
}

Report rename(const Names& names, const std::string& collection) {
    Environment jvm;
    return done(CALL(RenameAlbum)(jvm.env(), nullptr, jvm.string(names.at(collection)),
                                  jvm.string("Renamed")));
}

Report deleteCollection(const Names& names, const std::string& collection) {
    Environment jvm;
    return done(CALL(DeleteAlbum)(jvm.env(), nullptr, jvm.string(names.at(collection))));
}

Report duplicate(const Names& names, const std::string& collection) {
    Environment jvm;
    const jstring copy =
        CALL(DuplicateCollection)(jvm.env(), nullptr, jvm.string(names.at(collection)));
    return made(copy ? Environment::textOf(copy) : "");
}

// The first transaction of a duplicated folder: the folder alone; the second: its album, which is
// filed by the third.
void folderCopyAlone(const Names&) {
    makeFolder("Folder copy");
}

void folderCopyAndAlbumCopy(const Names& names) {
    makeFolder("Folder copy");
    addToAlbum(makeAlbum("Inner"), names.at("favorite"));
}

Report limitAccess(const Names& names) {
    return command([&] { local::limitAccess({names.at("plain"), names.at("edited")}); });
}

// What the thread that folds the log into the catalogue does.
Report foldLog(const Names&) {
    return command([] {
        const auto connection = local::Library::open()->connection();
        for (const int mode : {SQLITE_CHECKPOINT_PASSIVE, SQLITE_CHECKPOINT_TRUNCATE}) {
            const int code =
                sqlite3_wal_checkpoint_v2(connection->handle(), nullptr, mode, nullptr, nullptr);
            if (code != SQLITE_OK)
                throw local::LibraryError(local::sqliteErrorDomain, code, "not folded");
        }
    });
}

// Done when every step is, as the command says it.
Report repair(const Names&) {
    local::RepairOptions options;
    options.apply = true;
    Report report;
    try {
        const Place here{pathInHome("")};
        const auto repaired = local::repairLibrary(here.library(), options);
        report.success = repaired.complete;
        for (const local::RepairStep& step : repaired.steps)
            report.success = report.success && step.outcome == local::RepairStep::Outcome::done;
    } catch (const local::LibraryError&) {
        return {};
    }
    return report;
}

Report backUp(const Names&) {
    return command([] {
        const Place here{pathInHome("")};
        const auto backup = local::backUpLibrary(here.library(), here.backup(), {});
        if (!backup.complete || !backup.findings.empty())
            throw local::LibraryError(local::posixErrorDomain, EIO, "not backed up");
    });
}

// An earlier backup, and something new since.
Names prepareBackedUp() {
    Names names = prepareUsual();
    if (!backUp(names).success)
        std::abort();
    names["new"] = importPicture(pathInHome("import.jpg"));
    return names;
}

constexpr auto farFuture = std::numeric_limits<std::int64_t>::max();

std::vector<Method> makeMethods() {
    using std::placeholders::_1;
    const auto titled = [](auto method, const char* name) {
        return [=](const Names& names) { return method(names, name); };
    };
    return {
        {.name = "import", .prepare = prepareUsual, .run = import, .emptyShelves = true},
        {.name = "import-two",
         .prepare = prepareUsual,
         .run = importTwo,
         .between = {[](const Names&) { importPicture(pathInHome("import.jpg")); },
                     [](const Names&) { importPicture(pathInHome("second.jpg")); }}},
        {.name = "delete", .prepare = prepareUsual, .run = deleteAssets},
        {.name = "favorite", .prepare = prepareUsual, .run = setFavorite},
        {.name = "hide", .prepare = prepareUsual, .run = setHidden},
        {.name = "copy-attributes",
         .prepare = prepareUsual,
         .run = copyAttributes,
         .between = someAttributes(),
         .partialSuccess = true},
        {.name = "add-to-album",
         .prepare = prepareUsual,
         .run =
             [](const Names& names) {
                 return Report{addToAlbum(names.at("Album"), names.at("favorite")), ""};
             }},
        {.name = "remove-from-album", .prepare = prepareUsual, .run = removeFromAlbum},
        {.name = "create-album",
         .prepare = prepareUsual,
         .run = [](const Names&) { return made(makeAlbum("New album")); }},
        {.name = "create-album-in-folder",
         .prepare = prepareUsual,
         .run = [](const Names& names) { return made(makeAlbum("New album", names.at("Folder"))); },
         .between = {[](const Names&) { makeAlbum("New album"); }}},
        {.name = "create-folder",
         .prepare = prepareUsual,
         .run = [](const Names&) { return made(makeFolder("New folder")); }},
        {.name = "file-into-folder",
         .prepare = prepareUsual,
         .run =
             [](const Names& names) {
                 return Report{fileInto(names.at("Album"), names.at("Folder")), ""};
             }},
        {.name = "rename-album", .prepare = prepareUsual, .run = titled(rename, "Album")},
        {.name = "rename-folder", .prepare = prepareUsual, .run = titled(rename, "Folder")},
        {.name = "delete-album", .prepare = prepareUsual, .run = titled(deleteCollection, "Album")},
        {.name = "delete-folder",
         .prepare = prepareUsual,
         .run = titled(deleteCollection, "Folder")},
        {.name = "duplicate-album", .prepare = prepareUsual, .run = titled(duplicate, "Album")},
        {.name = "duplicate-folder",
         .prepare = prepareUsual,
         .run = titled(duplicate, "Folder"),
         .between = {folderCopyAlone, folderCopyAndAlbumCopy},
         .partialSuccess = true},
        {.name = "edit",
         .prepare = prepareUsual,
         .run =
             [](const Names& names) {
                 return Report{applyEdit(names.at("plain"), pathInHome("rendered.jpg")), ""};
             }},
        {.name = "edit-again",
         .prepare = prepareUsual,
         .run =
             [](const Names& names) {
                 return Report{applyEdit(names.at("edited"), pathInHome("again.jpg")), ""};
             }},
        {.name = "edit-beside-the-dead",
         .prepare = prepareUsual,
         .run =
             [](const Names& names) {
                 // As if processes had made shelves and died before syncing their names.
                 const Place here{pathInHome("")};
                 for (int shelf = 0; shelf < 256; ++shelf) {
                     std::array<char, 4> name{};
                     std::snprintf(name.data(), name.size(), "%02X", static_cast<unsigned>(shelf));
                     std::error_code ignored;
                     std::filesystem::create_directory(here.library() / "renders" / name.data(),
                                                       ignored);
                 }
                 return Report{applyEdit(names.at("plain"), pathInHome("rendered.jpg")), ""};
             }},
        {.name = "revert",
         .prepare = prepareUsual,
         .run =
             [](const Names& names) {
                 return command([&] { local::revertEdits({names.at("edited")}); });
             }},
        {.name = "restore",
         .prepare = prepareUsual,
         .run =
             [](const Names& names) {
                 return command([&] { local::restoreFromTrash({names.at("trashed")}); });
             }},
        {.name = "empty-trash",
         .prepare = prepareUsual,
         .run = [](const Names&) { return command([] { local::emptyTrash(farFuture); }); }},
        {.name = "limit-access", .prepare = prepareUsual, .run = limitAccess},
        {.name = "fold-log", .prepare = prepareUsual, .run = foldLog},
        {.name = "backup", .prepare = prepareBackedUp, .run = backUp},
        {.name = "first-import", .prepare = prepareNothing, .run = import, .opensFirst = false},
        {.name = "create-library",
         .prepare = prepareNothing,
         .run = openLibrary,
         .opensFirst = false},
        {.name = "open-after-crash",
         .prepare = prepareLeftBehind,
         .run = openLibrary,
         .opensFirst = false},
        {.name = "migrate-1",
         .prepare = [] { return prepareOlder(1); },
         .run = openLibrary,
         .opensFirst = false},
        {.name = "migrate-2",
         .prepare = [] { return prepareOlder(2); },
         .run = openLibrary,
         .opensFirst = false},
        {.name = "catalogue-lost",
         .prepare = prepareWithoutCatalogue,
         .run = openLibrary,
         .opensFirst = false,
         .refused = true},
        {.name = "repair",
         .prepare = prepareDamaged,
         .run = repair,
         .between = {[](const Names&) { mendCount(); }, takeStrayAway},
         .damaged = true},
    };
}

} // namespace

Report openLibrary(const Names&) {
    return command([] { local::Library::open(); });
}

const std::vector<Method>& allMethods() {
    static const std::vector<Method> methods = makeMethods();
    return methods;
}

} // namespace faults
