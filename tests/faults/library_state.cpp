#include "tests/faults/library_state.h"

#include "platform/asset.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/verification.h"
#include "tests/faults/prepared_libraries.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace faults {

namespace {

// The first column says what a line is about, so that the order is that of the queries.
// Identifiers are in capital letters, and hashes are not.
constexpr const char* descriptionQueries[] = {
    "SELECT 'library', access, confirm_deletions FROM library",
    "SELECT 'asset', hex(uuid), filename, a.created, media, width, height, hidden, "
    "trashed_at IS NOT NULL, f.asset IS NOT NULL AS favorite, content_type, lower(hex(hash)), "
    "size, edited, traits FROM asset AS a LEFT JOIN favorite AS f ON f.asset = a.n "
    "ORDER BY a.created, filename, uuid",
    "SELECT 'edit', hex(uuid), lower(hex(e.hash)), e.size, original_width, original_height, "
    "format_identifier, format_version, lower(hex(data)) FROM edit AS e JOIN asset AS a "
    "ON a.n = e.asset ORDER BY uuid",
    "WITH RECURSIVE tree (n, path) AS (SELECT n, '/' || title FROM collection WHERE parent IS NULL "
    "UNION ALL SELECT c.n, tree.path || '/' || c.title FROM tree JOIN collection AS c "
    "ON c.parent = tree.n) SELECT 'collection', path, hex(uuid), kind, (SELECT count(*) "
    "FROM collection AS o WHERE o.parent IS c.parent AND o.position < c.position) AS place "
    "FROM tree JOIN collection AS c USING (n) ORDER BY path",
    "SELECT 'member', title, (SELECT count(*) FROM album_member AS o WHERE o.album = m.album AND "
    "o.position < m.position) AS place, hex(a.uuid) FROM album_member AS m JOIN collection AS c "
    "ON c.n = m.album JOIN asset AS a ON a.n = m.asset ORDER BY title, c.n, m.position",
    "SELECT 'chosen', hex(uuid) FROM limited_choice AS l JOIN asset AS a ON a.n = l.asset "
    "ORDER BY uuid"};

int appendRow(void* description, int count, char** values, char** names) {
    std::string& text = *static_cast<std::string*>(description);
    text += values[0];
    for (int i = 1; i < count; ++i)
        text.append(" ").append(names[i]).append("=").append(values[i] ? values[i] : "NULL");
    text += "\n";
    return SQLITE_OK;
}

std::string describeLibrary() {
    const local::ConnectionLease connection = local::Library::open()->connection();
    std::string description;
    for (const char* query : descriptionQueries) {
        char* error = nullptr;
        if (sqlite3_exec(connection->handle(), query, appendRow, &description, &error) != SQLITE_OK)
            throw local::LibraryError(local::sqliteErrorDomain, SQLITE_ERROR, error);
    }
    // The listing comes from markers that this process keeps beside the catalogue.
    platform::PHFetchOptions newestFirst;
    newestFirst.sortDescriptors.push_back({"creationDate", false});
    const auto listed = platform::fetchAssetsWithOptions(newestFirst);
    for (std::size_t i = 0; i < listed.count(); ++i) {
        const auto asset = listed.objectAtIndex(i);
        std::string identifier = asset ? asset->localIdentifier : "nothing";
        std::erase(identifier, '-');
        description += "listed " + identifier + "\n";
    }
    return description;
}

std::string describeBackup() {
    if (!fs::exists(backup()))
        return "";
    const local::Verification verification = local::verifyLibrary(backup(), {});
    std::string description = "backup of " + std::to_string(verification.files) + " files\n";
    for (const local::Finding& finding : verification.findings) {
        if (finding.kind != local::Finding::Kind::unnamed) // on its way into the next one
            description += findingMark + ("in the backup: " + finding.sentence) + "\n";
    }
    return description;
}

std::string findings() {
    std::string found;
    const auto add = [&](const std::string& text) { found += findingMark + text + "\n"; };
    const local::Verification verification = local::verifyLibrary(library(), {});
    for (const local::Finding& finding : verification.findings)
        add(finding.sentence);
    // Beside what verification looks at: the places where files are on their way.
    for (const auto& entry : fs::directory_iterator(library() / "incoming")) {
        if (entry.path().filename() != ".photos-kit")
            add("left behind among what is on its way in");
    }
    const local::ConnectionLease connection = local::Library::open()->connection();
    if (connection->integer("SELECT count(*) FROM discarded_file") != 0)
        add("discarded files are not forgotten");
    if (verification.leftOver != 0 || !verification.complete)
        add("files are left over, or verification stopped");
    return found;
}

} // namespace

std::string describe(bool verified) {
    try {
        std::string description = describeLibrary();
        description += describeBackup();
        return description + (verified ? findings() : "");
    } catch (const std::exception& error) {
        std::set<std::string> files; // in order
        for (const auto& entry : fs::recursive_directory_iterator(library()))
            files.insert(entry.path().string() + "\n");
        return std::accumulate(files.begin(), files.end(),
                               findingMark + std::string(error.what()) + "\n");
    }
}

std::string withoutNewIdentifiers(std::string text, const std::string& old) {
    constexpr const char* digits = "0123456789ABCDEF";
    for (std::size_t at = 0; (at = text.find_first_of(digits, at)) != std::string::npos;) {
        const std::size_t end = std::min(text.find_first_not_of(digits, at), text.size());
        const std::string word = text.substr(at, end - at);
        const bool isNew = word.size() == 32 && old.find(word) == std::string::npos;
        text.replace(at, word.size(), isNew ? "NEW" : word);
        at += isNew ? 3 : word.size();
    }
    return text;
}

} // namespace faults
