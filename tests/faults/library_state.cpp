#include "tests/faults/library_state.h"

#include "platform/asset.h"
#include "platform/local/catalogue/catalogue_rules.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/verification.h"
#include "tests/faults/prepared_libraries.h"

#include <algorithm>
#include <regex>

namespace faults {

namespace {

// The first column says what a line is about, so that the order is that of the queries.
// Identifiers are in capital letters, as hosts write them, and hashes are not.
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

} // namespace

std::string describeLibrary() {
    const local::ConnectionLease connection = local::Library::open()->connection();
    std::string rows;
    for (const char* query : descriptionQueries) {
        char* error = nullptr;
        if (sqlite3_exec(connection->handle(), query, appendRow, &rows, &error) != SQLITE_OK)
            throw local::LibraryError(local::sqliteErrorDomain, SQLITE_ERROR, error);
    }
    static const std::regex plain(
        "([0-9A-F]{8})([0-9A-F]{4})([0-9A-F]{4})([0-9A-F]{4})([0-9A-F]{12})");
    std::string description = std::regex_replace(rows, plain, "$1-$2-$3-$4-$5");
    // The listing comes from markers that this process keeps beside the catalogue.
    platform::PHFetchOptions newestFirst;
    newestFirst.sortDescriptors.push_back({"creationDate", false});
    const auto listed = platform::fetchAssetsWithOptions(newestFirst);
    for (std::size_t i = 0; i < listed.count(); ++i) {
        const auto asset = listed.objectAtIndex(i);
        description += "listed " + (asset ? asset->localIdentifier : "nothing") + "\n";
    }
    return description;
}

std::string describeBackup() {
    if (!fs::exists(backup()))
        return "";
    const local::Verification verification = local::verifyLibrary(backup().string(), {});
    std::string description = "backup of " + std::to_string(verification.files) + " files\n";
    for (const local::Finding& finding : verification.findings) {
        if (finding.kind != local::Finding::Kind::unnamed) // on its way into the next one
            description += "backup: " + finding.sentence + "\n";
    }
    return description;
}

std::set<std::string> identifiersIn(const std::string& description) {
    static const std::regex identifier("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
    std::set<std::string> found;
    const std::sregex_iterator end;
    for (std::sregex_iterator at(description.begin(), description.end(), identifier); at != end;
         ++at)
        found.insert(at->str());
    return found;
}

std::string withoutNewIdentifiers(std::string text, const std::set<std::string>& known) {
    for (const std::string& identifier : identifiersIn(text)) {
        if (!known.contains(identifier))
            text = std::regex_replace(text, std::regex(identifier), "NEW");
    }
    return text;
}

std::vector<std::string> faultsOfLibrary(bool strangers) {
    std::vector<std::string> found;
    const local::ConnectionLease connection = local::Library::open()->connection();
    for (const local::CatalogueRule& rule : local::catalogueRules()) {
        if (connection->integer(rule.count) != 0)
            found.emplace_back(rule.violation);
    }
    if (!strangers)
        return found;
    // Beside what verification looks at: the places where files are on their way in.
    for (const auto& entry : fs::directory_iterator(library() / "incoming")) {
        if (entry.path().filename() != ".photos-kit")
            found.emplace_back("left behind among what is on its way in");
    }
    if (connection->integer("SELECT count(*) FROM discarded_file") != 0)
        found.emplace_back("discarded files are not forgotten");
    const local::Verification verification = local::verifyLibrary(library().string(), {});
    for (const local::Finding& finding : verification.findings)
        found.push_back(finding.sentence);
    if (verification.leftOver != 0 || !verification.complete)
        found.emplace_back("files are left over, or verification stopped");
    return found;
}

} // namespace faults
