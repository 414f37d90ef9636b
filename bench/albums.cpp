// Albums and folders, against SQLite doing the least that each needs.
#include "bench/bench.h"
#include "bench/host_jvm.h"
#include "bench/other_process.h"

#include "bridge/entry_points.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <map>

namespace bench {

namespace {

constexpr jint pageSize = 100;

// The tree of the workloads; the sizes are those that the limits are meant for.
struct Tree {
    int albums = 2000;
    int members = 100;        // of each album
    int largeAlbum = 200'000; // members of one more album
};

Tree treeFor(const Settings& settings) {
    return settings.smoke ? Tree{20, 10, 2000} : Tree{};
}

void require(bool held, const char* what) {
    if (held)
        return;
    std::printf("photos_bench: %s\n", what);
    std::exit(3);
}

jstring javaString(const std::string& text) {
    return jvm()->NewStringUTF(text.c_str());
}

std::size_t listTopLevel() {
    const LocalFrame frame;
    jstring json = Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbums(
        jvm(), nullptr, nullptr);
    return static_cast<std::size_t>(jvm()->GetStringLength(json));
}

std::size_t listAlbum(const std::string& album, jint offset) {
    const LocalFrame frame;
    jstring json = Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAlbumAssets(
        jvm(), nullptr, javaString(album), pageSize, offset);
    return static_cast<std::size_t>(jvm()->GetStringLength(json));
}

std::string createAlbum(const std::string& title) {
    const LocalFrame frame;
    return textOf(Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateAlbum(
        jvm(), nullptr, javaString(title), nullptr));
}

std::string createFolder(const std::string& title, const std::string& parent) {
    const LocalFrame frame;
    return textOf(Java_com_morrowfen_lumatrice_service_PhotosService_nativeCreateFolder(
        jvm(), nullptr, javaString(title), parent.empty() ? nullptr : javaString(parent)));
}

// A connection of the floor to a catalogue of its own.
class Floor {
public:
    explicit Floor(const std::filesystem::path& file) {
        require(sqlite3_open_v2(file.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr) ==
                    SQLITE_OK,
                "the floor's copy does not open");
        run("PRAGMA synchronous=FULL; PRAGMA wal_autocheckpoint=0; PRAGMA foreign_keys=ON; "
            "PRAGMA cache_size=-4000");
    }
    ~Floor() { sqlite3_close_v2(database_); }
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    void run(const std::string& sql) {
        char* message = nullptr;
        if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK)
            require(false, message);
    }

    // Steps through all rows and looks at every column.
    std::int64_t step(const std::string& sql) {
        sqlite3_stmt*& statement = statements_[sql];
        if (!statement)
            sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr);
        std::int64_t rows = 0;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(statement); ++column)
                bytes_ += sqlite3_column_bytes(statement, column);
            ++rows;
        }
        sqlite3_reset(statement);
        return rows;
    }

private:
    sqlite3* database_ = nullptr;
    std::map<std::string, sqlite3_stmt*> statements_;
    std::int64_t bytes_ = 0;
};

struct Library {
    std::filesystem::path catalogue;
    std::string largeAlbum;
    std::string someAsset; // in the large album
};

std::string identifierOf(const std::filesystem::path& catalogue, const std::string& table,
                         const std::string& condition, const char* ending) {
    sqlite3* database = nullptr;
    sqlite3_stmt* statement = nullptr;
    const auto copy = copyElsewhere(catalogue, "look.db");
    sqlite3_open(copy.c_str(), &database);
    const std::string sql = "SELECT hex(uuid) FROM " + table + " WHERE " + condition;
    sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr);
    require(sqlite3_step(statement) == SQLITE_ROW, "an identifier is missing");
    std::string text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    sqlite3_finalize(statement);
    sqlite3_close(database);
    for (const std::size_t dash : {20, 16, 12, 8})
        text.insert(dash, "-");
    return text + ending;
}

Library makeLibrary(const Settings& settings, const std::string& name, int assets,
                    const Tree& tree) {
    const auto home = newHome(settings, name);
    createAlbum("Large"); // makes the library
    const auto catalogue = home / "Pictures/Lumatrice Library/library.db";
    const std::string count = std::to_string(assets);
    const std::string albums = std::to_string(tree.albums);
    runElsewhere(
        catalogue,
        "PRAGMA synchronous=OFF; BEGIN;"
        "WITH RECURSIVE s(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM s WHERE i < " +
            count +
            ") INSERT INTO asset (uuid, created, media, width, height, filename, content_type, "
            "stored_as, hash, size, added) "
            "SELECT randomblob(16), 1000000000000 + abs(random()) % 600000000000, 1, 4000, 3000, "
            "'IMG_' || i || '.jpg', 'public.jpeg', '00000000-' || i, randomblob(16), 3000000, 0 "
            "FROM s;"
            "WITH RECURSIVE s(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM s WHERE i < " +
            albums +
            ") INSERT INTO collection (uuid, kind, title, position) "
            "SELECT randomblob(16), 1, 'Album ' || i, 10 + i FROM s;"
            "INSERT INTO album_member SELECT c.n, a.n, a.n, a.created, 1 FROM collection AS c "
            "JOIN asset AS a ON a.n > (c.n * 37) % (" +
            count + " - " + std::to_string(tree.members) + ") AND a.n <= (c.n * 37) % (" + count +
            " - " + std::to_string(tree.members) + ") + " + std::to_string(tree.members) +
            " WHERE c.title LIKE 'Album %';"
            "INSERT INTO album_member SELECT 1, n, n, created, 1 FROM asset WHERE n <= " +
            std::to_string(tree.largeAlbum) +
            ";"
            "UPDATE collection SET held = (SELECT count(*) FROM album_member WHERE album = n);"
            "DELETE FROM listing_change "
            "WHERE seq <= (SELECT listing_changes FROM library) - 65536;"
            "COMMIT; PRAGMA wal_checkpoint(TRUNCATE)");
    return {catalogue, identifierOf(catalogue, "collection", "n = 1", "/L0/040"),
            identifierOf(catalogue, "asset", "n = 777", "/L0/001")};
}

void topLevel(const Settings& settings, const Library& library) {
    Floor floor(copyElsewhere(library.catalogue, "floor.db"));
    const Medians m = alternate(
        settings.repeats, [] { listTopLevel(); },
        [&] {
            floor.step("SELECT uuid, title, kind, held FROM collection INDEXED BY collection_order "
                       "WHERE ifnull(parent, 0) = 0 ORDER BY position");
        });
    report({"top level of many albums", "one indexed pass over the collections", m.ours, m.floor,
            2.5});
}

void albumPages(const Settings& settings, const Library& library, int members) {
    const std::vector<std::pair<const char*, jint>> places{{"middle", members / 2},
                                                           {"last", members - pageSize}};
    for (const auto& [name, offset] : places) {
        const Medians m = alternate(
            settings.repeats, [&] { listAlbum(library.largeAlbum, offset); },
            [&] { listAlbum(library.largeAlbum, 0); });
        report({std::string("page of a large album, ") + name, "its first page", m.ours, m.floor,
                1.5});
    }
}

void contains(const Settings& settings, const Library& library) {
    Floor floor(copyElsewhere(library.catalogue, "floor.db"));
    const LocalFrame frame;
    jstring album = javaString(library.largeAlbum);
    jstring asset = javaString(library.someAsset);
    jint holds = 0;
    constexpr int questionsATurn = 20;
    const Medians m = alternate(
        settings.repeats,
        [&] {
            for (int i = 0; i < questionsATurn; ++i)
                holds = Java_com_morrowfen_lumatrice_service_PhotosService_nativeAlbumContainsAsset(
                    jvm(), nullptr, album, asset);
        },
        [&] {
            for (int i = 0; i < questionsATurn; ++i)
                floor.step("SELECT 1 FROM album_member WHERE album = 1 AND asset = "
                           "(SELECT n FROM asset WHERE uuid = (SELECT uuid FROM asset "
                           "WHERE n = 777)) AND listed = 1");
        });
    require(holds == 1, "the large album does not hold its asset");
    report({"nativeAlbumContainsAsset", "an indexed lookup", m.ours / questionsATurn,
            m.floor / questionsATurn, 3});
}

// Adds the same assets to a new album each turn, in this library and in the floor's copy of it.
void adding(const Settings& settings, const Library& library, int assets) {
    const LocalFrame frame;
    std::vector<std::string> identifiers;
    {
        sqlite3* database = nullptr;
        sqlite3_open(copyElsewhere(library.catalogue, "look.db").c_str(), &database);
        const std::string sql = "SELECT substr(h,1,8)||'-'||substr(h,9,4)||'-'||substr(h,13,4)||'-'"
                                "||substr(h,17,4)||'-'||substr(h,21)||'/L0/001' FROM (SELECT "
                                "hex(uuid) AS h FROM asset WHERE n % 19 = 0 LIMIT " +
                                std::to_string(assets) + ")";
        sqlite3_exec(
            database, sql.c_str(),
            [](void* out, int, char** values, char**) {
                static_cast<std::vector<std::string>*>(out)->emplace_back(values[0]);
                return 0;
            },
            &identifiers, nullptr);
        sqlite3_close(database);
    }
    jobjectArray array = stringArray(identifiers);
    Floor floor(copyElsewhere(library.catalogue, "floor.db"));
    int turn = 0;
    std::vector<std::string> albums;
    const int turns = settings.smoke ? 2 : 15;
    for (int i = 0; i <= turns; ++i)
        albums.push_back(createAlbum("Filled " + std::to_string(i)));
    for (int i = 0; i <= turns; ++i)
        floor.run("INSERT INTO collection (n, uuid, kind, title, position) VALUES (" +
                  std::to_string(900'000 + i) + ", randomblob(16), 1, 'x', " +
                  std::to_string(900'000 + i) + ")");
    int floorTurn = 0;
    const Medians m = alternate(
        turns,
        [&] {
            const jint added =
                Java_com_morrowfen_lumatrice_service_PhotosService_nativeAddAssetsToAlbum(
                    jvm(), nullptr, javaString(albums[static_cast<std::size_t>(turn++)]), array);
            require(added == static_cast<jint>(identifiers.size()), "assets were not added");
        },
        [&] {
            floor.run("INSERT INTO album_member SELECT " + std::to_string(900'000 + floorTurn++) +
                      ", n, n, created, 1 FROM asset WHERE n % 19 = 0 LIMIT " +
                      std::to_string(assets));
        });
    report({"adding " + std::to_string(identifiers.size()) + " assets to an album",
            "one INSERT ... SELECT of the same rows", m.ours, m.floor, 1.5});
}

// A tree of folders with albums, then its duplicate; the floor makes the same rows in as many
// transactions.
void duplicating(const Settings& settings, const Library& library, int collections,
                 int membersEach) {
    const std::string top = createFolder("Tree", "");
    const int folders = collections / 10;
    std::vector<std::string> inside;
    for (int i = 1; i < folders; ++i)
        inside.push_back(createFolder("Folder " + std::to_string(i), top));
    const int albums = collections - folders;
    runElsewhere(
        library.catalogue,
        "BEGIN; WITH RECURSIVE s(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM s WHERE i + 1 < " +
            std::to_string(albums) +
            ") INSERT INTO collection (uuid, kind, title, parent, position) SELECT randomblob(16), "
            "1, 'In tree', (SELECT n FROM collection WHERE title = 'Folder ' || (1 + i % " +
            std::to_string(folders - 1) +
            ")), 100 + i FROM s;"
            "INSERT INTO album_member SELECT c.n, a.n, a.n, a.created, 1 FROM collection AS c "
            "JOIN asset AS a ON a.n > (c.n * 11) % 1000 AND a.n <= (c.n * 11) % 1000 + " +
            std::to_string(membersEach) +
            " WHERE c.title = 'In tree';"
            "UPDATE collection SET held = " +
            std::to_string(membersEach) + " WHERE title = 'In tree'; COMMIT");
    runElsewhere(library.catalogue, "PRAGMA wal_checkpoint(TRUNCATE)");
    Floor floor(copyElsewhere(library.catalogue, "floor.db"));
    int round = 0;
    const Medians m = alternate(
        settings.smoke ? 1 : 3,
        [&] {
            const LocalFrame frame;
            require(
                !textOf(
                     Java_com_morrowfen_lumatrice_service_PhotosService_nativeDuplicateCollection(
                         jvm(), nullptr, javaString(top)))
                     .empty(),
                "the tree was not duplicated");
        },
        [&] {
            // A creation and a filing for each collection.
            int n = 2'000'000 + 10'000 * round++;
            for (int i = 0; i < collections; ++i, ++n) {
                const std::string row = std::to_string(n);
                const bool album = i >= folders;
                floor.run("BEGIN IMMEDIATE; INSERT INTO collection (n, uuid, kind, title, position)"
                          " VALUES (" +
                          row + ", randomblob(16), " + (album ? "1" : "2") + ", 'x', " + row +
                          ");" +
                          (album ? "INSERT INTO album_member SELECT " + row +
                                       ", asset, position, created, listed FROM album_member "
                                       "WHERE album = (SELECT max(n) FROM collection "
                                       "WHERE title = 'In tree');"
                                 : "") +
                          "COMMIT");
                floor.run("UPDATE collection SET parent = 1, position = position + 1 "
                          "WHERE n = " +
                          row);
            }
        });
    report({"duplicating " + std::to_string(collections) + " collections",
            "the same rows in as many transactions", m.ours / 1000, m.floor / 1000, 1.5, "ms"});
}

double medianOfTopLevel(const Settings& settings) {
    const auto nothing = [] {};
    return alternate(settings.repeats, listTopLevel, nothing).ours;
}

void albums(const Settings& settings) {
    const Tree tree = treeFor(settings);
    const int assets = settings.assets;
    const Library library = makeLibrary(settings, "albums-home", assets, tree);
    topLevel(settings, library);
    const double large = medianOfTopLevel(settings);
    albumPages(settings, library, tree.largeAlbum);
    contains(settings, library);
    adding(settings, library, settings.smoke ? 100 : 10'000);
    duplicating(settings, library, settings.smoke ? 30 : 500, settings.smoke ? 5 : 222);

    const Tree same{tree.albums, tree.members, settings.smoke ? 100 : 1000};
    makeLibrary(settings, "small-albums-home", settings.smoke ? 2500 : 10'000, same);
    const double small = medianOfTopLevel(settings);
    report({"one level, large library", "the same tree in a small library", large, small, 1.2});
}

const Registration registration("albums", "albums and folders in a large library", albums);

} // namespace

} // namespace bench
