#include "platform/local/maintenance/backup.h"

#include "platform/local/catalogue/catalogue_vfs.h"
#include "platform/local/maintenance/backup_files.h"
#include "platform/local/maintenance/backup_folder.h"
#include "platform/local/maintenance/library_reader.h"
#include "platform/local/maintenance/quarantine.h"
#include "platform/local/system/folder_names.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <set>

namespace local {

namespace {

using Kind = Finding::Kind;
using Taken = BackupFiles::Taken;

constexpr int pagesAtOnce = 4096;
constexpr int mostAttempts = 5;

[[noreturn]] void catalogueFailed(int code) {
    throw LibraryError(sqliteErrorDomain, code,
                       std::string("The catalogue could not be backed up: ") +
                           sqlite3_errstr(code) + ".");
}

// Copies the catalogue as the connection's transaction sees it; false when stopped.
bool copyCatalogue(sqlite3* from, int folder, const std::function<bool()>& stop) {
    const std::string name = "file:/proc/self/fd/" + std::to_string(folder) + "/library.db";
    sqlite3* to = nullptr;
    int code = sqlite3_open_v2(name.c_str(), &to,
                               SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_URI |
                                   SQLITE_OPEN_NOMUTEX,
                               catalogueVfsName());
    // It is written through once, when it is complete.
    if (code == SQLITE_OK)
        code = sqlite3_exec(to, "PRAGMA synchronous=OFF", nullptr, nullptr, nullptr);
    sqlite3_backup* copying =
        code == SQLITE_OK ? sqlite3_backup_init(to, "main", from, "main") : nullptr;
    bool stopped = false;
    if (copying) {
        code = SQLITE_OK;
        while (code == SQLITE_OK && !stopped) {
            code = sqlite3_backup_step(copying, pagesAtOnce);
            stopped = stop && stop();
        }
        sqlite3_backup_finish(copying);
    } else if (to) {
        code = sqlite3_errcode(to);
    }
    sqlite3_close_v2(to);
    if (!stopped && code != SQLITE_DONE)
        catalogueFailed(code);
    return !stopped;
}

// What a library does when it is opened has nothing to do in a backup; and a damaged catalogue must
// not take the place of a good one.
void finishCatalogue(int folder) {
    {
        CatalogueConnection copy(folder, CatalogueConnection::Mode::readWrite);
        copy.execute("PRAGMA synchronous=OFF; DELETE FROM discarded_file");
        if (Statement check = copy.statement("PRAGMA integrity_check(1)");
            !check.step() || check.text(0) != "ok")
            throw LibraryError(sqliteErrorDomain, SQLITE_CORRUPT,
                               "The library's catalogue is damaged, so that it was not backed up; "
                               "the earlier backup stays as it was. See photos-kit verify.");
    }
    const UniqueFd file(openat(folder, "library.db", O_RDONLY | O_CLOEXEC));
    if (!file || fsync(file.get()) != 0)
        throw systemError("The catalogue of the backup could not be written through", errno);
}

class BackingUp {
public:
    BackingUp(const std::string& library, const std::string& destination,
              const BackupOptions& options)
        : reader_(library), present_(library), folder_(destination, reader_.folder()),
          files_(folder_.descriptor()), options_(options) {
        for (const Stored kind : {Stored::original, Stored::render})
            reader_.files().requirePresent(kind);
        if (folder_.holdsCatalogue() && !options_.replace)
            requireSomethingInCommon();
        FileStore(folder_.descriptor()).create();
    }

    Backup run() {
        // Most of it, while hosts go on; what they change meanwhile comes below.
        if (!takeFiles(options_.check))
            return std::move(result_);
        for (int attempt = 1; !result_.complete; ++attempt) {
            const Snapshot snapshot(reader_.catalogue());
            if (!takeFiles(false))
                break;
            // A host emptied the trash between the look at a row and that at its file.
            if (goneMeanwhile_ && attempt < mostAttempts)
                continue;
            files_.sync();
            if (!publish())
                break;
            result_.complete = true;
        }
        return std::move(result_);
    }

private:
    // An emptied or new library, made because a disk was not mounted for instance, must not replace
    // the backup of the one that is meant.
    void requireSomethingInCommon() {
        CatalogueConnection old(folder_.descriptor(), CatalogueConnection::Mode::immutable);
        Statement rows = old.statement("SELECT uuid FROM asset");
        bool any = false;
        while (rows.step()) {
            any = true;
            Statement same = reader_.catalogue().statement("SELECT 1 FROM asset WHERE uuid = ?1");
            if (same.bindBlob(1, rows.blob(0)).step())
                return;
        }
        if (any)
            throw LibraryError(posixErrorDomain, EPERM,
                               "Nothing of what this backup holds is in the library any more: is "
                               "it the backup of another one? Nothing was changed.");
    }

    // False when stopped.
    bool takeFiles(bool check) {
        goneMeanwhile_ = false;
        result_.findings.clear();
        const std::int64_t taken = result_.copied + result_.linked; // which are there by now
        std::int64_t present = 0;
        std::int64_t looked = 0;
        const std::int64_t all = reader_.countFiles();
        std::int64_t row = 0;
        for (auto files = reader_.filesAfter(row); !files.empty();
             files = reader_.filesAfter(row)) {
            for (const NamedFile& file : files) {
                if (options_.stop && options_.stop())
                    return false;
                if (options_.progress)
                    options_.progress(looked++, all);
                if (!isStorableName(file.name)) {
                    result_.findings.push_back(
                        {Kind::catalogue, "library.db", file.identifier(),
                         "It names a file that is none of the library's own."});
                    continue;
                }
                if (!bad_.contains(file.path()) && files_.holds(file, check, options_.stop))
                    ++present;
                else if (!takeFile(file))
                    return false;
            }
            row = files.back().asset;
        }
        result_.present = present - taken;
        return true;
    }

    bool takeFile(const NamedFile& file) {
        const Taken taken = files_.take(reader_.folder(), file, options_.link, options_.stop);
        switch (taken) {
        case Taken::copied:
        case Taken::linked:
            ++(taken == Taken::copied ? result_.copied : result_.linked);
            result_.bytes += file.size;
            break;
        case Taken::missing:
            if (present_.stillNames(file))
                note(file, Kind::missing, "It is not there.");
            else
                goneMeanwhile_ = true;
            break;
        case Taken::unreadable:
            note(file, Kind::unreadable, "It cannot be read.");
            break;
        case Taken::damaged:
            note(file, Kind::damaged, "Its bytes are not those that were stored.");
            break;
        case Taken::stopped:
            return false;
        }
        return true;
    }

    void note(const NamedFile& file, Kind kind, const std::string& sentence) {
        result_.findings.push_back({kind, file.path(), file.identifier(), sentence});
        bad_.insert(file.path());
    }

    bool publish() {
        const UniqueFd next = folder_.beginCatalogue();
        if (!copyCatalogue(reader_.catalogue().handle(), next.get(), options_.stop))
            return false;
        finishCatalogue(next.get());
        const std::vector<std::string> unnamed = unnamedFiles();
        folder_.publish();
        for (const std::string& path : unnamed) {
            moveToQuarantine(folder_.descriptor(), path);
            ++result_.setAside;
        }
        return true;
    }

    std::vector<std::string> unnamedFiles() {
        std::vector<std::string> paths;
        for (const Stored kind : {Stored::original, Stored::render}) {
            for (const std::string& shelf :
                 namesIn(folder_.descriptor(), std::string(folderOf(kind)))) {
                if (shelf != sentinelName)
                    addUnnamed(kind, shelf, paths);
            }
        }
        return paths;
    }

    void addUnnamed(Stored kind, const std::string& shelf, std::vector<std::string>& paths) {
        const std::string folder = std::string(folderOf(kind)).append("/").append(shelf);
        for (const std::string& name : namesIn(folder_.descriptor(), folder)) {
            if (!reader_.namesFile(kind, name))
                paths.push_back(std::string(folder).append("/").append(name));
        }
    }

    LibraryReader reader_;
    LibraryReader present_; // outside the snapshot
    BackupFolder folder_;
    BackupFiles files_;
    const BackupOptions& options_;
    Backup result_;
    std::set<std::string> bad_; // what the backup has in their place was read, or is not there
    bool goneMeanwhile_ = false;
};

} // namespace

Backup backUpLibrary(const std::string& library, const std::string& destination,
                     const BackupOptions& options) {
    return BackingUp(library, destination, options).run();
}

} // namespace local
