#include "tests/faults/library_state.h"

#include "platform/asset.h"
#include "platform/local/catalogue/catalogue_rules.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/verification.h"

#include <algorithm>
#include <array>
#include <regex>
#include <sstream>
#include <string_view>

namespace faults {

namespace {

namespace fs = std::filesystem;

using local::Statement;

// Every line begins with what it is about, so that the order is that of the queries.
constexpr std::array descriptionQueries{
    "SELECT 'library access=' || access || ' confirm=' || confirm_deletions FROM library",
    "SELECT 'asset ' || hex(uuid) || ' ' || filename || ' created=' || a.created || ' ' || media "
    "|| ' ' || width || 'x' || height || ' hidden=' || hidden || ' trashed=' || "
    "(trashed_at IS NOT NULL) || ' favorite=' || (f.asset IS NOT NULL) || ' ' || content_type || "
    "' hash=' || hex(hash) || ' size=' || size || ' edited=' || edited || ' traits=' || traits "
    "FROM asset AS a LEFT JOIN favorite AS f ON f.asset = a.n ORDER BY a.created, filename, uuid",
    "SELECT 'edit ' || hex(a.uuid) || ' hash=' || hex(e.hash) || ' size=' || e.size || "
    "' original=' || original_width || 'x' || original_height || ' ' || format_identifier || ' ' "
    "|| format_version || ' ' || hex(data) FROM edit AS e JOIN asset AS a ON a.n = e.asset "
    "ORDER BY a.uuid",
    "WITH RECURSIVE tree (n, path) AS (SELECT n, '/' || title FROM collection WHERE parent IS NULL "
    "UNION ALL SELECT c.n, tree.path || '/' || c.title FROM tree JOIN collection AS c "
    "ON c.parent = tree.n) SELECT 'collection ' || path || ' ' || hex(uuid) || ' kind=' || kind "
    "|| ' place=' || (SELECT count(*) FROM collection AS other WHERE other.parent IS c.parent "
    "AND other.position < c.position) FROM tree JOIN collection AS c USING (n) ORDER BY path",
    "SELECT 'member ' || title || ' ' || (SELECT count(*) FROM album_member AS o WHERE "
    "o.album = m.album AND o.position < m.position) || ' ' || hex(a.uuid) FROM album_member AS m "
    "JOIN collection AS c ON c.n = m.album JOIN asset AS a ON a.n = m.asset "
    "ORDER BY c.title, c.n, m.position",
    "SELECT 'chosen ' || hex(a.uuid) FROM limited_choice AS l JOIN asset AS a ON a.n = l.asset "
    "ORDER BY a.uuid"};

// Puts identifiers as hosts write them.
std::string readable(std::string_view line) {
    std::string text(line);
    std::istringstream words{std::string(line)};
    for (std::string word; words >> word;) {
        const bool isUuid =
            word.size() == 32 && word.find_first_not_of("0123456789ABCDEF") == std::string::npos;
        if (!isUuid)
            continue;
        const std::size_t at = text.find(word);
        for (const std::size_t dash : {20, 16, 12, 8})
            text.insert(at + dash, "-");
    }
    return text;
}

// Beside what verification looks at: the places where files are on their way in.
bool isEmptied(const fs::path& folder) {
    return std::all_of(fs::directory_iterator(folder), fs::directory_iterator(),
                       [](const auto& entry) { return entry.path().filename() == ".photos-kit"; });
}

} // namespace

std::string describeLibrary() {
    const local::ConnectionLease connection = local::Library::open()->connection();
    std::string description;
    for (const char* query : descriptionQueries) {
        Statement rows = connection->statement(query);
        while (rows.step())
            description.append(readable(rows.text(0))).append("\n");
    }
    // The listing comes from markers that this process keeps beside the catalogue.
    platform::PHFetchOptions newestFirst;
    newestFirst.sortDescriptors.push_back({"creationDate", false});
    const auto listed = platform::fetchAssetsWithOptions(newestFirst);
    for (std::size_t i = 0; i < listed.count(); ++i) {
        const auto asset = listed.objectAtIndex(i);
        description.append("listed ").append(asset ? asset->localIdentifier : "nothing");
        description.append("\n");
    }
    return description;
}

std::string describeBackup(const fs::path& backup) {
    if (!fs::exists(backup))
        return "";
    const local::Verification verification = local::verifyLibrary(backup.string(), {});
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
        if (known.contains(identifier))
            continue;
        for (std::size_t at = 0; (at = text.find(identifier, at)) != std::string::npos;)
            text.replace(at, identifier.size(), "NEW");
    }
    return text;
}

std::vector<std::string> faultsOfLibrary(const fs::path& library, bool strangers) {
    std::vector<std::string> found;
    const local::ConnectionLease connection = local::Library::open()->connection();
    for (const local::CatalogueRule& rule : local::catalogueRules()) {
        if (connection->integer(rule.count) != 0)
            found.emplace_back(rule.violation);
    }
    if (!strangers)
        return found;
    if (!isEmptied(library / "incoming"))
        found.emplace_back("left behind among what is on its way in");
    if (connection->integer("SELECT count(*) FROM discarded_file") != 0)
        found.emplace_back("discarded files are not forgotten");
    const local::Verification verification = local::verifyLibrary(library.string(), {});
    for (const local::Finding& finding : verification.findings)
        found.push_back(finding.sentence);
    if (verification.leftOver != 0 || !verification.complete)
        found.emplace_back("files are left over, or verification stopped");
    return found;
}

} // namespace faults
