#include "platform/local/maintenance/repair.h"

#include "platform/local/catalogue/catalogue_rules.h"
#include "platform/local/maintenance/library_reader.h"
#include "platform/local/maintenance/quarantine.h"
#include "platform/local/maintenance/stray_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace local {

namespace {

using Kind = Finding::Kind;
using Outcome = RepairStep::Outcome;

class Repairing {
public:
    Repairing(const std::string& path, const RepairOptions& options)
        : reader_(path), options_(options) {
        for (const Stored kind : {Stored::original, Stored::render})
            reader_.files().requirePresent(kind);
        if (!options.backup.empty())
            backup_ = std::make_unique<LibraryReader>(options.backup);
        if (!options.apply)
            return;
        reader_.catalogue().execute("PRAGMA query_only=0");
        if (reader_.catalogue().isReadOnly())
            throw LibraryError(posixErrorDomain, EROFS, "The photo library is read-only.");
    }

    Repair run(const Verification& found) {
        // Files out of the way first: among them may be one that another asset has lost.
        for (const Finding& finding : found.findings)
            if (finding.kind == Kind::unnamed)
                step(finding, [&](RepairStep& one) { takeAway(finding, one); });
        for (const Finding& finding : found.findings)
            if (finding.kind != Kind::unnamed)
                step(finding, [&](RepairStep& one) { mend(finding, one); });
        result_.complete = true;
        return std::move(result_);
    }

private:
    template <class Act>
    void step(const Finding& finding, Act act) {
        RepairStep one{Outcome::planned, finding.subject, finding.asset, ""};
        try {
            act(one);
        } catch (const LibraryError& failure) {
            one.outcome = Outcome::failed;
            one.sentence = failure.what();
        }
        result_.steps.push_back(std::move(one));
    }

    void mend(const Finding& finding, RepairStep& one) {
        switch (finding.kind) {
        case Kind::rule:
            return mendRules(one);
        case Kind::missing:
        case Kind::damaged:
            return bringBack(finding, one);
        default:
            one.outcome = Outcome::impossible;
            one.sentence = finding.kind == Kind::unreadable
                               ? "It cannot be read now: look after the disk and its permissions."
                               : "The catalogue is damaged. Put the library's folder "
                                 "aside, whole, and a backup in its place.";
        }
    }

    // All rules in one transaction, whichever finding comes first; what is right stays as it is.
    void mendRules(RepairStep& one) {
        one.sentence = "Told anew from what is told only once.";
        if (!options_.apply)
            return;
        WriteTransaction transaction(reader_.catalogue());
        bool wrong = false;
        for (const CatalogueRule& rule : catalogueRules()) {
            if (reader_.catalogue().integer(rule.count) == 0)
                continue;
            reader_.catalogue().execute(rule.mend);
            wrong = true;
        }
        for (const CatalogueRule& rule : catalogueRules())
            if (reader_.catalogue().integer(rule.count) != 0)
                throw LibraryError(sqliteErrorDomain, SQLITE_CORRUPT,
                                   std::string(rule.violation) + ", also after the repair.");
        transaction.commit();
        one.outcome = wrong || mended_ ? Outcome::done : Outcome::overtaken;
        mended_ = true;
    }

    void takeAway(const Finding& finding, RepairStep& one) {
        one.sentence = "Moved to quarantine/.";
        if (!options_.apply)
            return;
        // Nobody can commit a row that names it meanwhile; and an importer that has not committed
        // yet has its lock file there.
        const WriteTransaction lock(reader_.catalogue());
        const std::string name = finding.subject.substr(finding.subject.find_last_of('/') + 1);
        const bool render = finding.subject.starts_with(folderOf(Stored::render));
        const bool incoming = finding.subject.starts_with("incoming/");
        if (!incoming && !isUnnamed(reader_, render ? Stored::render : Stored::original, name) &&
            finding.subject == pathIn(render ? Stored::render : Stored::original, name)) {
            one.outcome = Outcome::overtaken;
            return;
        }
        one.sentence = "Moved to " + moveToQuarantine(reader_.folder(), finding.subject) + ".";
        one.outcome = Outcome::done;
    }

    static std::string pathIn(Stored kind, const std::string& name) {
        return std::string(folderOf(kind)) + "/" + name.substr(0, 2) + "/" + name;
    }

    void bringBack(const Finding& finding, RepairStep& one) {
        const NamedFile wanted = named(finding.subject);
        const Place source = sourceOf(wanted);
        if (source.path.empty()) {
            one.outcome = Outcome::impossible;
            one.sentence = wanted.kind == Stored::original
                               ? "No file with its bytes was found. Its asset stays; --from takes "
                                 "the file out of a backup."
                               : "No file with its bytes was found. --from takes it out of a "
                                 "backup; photos-kit revert drops the edit.";
            return;
        }
        one.sentence = source.description;
        if (!options_.apply)
            return;
        // Before anything is moved, because this is what can fail for want of room.
        const std::string whole =
            source.folder == reader_.folder()
                ? source.path
                : copyToQuarantine(reader_.folder(), wanted, source.folder, source.path);
        const WriteTransaction lock(reader_.catalogue());
        if (!reader_.stillNames(wanted) || isRight(wanted) ||
            !isAt(reader_.folder(), whole, wanted)) {
            one.outcome = Outcome::overtaken;
            return;
        }
        if (faccessat(reader_.folder(), finding.subject.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0)
            one.sentence +=
                " The damaged one is " + moveToQuarantine(reader_.folder(), finding.subject) + ".";
        putInPlace(reader_.folder(), wanted, whole);
        one.outcome = Outcome::done;
    }

    struct Place {
        int folder = -1;
        std::string path;
        std::string description;
    };

    Place sourceOf(const NamedFile& wanted) {
        const std::string here = findInQuarantine(reader_.folder(), wanted);
        if (!here.empty())
            return {reader_.folder(), here, "Brought back from " + here + "."};
        for (const RepairStep& one : result_.steps) // planned to be in the quarantine
            if (one.outcome == Outcome::planned && isAt(reader_.folder(), one.subject, wanted))
                return {reader_.folder(), one.subject, "Brought back from " + one.subject + "."};
        if (backup_ && isAt(backup_->folder(), wanted.path(), wanted))
            return {backup_->folder(), wanted.path(), "Brought back from the backup."};
        return {};
    }

    static bool isAt(int folder, const std::string& path, const NamedFile& wanted) {
        const UniqueFd file(
            openat(folder, path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        return file && hasContent(file.get(), wanted.hash, wanted.size, nullptr);
    }

    bool isRight(const NamedFile& wanted) { return isAt(reader_.folder(), wanted.path(), wanted); }

    NamedFile named(const std::string& path) {
        const std::string name = path.substr(path.find_last_of('/') + 1);
        const bool render = path.starts_with(folderOf(Stored::render));
        Statement row = reader_.catalogue().statement(
            render ? "SELECT asset, hash, size FROM edit WHERE stored_as = ?1"
                   : "SELECT n, hash, size FROM asset WHERE stored_as = ?1");
        NamedFile file;
        if (!row.bind(1, name).step())
            return file;
        file.asset = row.integer(0);
        file.kind = render ? Stored::render : Stored::original;
        file.name = name;
        file.hash = row.bytes<ContentHash>(1);
        file.size = row.integer(2);
        return file;
    }

    LibraryReader reader_;
    std::unique_ptr<LibraryReader> backup_;
    const RepairOptions& options_;
    Repair result_;
    bool mended_ = false;
};

} // namespace

std::string nameOf(RepairStep::Outcome outcome) {
    switch (outcome) {
    case Outcome::planned:
        return "planned";
    case Outcome::done:
        return "done";
    case Outcome::overtaken:
        return "overtaken";
    case Outcome::failed:
        return "failed";
    case Outcome::impossible:
        break;
    }
    return "impossible";
}

Repair repairLibrary(const std::string& path, const RepairOptions& options) {
    Repairing repairing(path, options);
    VerificationOptions how;
    how.content = options.content;
    how.stop = options.stop;
    if (options.progress)
        how.progress = [&](std::int64_t files, std::int64_t all, std::int64_t,
                           const std::vector<Finding>&) { options.progress(files, all); };
    const Verification found = verifyLibrary(path, how);
    return found.complete ? repairing.run(found) : Repair{};
}

} // namespace local
