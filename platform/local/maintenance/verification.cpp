#include "platform/local/maintenance/verification.h"

#include "platform/local/catalogue/catalogue_rules.h"
#include "platform/local/maintenance/library_reader.h"
#include "platform/local/maintenance/stray_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace local {

namespace {

using Kind = Finding::Kind;

class Verifying {
public:
    Verifying(const std::string& path, const VerificationOptions& options)
        : reader_(path), options_(options) {
        result_.row = options.after;
    }

    Verification run() {
        if (checkCatalogue()) {
            checkRules();
            checkFiles();
        }
        return std::move(result_);
    }

private:
    // False when nothing further can be said.
    bool checkCatalogue() {
        Snapshot snapshot(reader_.catalogue());
        bool usable = true;
        try {
            Statement rows = reader_.catalogue().statement("PRAGMA integrity_check(20)");
            while (rows.step()) {
                if (rows.text(0) == "ok")
                    continue;
                found(Kind::catalogue, "library.db", std::string(rows.text(0)));
                usable = false;
            }
            Statement keys = reader_.catalogue().statement("PRAGMA foreign_key_check");
            while (keys.step())
                found(Kind::catalogue, "library.db",
                      "A row of " + std::string(keys.text(0)) + " refers to a row of " +
                          std::string(keys.text(2)) + " that is not there.");
        } catch (const LibraryError& failure) {
            found(Kind::catalogue, "library.db", failure.what());
            return false;
        }
        return usable;
    }

    void checkRules() {
        Snapshot snapshot(reader_.catalogue());
        for (const CatalogueRule& rule : catalogueRules()) {
            const std::int64_t wrong = reader_.catalogue().integer(rule.count);
            if (wrong > 0)
                found(Kind::rule, rule.subject,
                      std::string(rule.violation) + " (" + std::to_string(wrong) +
                          (wrong == 1 ? " place)." : " places)."));
        }
    }

    void checkFiles() {
        for (const Stored kind : {Stored::original, Stored::render}) {
            if (reader_.files().isPresent(kind))
                continue;
            found(Kind::absent, std::string(folderOf(kind)),
                  "The folder does not hold its marker: its disk is perhaps not mounted. No file "
                  "was looked for.");
            result_.complete = true;
            return;
        }
        const std::int64_t all = reader_.countFiles();
        for (auto files = reader_.filesAfter(result_.row); !files.empty();
             files = reader_.filesAfter(result_.row)) {
            for (const NamedFile& file : files) {
                checkFile(file);
                if (stopped())
                    return;
                ++result_.files;
                if (options_.progress)
                    options_.progress(result_.files, all, result_.row, result_.findings);
            }
            result_.row = files.back().asset;
        }
        findStrayFiles(reader_, result_);
        result_.complete = true;
    }

    void checkFile(const NamedFile& file) {
        if (!isStorableName(file.name)) {
            result_.findings.push_back({Kind::catalogue, "library.db", file.identifier(),
                                        "It names a file that is none of the library's own."});
            return;
        }
        const UniqueFd opened(openat(reader_.folder(), file.path().c_str(),
                                     O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        const int error = errno;
        struct stat status = {};
        if (!opened)
            return foundOf(file, error == ENOENT ? Kind::missing : Kind::unreadable,
                           error == ENOENT ? "It is not there."
                                           : systemError("It cannot be opened", error).what());
        if (fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode))
            return foundOf(file, Kind::damaged, "It is no file of bytes.");
        if (status.st_size != file.size)
            return foundOf(file, Kind::damaged,
                           "It has " + std::to_string(status.st_size) + " bytes instead of " +
                               std::to_string(file.size) + ".");
        if (!options_.content)
            return;
        try {
            const bool right = hasContent(opened.get(), file.hash, file.size, options_.stop);
            result_.bytes += file.size;
            if (!right && !stopped())
                foundOf(file, Kind::damaged, "Its bytes are not those that were stored.");
        } catch (const LibraryError& failure) {
            foundOf(file, Kind::unreadable, failure.what());
        }
    }

    // A host may have deleted the asset, or edited it anew, since its row was read.
    void foundOf(const NamedFile& file, Kind kind, const std::string& sentence) {
        if (reader_.stillNames(file))
            result_.findings.push_back({kind, file.path(), file.identifier(), sentence});
    }

    void found(Kind kind, const std::string& subject, const std::string& sentence) {
        result_.findings.push_back({kind, subject, "", sentence});
    }

    bool stopped() const { return options_.stop && options_.stop(); }

    LibraryReader reader_;
    const VerificationOptions& options_;
    Verification result_;
};

} // namespace

Verification verifyLibrary(const std::string& path, const VerificationOptions& options) {
    try {
        return Verifying(path, options).run();
    } catch (const LibraryError& failure) {
        const auto code = static_cast<int>(failure.error().code) & 0xff;
        const bool damaged = failure.error().domain == sqliteErrorDomain &&
                             (code == SQLITE_CORRUPT || code == SQLITE_NOTADB);
        if (!damaged)
            throw;
        Verification result;
        result.complete = true;
        result.findings.push_back({Kind::catalogue, "library.db", "", failure.what()});
        return result;
    }
}

} // namespace local
