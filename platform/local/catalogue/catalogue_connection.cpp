#include "platform/local/catalogue/catalogue_connection.h"

#include "platform/local/catalogue/catalogue_vfs.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace local {

namespace {

[[noreturn]] void fail(sqlite3* database, int code) {
    const int primary = code & 0xff;
    std::string reason = database ? sqlite3_errmsg(database) : sqlite3_errstr(code);
    std::string sentence = "The library's catalogue reported: " + reason + ".";
    if (primary == SQLITE_NOTADB || primary == SQLITE_CORRUPT)
        sentence = "The library's catalogue is damaged or not a catalogue (" + reason +
                   "); nothing was changed.";
    if (primary == SQLITE_FULL)
        sentence = "There is no space left for the library's catalogue (" + reason + ").";
    if (primary == SQLITE_READONLY)
        sentence = "The photo library is read-only.";
    if ((primary == SQLITE_BUSY || primary == SQLITE_PROTOCOL) && lockingError() != 0)
        throw systemError("The library's catalogue could not be locked", lockingError());
    throw LibraryError(sqliteErrorDomain, code, std::move(sentence));
}

void check(sqlite3* database, int code) {
    if (code != SQLITE_OK)
        fail(database, code);
}

// Short waits first, since most writers are done within a millisecond; never gives up on others.
int waitForOtherProcess(void*, int attempts) {
    if (lockingError() != 0)
        return 0;
    using namespace std::chrono_literals;
    const auto pause = attempts < 20 ? 100us : attempts < 100 ? 1000us : 5000us;
    std::this_thread::sleep_for(pause);
    return 1;
}

int noteLogPages(void* logPages, sqlite3*, const char*, int pages) {
    *static_cast<int*>(logPages) = pages;
    return SQLITE_OK;
}

} // namespace

Statement::~Statement() {
    if (!statement_)
        return;
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

Statement& Statement::bind(int place, std::int64_t value) {
    check(sqlite3_db_handle(statement_), sqlite3_bind_int64(statement_, place, value));
    return *this;
}

Statement& Statement::bind(int place, std::string_view text) {
    check(sqlite3_db_handle(statement_),
          sqlite3_bind_text64(statement_, place, text.data() ? text.data() : "", text.size(),
                              SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Statement& Statement::bindBlob(int place, std::span<const std::uint8_t> bytes) {
    check(sqlite3_db_handle(statement_),
          sqlite3_bind_blob64(statement_, place, bytes.data(), bytes.size(), SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::bindNull(int place) {
    check(sqlite3_db_handle(statement_), sqlite3_bind_null(statement_, place));
    return *this;
}

bool Statement::step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW)
        return true;
    if (code == SQLITE_DONE)
        return false;
    fail(sqlite3_db_handle(statement_), code);
}

void Statement::run() {
    while (step()) {
    }
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::string_view Statement::text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (!text)
        return {};
    return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::span<const std::uint8_t> Statement::blob(int column) const {
    const auto* bytes = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

CatalogueConnection::CatalogueConnection(int folder, Mode mode, bool create) {
    const bool immutable = mode == Mode::immutable;
    // The folder is named through its descriptor: paths of any length work, and the connection
    // stays with the folder when that is moved.
    const std::string name = "file:/proc/self/fd/" + std::to_string(folder) + "/library.db" +
                             (immutable ? "?immutable=1" : "");
    const int access = immutable ? SQLITE_OPEN_READONLY
                                 : SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0);
    const int code =
        sqlite3_open_v2(name.c_str(), &database_, access | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX,
                        catalogueVfsName());
    try {
        check(database_, code);
        sqlite3_extended_result_codes(database_, 1);
        waitWithoutLimit();
        // Nothing in a catalogue may call out, whoever wrote it.
        sqlite3_db_config(database_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(database_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        execute("PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON; PRAGMA temp_store=MEMORY;"
                "PRAGMA wal_autocheckpoint=0; PRAGMA cache_size=500;"
                "PRAGMA journal_size_limit=67108864");
        sqlite3_wal_hook(database_, noteLogPages, &logPages_);
    } catch (...) {
        sqlite3_close_v2(database_);
        throw;
    }
}

CatalogueConnection::~CatalogueConnection() {
    for (const auto& [text, statement] : statements_)
        sqlite3_finalize(statement);
    sqlite3_close_v2(database_);
}

Statement CatalogueConnection::statement(const char* sql) {
    sqlite3_stmt*& kept = statements_[sql];
    if (!kept)
        check(database_,
              sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &kept, nullptr));
    return Statement(kept);
}

void CatalogueConnection::execute(const char* sql) {
    check(database_, sqlite3_exec(database_, sql, nullptr, nullptr, nullptr));
}

std::int64_t CatalogueConnection::integer(const char* sql) {
    Statement query = statement(sql);
    return query.step() ? query.integer(0) : 0;
}

void CatalogueConnection::writeFirstPage() {
    const std::int64_t version = integer("PRAGMA user_version");
    execute(("PRAGMA user_version = " + std::to_string(version)).c_str());
}

void CatalogueConnection::waitWithoutLimit() {
    sqlite3_busy_handler(database_, waitForOtherProcess, nullptr);
}

void CatalogueConnection::keepManyPages() {
    execute("PRAGMA cache_size=-32768");
}

bool CatalogueConnection::isReadOnly() const {
    return sqlite3_db_readonly(database_, "main") == 1;
}

bool hasNoLog(int folder) {
    struct stat log = {};
    if (fstatat(folder, "library.db-wal", &log, 0) == 0)
        return log.st_size == 0;
    if (errno != ENOENT)
        throw systemError("The log of the library's catalogue could not be examined", errno);
    return true;
}

Snapshot::Snapshot(CatalogueConnection& connection) : connection_(connection) {
    connection_.statement("BEGIN").run();
}

Snapshot::~Snapshot() {
    // Nothing can be lost here, and a failure leaves the connection without a transaction.
    try {
        connection_.statement("ROLLBACK").run();
    } catch (const LibraryError&) {
    }
}

WriteTransaction::WriteTransaction(CatalogueConnection& connection) : connection_(connection) {
    connection_.statement("BEGIN IMMEDIATE").run();
}

WriteTransaction::~WriteTransaction() {
    if (!open_ || sqlite3_get_autocommit(connection_.handle()))
        return;
    try {
        connection_.statement("ROLLBACK").run();
    } catch (const LibraryError&) {
        // SQLite has rolled back by itself.
    }
}

void WriteTransaction::commit() {
    try {
        connection_.statement("COMMIT").run();
        open_ = false;
    } catch (const LibraryError&) {
        replaceInLog();
        throw;
    }
}

// What was refused may stand in the log all the same, when only its sync failed. A commit in its
// place keeps the next process that reads the log from finding it.
void WriteTransaction::replaceInLog() {
    try {
        if (!sqlite3_get_autocommit(connection_.handle()))
            connection_.statement("ROLLBACK").run();
        open_ = false;
        connection_.execute("BEGIN IMMEDIATE");
        connection_.writeFirstPage();
        connection_.execute("COMMIT");
    } catch (const LibraryError&) {
        if (!sqlite3_get_autocommit(connection_.handle()))
            sqlite3_exec(connection_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

} // namespace local
