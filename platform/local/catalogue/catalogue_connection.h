// One connection to the catalogue (SQLite), with its prepared statements kept for reuse.
//
// A connection belongs to one thread at a time; statements are steps of that thread and must be
// done (destroyed) before the connection goes back to the pool. Waiting for another writer has no
// time limit. Errors are thrown as LibraryError.
//
// Nobody but SQLite may open library.db: closing any descriptor of it would drop the locks that
// this process holds on it.
#pragma once

#include "platform/local/system/library_error.h"

#include <sqlite3.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace local {

// What SQLite reported, as a sentence about the catalogue. The code is SQLite's own.
inline constexpr std::string_view sqliteErrorDomain = "SQLite";

// A statement in use. Resets itself, so that it holds no lock afterwards.
class Statement {
public:
    explicit Statement(sqlite3_stmt* statement) noexcept : statement_(statement) {}
    Statement(Statement&& other) noexcept : statement_(std::exchange(other.statement_, nullptr)) {}
    Statement& operator=(Statement&&) = delete;
    ~Statement();

    Statement& bind(int place, std::int64_t value);
    Statement& bind(int place, std::string_view text);                   // copied
    Statement& bindBlob(int place, std::span<const std::uint8_t> bytes); // copied
    Statement& bindNull(int place);

    // Steps to the next row; false after the last.
    bool step();
    // Back to before the first row; what was bound stays.
    void reset() { sqlite3_reset(statement_); }
    // Steps through a statement that answers no rows.
    void run();

    std::int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    bool isNull(int column) const;
    std::string_view text(int column) const; // until the next step
    std::span<const std::uint8_t> blob(int column) const;
    // A blob of this size, such as a uuid or a hash; of another size, as much as fits.
    template <class Bytes>
    Bytes bytes(int column) const {
        Bytes bytes{};
        const auto stored = blob(column);
        std::copy_n(stored.begin(), std::min(stored.size(), bytes.size()), bytes.begin());
        return bytes;
    }

private:
    sqlite3_stmt* statement_;
};

class CatalogueConnection {
public:
    enum class Mode {
        readWrite,
        immutable, // for a catalogue on a disk that takes no writes, not even SQLite's own
    };

    // Opens the existing catalogue of the library whose folder `folder` is a descriptor of; with
    // `create`, makes an empty one where there is none.
    CatalogueConnection(int folder, Mode mode, bool create = false);
    ~CatalogueConnection();
    CatalogueConnection(const CatalogueConnection&) = delete;
    CatalogueConnection& operator=(const CatalogueConnection&) = delete;

    // The text must be a literal: its address is its name among the kept statements.
    Statement statement(const char* sql);
    // Runs one or several statements whose rows nobody wants.
    void execute(const char* sql);
    std::int64_t integer(const char* sql); // the first column of the first row; 0 without a row

    // Writes a page as it is, so that a transaction that changes nothing reaches the log and the
    // disk all the same. (An UPDATE to the values that are there writes nothing.)
    void writeFirstPage();

    bool isReadOnly() const;
    // How many pages the log held after this connection's last commit.
    int logPages() const { return logPages_; }
    void waitWithoutLimit();
    // For large changes: up to 32 MiB of pages instead of 2.
    void keepManyPages();
    std::int64_t changes() const { return sqlite3_changes64(database_); }
    std::int64_t lastInsertedRow() const { return sqlite3_last_insert_rowid(database_); }
    sqlite3* handle() const noexcept { return database_; }

private:
    sqlite3* database_ = nullptr;
    int logPages_ = 0;
    std::unordered_map<const char*, sqlite3_stmt*> statements_;
};

// Whether all that was ever committed stands in the catalogue itself, because no log lies beside
// it. Throws when that cannot be told.
bool hasNoLog(int folder);

// A read transaction: one snapshot of the catalogue from the first read on.
class Snapshot {
public:
    explicit Snapshot(CatalogueConnection& connection);
    ~Snapshot();
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

private:
    CatalogueConnection& connection_;
};

// A write transaction; rolled back unless committed. Waits for other writers without limit.
class WriteTransaction {
public:
    explicit WriteTransaction(CatalogueConnection& connection);
    ~WriteTransaction();
    WriteTransaction(const WriteTransaction&) = delete;
    WriteTransaction& operator=(const WriteTransaction&) = delete;
    // Durable when this returns. After a throw nothing is in force; only when the disk goes on
    // failing could what reached the log come back once every process has ended.
    void commit();

private:
    void replaceInLog();

    CatalogueConnection& connection_;
    bool open_ = true;
};

} // namespace local
