// Marks and deletions of many assets in a large library, against the same rows changed in SQLite.
#include "bench/bench.h"
#include "bench/host_jvm.h"
#include "bench/other_process.h"

#include "bridge/entry_points.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

void require(bool held, const char* what) {
    if (held)
        return;
    std::printf("photos_bench: %s\n", what);
    std::exit(3);
}

std::filesystem::path largeLibrary(const Settings& settings) {
    const auto home = newHome(settings, "marks-home");
    Java_com_morrowfen_lumatrice_service_PhotosService_nativeAssetCount(jvm(), nullptr);
    const auto catalogue = home / "Pictures/Lumatrice Library/library.db";
    runElsewhere(
        catalogue,
        "PRAGMA synchronous=OFF; BEGIN;"
        "WITH RECURSIVE s(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM s WHERE i < " +
            std::to_string(settings.assets) +
            ") INSERT INTO asset (uuid, created, media, width, height, filename, content_type, "
            "stored_as, hash, size, added) "
            "SELECT randomblob(16), 1000000000000 + abs(random()) % 600000000000, 1, 4000, 3000, "
            "'IMG_' || i || '.jpg', 'public.jpeg', '00000000-' || i, randomblob(16), 3000000, i "
            "FROM s;"
            "DELETE FROM listing_change "
            "WHERE seq <= (SELECT listing_changes FROM library) - 65536;"
            "COMMIT; PRAGMA wal_checkpoint(TRUNCATE)");
    return catalogue;
}

// A copy of the catalogue that keeps its indexes but none of its triggers.
class PlainRows {
public:
    explicit PlainRows(const std::filesystem::path& catalogue) {
        require(sqlite3_open_v2(copyElsewhere(catalogue, "floor.db").c_str(), &database_,
                                SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK,
                "the floor's copy does not open");
        run("PRAGMA synchronous=FULL; PRAGMA wal_autocheckpoint=0; PRAGMA cache_size=-32768;"
            "PRAGMA foreign_keys=OFF");
        std::string drop;
        sqlite3_exec(
            database_, "SELECT 'DROP TRIGGER ' || name FROM sqlite_schema WHERE type = 'trigger'",
            [](void* out, int, char** values, char**) {
                *static_cast<std::string*>(out) += std::string(values[0]) + ";";
                return 0;
            },
            &drop, nullptr);
        run(drop + "ALTER TABLE asset ADD COLUMN favorite INTEGER NOT NULL DEFAULT 0");
    }
    ~PlainRows() { sqlite3_close_v2(database_); }
    PlainRows(const PlainRows&) = delete;
    PlainRows& operator=(const PlainRows&) = delete;

    void run(const std::string& sql) {
        char* message = nullptr;
        if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK)
            require(false, message);
    }

    // Each row by its number, in one transaction.
    void update(const char* set, const std::vector<std::int64_t>& rows, const char* counted) {
        sqlite3_stmt* statement = nullptr;
        const std::string sql = std::string("UPDATE asset SET ") + set + " WHERE n = ?1";
        require(sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK,
                "the floor's statement is wrong");
        run("BEGIN IMMEDIATE");
        for (const std::int64_t row : rows) {
            sqlite3_bind_int64(statement, 1, row);
            require(sqlite3_step(statement) == SQLITE_DONE, "the floor's update failed");
            sqlite3_reset(statement);
        }
        sqlite3_finalize(statement);
        run(counted);
        run("COMMIT");
    }

private:
    sqlite3* database_ = nullptr;
};

struct Chosen {
    std::vector<std::string> identifiers;
    std::vector<std::int64_t> rows;
};

// Scattered over the whole library; another selection for each turn.
Chosen choose(const std::filesystem::path& catalogue, int assets, int wanted, int turn) {
    Chosen chosen;
    sqlite3* database = nullptr;
    sqlite3_open(copyElsewhere(catalogue, "look.db").c_str(), &database);
    const int step = assets / wanted;
    const std::string sql =
        "SELECT substr(h,1,8)||'-'||substr(h,9,4)||'-'||substr(h,13,4)||'-'||substr(h,17,4)||'-'||"
        "substr(h,21)||'/L0/001', n FROM (SELECT hex(uuid) AS h, n FROM asset NOT INDEXED "
        "WHERE n % " +
        std::to_string(step) + " = " + std::to_string(turn % step) + " LIMIT " +
        std::to_string(wanted) + ")";
    sqlite3_exec(
        database, sql.c_str(),
        [](void* out, int, char** values, char**) {
            auto& all = *static_cast<Chosen*>(out);
            all.identifiers.emplace_back(values[0]);
            all.rows.push_back(std::atoll(values[1]));
            return 0;
        },
        &chosen, nullptr);
    sqlite3_close(database);
    require(static_cast<int>(chosen.rows.size()) == wanted, "too few assets were chosen");
    return chosen;
}

void marks(const Settings& settings) {
    const auto catalogue = largeLibrary(settings);
    const int wanted = settings.smoke ? 100 : 10'000;
    const int turns = settings.smoke ? 2 : 9;
    std::vector<Chosen> chosen;
    std::vector<jobjectArray> arrays;
    for (int turn = 0; turn <= turns; ++turn) {
        chosen.push_back(choose(catalogue, settings.assets, wanted, turn));
        arrays.push_back(stringArray(chosen.back().identifiers));
    }
    PlainRows plain(catalogue);
    std::size_t ours = 0;
    std::size_t floor = 0;
    const Medians favorites = alternate(
        turns,
        [&] {
            require(Java_com_morrowfen_lumatrice_service_PhotosService_nativeSetFavorite(
                        jvm(), nullptr, arrays[ours++], JNI_TRUE) == wanted,
                    "assets were not marked");
        },
        [&] { plain.update("favorite = 1", chosen[floor++].rows, ""); });
    report({"favourite on " + std::to_string(wanted) + " scattered assets",
            "one UPDATE by row number each", favorites.ours, favorites.floor, 1.3});
    ours = floor = 0;
    const Medians deletions = alternate(
        turns,
        [&] {
            require(Java_com_morrowfen_lumatrice_service_PhotosService_nativeDeleteAssets(
                        jvm(), nullptr, arrays[ours++]) == wanted,
                    "assets were not deleted");
        },
        [&] {
            plain.update("trashed_at = 1", chosen[floor++].rows,
                         "UPDATE library SET listed = (SELECT count(*) FROM asset INDEXED BY "
                         "asset_listing WHERE hidden = 0 AND trashed_at IS NULL)");
        });
    report({"deleting " + std::to_string(wanted) + " assets", "the same rows updated and counted",
            deletions.ours, deletions.floor, 1.5});
}

const Registration registration("marks", "marks and deletions of many assets", marks);

} // namespace

} // namespace bench
