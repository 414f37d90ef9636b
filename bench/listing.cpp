// Pages and counts of a large library, against the same rows stepped in SQLite.
#include "bench/bench.h"
#include "bench/host_jvm.h"
#include "bench/other_process.h"

#include "bridge/entry_points.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

constexpr jint pageSize = 100;

std::size_t listPage(jint offset) {
    const LocalFrame frame;
    jstring page = Java_com_morrowfen_lumatrice_service_PhotosService_nativeListAssets(
        jvm(), nullptr, pageSize, offset);
    return static_cast<std::size_t>(jvm()->GetStringLength(page));
}

jint countAssets() {
    return Java_com_morrowfen_lumatrice_service_PhotosService_nativeAssetCount(jvm(), nullptr);
}

// A library whose assets have creation dates in no order of their rows, as a real one has.
std::filesystem::path largeLibrary(const Settings& settings) {
    const auto home = newHome(settings, "listing-home");
    countAssets(); // makes the library
    const auto catalogue = home / "Pictures/Lumatrice Library/library.db";
    runElsewhere(
        catalogue,
        "PRAGMA journal_mode=WAL; PRAGMA synchronous=OFF; BEGIN;"
        "WITH RECURSIVE s(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM s WHERE i < " +
            std::to_string(settings.assets) +
            ") INSERT INTO asset (uuid, created, media, width, height, filename, content_type, "
            "stored_as, hash, size, added) "
            "SELECT randomblob(16), 1000000000000 + abs(random()) % 600000000000, 1, 4000, 3000, "
            "'IMG_' || i || '.jpg', 'public.jpeg', "
            "'00000000-0000-0000-0000-' || i || '.jpg', randomblob(16), 3000000, 0 FROM s;"
            "INSERT INTO favorite SELECT created, n FROM asset WHERE n % 20 = 0;"
            "DELETE FROM listing_change "
            "WHERE seq <= (SELECT listing_changes FROM library) - 65536;"
            "COMMIT; PRAGMA wal_checkpoint(TRUNCATE)");
    if (countAssets() != settings.assets) {
        std::printf("photos_bench: the large library was not made\n");
        std::exit(3);
    }
    return catalogue;
}

// The floor: the rows of a page and the columns that its records show, stepped in a copy of the
// catalogue, starting from a key that is known already.
class SteppedRows {
public:
    explicit SteppedRows(const std::filesystem::path& catalogue) {
        const auto copy = copyElsewhere(catalogue, "floor.db");
        sqlite3_open_v2(copy.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr);
        prepare(
            page_,
            "SELECT uuid, filename, media, width, height, created, EXISTS "
            "(SELECT 1 FROM favorite AS f WHERE f.created = asset.created AND f.asset = asset.n) "
            "FROM asset "
            "INDEXED BY asset_listing WHERE hidden = 0 AND trashed_at IS NULL "
            "AND (created, n) <= (?1, ?2) ORDER BY created DESC, n DESC LIMIT ?3");
        prepare(count_, "SELECT count(*) FROM asset WHERE hidden = 0 AND trashed_at IS NULL");
        prepare(key_, "SELECT created, n FROM asset INDEXED BY asset_listing WHERE hidden = 0 "
                      "AND trashed_at IS NULL ORDER BY created DESC, n DESC LIMIT 1 OFFSET ?1");
    }
    ~SteppedRows() {
        for (sqlite3_stmt* statement : {page_, count_, key_})
            sqlite3_finalize(statement);
        sqlite3_close(database_);
    }
    SteppedRows(const SteppedRows&) = delete;
    SteppedRows& operator=(const SteppedRows&) = delete;

    void startAt(jint offset) {
        sqlite3_bind_int(key_, 1, offset);
        sqlite3_step(key_);
        created_ = sqlite3_column_int64(key_, 0);
        n_ = sqlite3_column_int64(key_, 1);
        sqlite3_reset(key_);
    }

    void step() {
        sqlite3_bind_int64(page_, 1, created_);
        sqlite3_bind_int64(page_, 2, n_);
        sqlite3_bind_int(page_, 3, pageSize);
        int rows = 0;
        while (sqlite3_step(page_) == SQLITE_ROW) {
            for (int column = 0; column < 7; ++column)
                bytes_ += sqlite3_column_bytes(page_, column);
            ++rows;
        }
        sqlite3_reset(page_);
        if (rows != pageSize)
            std::abort();
    }

    void count() {
        sqlite3_step(count_);
        bytes_ += sqlite3_column_int(count_, 0);
        sqlite3_reset(count_);
    }

private:
    void prepare(sqlite3_stmt*& statement, const char* sql) {
        if (sqlite3_prepare_v2(database_, sql, -1, &statement, nullptr) != SQLITE_OK)
            std::abort();
    }

    sqlite3* database_ = nullptr;
    sqlite3_stmt *page_ = nullptr, *count_ = nullptr, *key_ = nullptr;
    std::int64_t created_ = 0;
    std::int64_t n_ = 0;
    std::int64_t bytes_ = 0;
};

void pages(const Settings& settings, const std::filesystem::path& catalogue, SteppedRows& rows) {
    const std::vector<std::pair<const char*, jint>> places{
        {"start", 0}, {"middle", settings.assets / 2}, {"end", settings.assets - pageSize}};
    for (const auto& [name, offset] : places) {
        rows.startAt(offset);
        const auto listed = [&] { listPage(offset); };
        const Medians m = alternate(settings.repeats, listed, [&] { rows.step(); });
        report(
            {std::string("page of 100, ") + name, "the same rows stepped", m.ours, m.floor, 2.5});
    }
    const Medians ends = alternate(
        settings.repeats, [&] { listPage(settings.assets - pageSize); }, [] { listPage(0); });
    report({"last page", "first page", ends.ours, ends.floor, 1.5});

    // In both cases this process has just waited, untimed, for the other one to make the same
    // durable change, and wakes with the same cold caches; only in one was it this library's.
    const auto other = copyElsewhere(catalogue, "other.db");
    std::vector<double> changed;
    std::vector<double> unchanged;
    for (int i = 0; i < settings.repeats; ++i) {
        const std::string change = "UPDATE asset SET hidden = 1 - hidden WHERE n = 1 + " +
                                   std::to_string(i * 37 % settings.assets);
        runElsewhere(catalogue, change);
        changed.push_back(microseconds([&] { listPage(settings.assets / 2); }));
        runElsewhere(other, change);
        unchanged.push_back(microseconds([&] { listPage(settings.assets / 2); }));
    }
    report({"page after another process's commit", "page of an unchanged library", median(changed),
            median(unchanged), 1.2});
}

void listing(const Settings& settings) {
    const auto catalogue = largeLibrary(settings);
    SteppedRows rows(catalogue);
    report({"first deep page of a process", "counting the rows",
            microseconds([&] { listPage(settings.assets / 2); }),
            microseconds([&] { rows.count(); }), 0});
    // Ten counts a turn: the first finds this machine's caches full of the floor's work.
    constexpr int countsATurn = 10;
    const Medians m = alternate(
        std::min(settings.repeats, 20),
        [] {
            for (int i = 0; i < countsATurn; ++i)
                countAssets();
        },
        [&] { rows.count(); });
    report({"nativeAssetCount", "SELECT count(*)", m.ours / countsATurn, m.floor,
            settings.smoke ? 0 : 0.001});
    pages(settings, catalogue, rows);
}

const Registration registration("listing", "pages of 100 and counts of a large library", listing);

} // namespace

} // namespace bench
