#include "tests/faults/library_state.h"

#include "platform/asset.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/verification.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <array>
#include <fstream>
#include <regex>
#include <span>
#include <sstream>
#include <string_view>

namespace faults {

namespace {

namespace fs = std::filesystem;

using local::CatalogueConnection;
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

// What must answer no rows; the text says what a row means.
struct Rule {
    const char* broken;
    const char* query;
};
constexpr std::array rules{
    Rule{"integrity", "SELECT * FROM pragma_integrity_check WHERE integrity_check <> 'ok'"},
    Rule{"a reference leads nowhere", "SELECT * FROM pragma_foreign_key_check"},
    Rule{"number of listed assets", "SELECT listed FROM library WHERE listed <> (SELECT count(*) "
                                    "FROM asset WHERE hidden = 0 AND trashed_at IS NULL)"},
    Rule{"number held by a collection",
         "SELECT n FROM collection AS c WHERE held <> CASE kind WHEN 2 THEN (SELECT count(*) FROM "
         "collection AS child WHERE child.parent = c.n) ELSE (SELECT count(*) FROM album_member AS "
         "m WHERE m.album = c.n AND m.listed = 1) END"},
    Rule{"a member that does not follow its asset",
         "SELECT m.asset FROM album_member AS m JOIN asset AS a ON a.n = m.asset WHERE m.created "
         "<> a.created OR m.listed <> (a.hidden = 0 AND a.trashed_at IS NULL)"},
    Rule{"number of favourites",
         "SELECT favorites FROM smart_album WHERE favorites <> (SELECT count(*) FROM favorite AS f "
         "JOIN asset AS a ON a.n = f.asset WHERE hidden = 0 AND trashed_at IS NULL)"},
    Rule{"number of hidden assets",
         "SELECT hidden FROM smart_album WHERE hidden <> (SELECT count(*) FROM asset WHERE hidden "
         "= 1 AND trashed_at IS NULL)"},
    Rule{"an edit that its asset does not know",
         "SELECT a.n FROM asset AS a LEFT JOIN edit AS e ON e.asset = a.n WHERE a.edited <> "
         "(e.asset IS NOT NULL)"},
    Rule{"a discarded file that is still named",
         "SELECT path FROM discarded_file WHERE path IN (SELECT 'originals/' || substr(stored_as, "
         "1, 2) || '/' || stored_as FROM asset UNION ALL SELECT 'renders/' || substr(stored_as, 1, "
         "2) || '/' || stored_as FROM edit)"},
};

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

std::string hexadecimal(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text.push_back("0123456789abcdef"[byte >> 4]);
        text.push_back("0123456789abcdef"[byte & 15]);
    }
    return text;
}

std::string hashOf(const std::string& bytes) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(bytes.data(), bytes.size()));
    return hexadecimal(canonical.digest);
}

// The files that rows name, each as it was stored; answers their paths.
std::set<std::string> checkFiles(CatalogueConnection& connection, const fs::path& library,
                                 std::vector<std::string>& found) {
    std::set<std::string> named;
    Statement rows = connection.statement(
        "SELECT 'originals/' || substr(stored_as, 1, 2) || '/' || stored_as, hash, size FROM asset "
        "UNION ALL SELECT 'renders/' || substr(stored_as, 1, 2) || '/' || stored_as, hash, size "
        "FROM edit");
    while (rows.step()) {
        const std::string path(rows.text(0));
        named.insert(path);
        std::ifstream file(library / path, std::ios::binary);
        if (!file) {
            found.push_back("missing: " + path);
            continue;
        }
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        if (static_cast<std::int64_t>(bytes.size()) != rows.integer(2) ||
            hashOf(bytes) != hexadecimal(rows.blob(1)))
            found.push_back("changed: " + path);
    }
    return named;
}

void findStrangers(const fs::path& library, const std::set<std::string>& named,
                   std::vector<std::string>& found) {
    for (const char* folder : {"originals", "renders", "incoming"}) {
        if (!fs::exists(library / folder))
            continue;
        for (const auto& entry : fs::recursive_directory_iterator(library / folder)) {
            const std::string path = fs::relative(entry.path(), library).string();
            const bool shelf = entry.is_directory() && std::string_view(folder) != "incoming";
            const bool mark = entry.path().filename() == ".photos-kit"; // of the folder itself
            if (!shelf && !mark && !named.contains(path))
                found.push_back("left behind: " + path);
        }
    }
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

std::string withoutNewIdentifiers(const std::string& description,
                                  const std::set<std::string>& known) {
    std::string text = description;
    for (const std::string& identifier : identifiersIn(description)) {
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
    for (const Rule& rule : rules) {
        Statement rows = connection->statement(rule.query);
        if (rows.step())
            found.push_back(std::string(rule.broken) + ": " + std::string(rows.text(0)));
    }
    const std::set<std::string> named = checkFiles(*connection, library, found);
    if (!strangers)
        return found;
    findStrangers(library, named, found);
    if (const auto left = connection->integer("SELECT count(*) FROM discarded_file"); left != 0)
        found.push_back("discarded files not forgotten: " + std::to_string(left));
    const local::Verification verification = local::verifyLibrary(library.string(), {});
    for (const local::Finding& finding : verification.findings)
        found.push_back("verification: " + finding.sentence);
    if (verification.leftOver != 0 || !verification.complete)
        found.push_back("verification: files are left over, or it stopped");
    return found;
}

} // namespace faults
