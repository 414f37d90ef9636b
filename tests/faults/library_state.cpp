#include "platform/asset.h"
#include "platform/local/library/library.h"
#include "platform/local/maintenance/verification.h"
#include "tests/faults/run.h"

#include <algorithm>
#include <set>

namespace faults {

namespace {

// What a line is about comes first, and identifiers last: the order does not depend on new ones.
// They are in capital letters, and hashes are not.
constexpr const char* linesQuery = R"(
    WITH RECURSIVE tree (n, path) AS (
        SELECT n, '/' || title FROM collection WHERE parent IS NULL UNION ALL
        SELECT c.n, path || '/' || title FROM tree JOIN collection AS c ON parent = tree.n)
    SELECT json_array('library', access, confirm_deletions) AS line FROM library UNION ALL
    SELECT json_array('asset', a.created, filename, media, width, height, hidden,
                      trashed_at IS NOT NULL, f.asset IS NOT NULL, content_type, lower(hex(hash)),
                      size, edited, traits, hex(uuid))
    FROM asset AS a LEFT JOIN favorite AS f ON f.asset = a.n UNION ALL
    SELECT json_array('edit', lower(hex(e.hash)), e.size, original_width, original_height,
                      format_identifier, format_version, lower(hex(data)), hex(uuid))
    FROM edit AS e JOIN asset AS a ON a.n = e.asset UNION ALL
    SELECT json_array('collection', path, kind, (SELECT count(*) FROM collection AS o
                      WHERE o.parent IS c.parent AND o.position < c.position), hex(uuid))
    FROM tree JOIN collection AS c USING (n) UNION ALL
    SELECT json_array('member', path, (SELECT count(*) FROM album_member AS o
                      WHERE o.album = m.album AND o.position < m.position), hex(uuid))
    FROM album_member AS m JOIN tree ON tree.n = m.album JOIN asset AS a ON a.n = m.asset UNION ALL
    SELECT json_array('chosen', hex(uuid)) FROM limited_choice JOIN asset ON n = asset
    ORDER BY line)";

constexpr const char* findingMark = "found ";

std::string finding(const std::string& sentence) {
    return findingMark + sentence + "\n";
}

std::string describeLibrary() {
    const local::ConnectionLease connection = local::Library::open()->connection();
    std::string description;
    for (local::Statement lines = connection->statement(linesQuery); lines.step();)
        description.append(lines.text(0)).append("\n");
    // The listing comes from markers that this process keeps beside the catalogue.
    platform::PHFetchOptions newestFirst;
    newestFirst.sortDescriptors.push_back({"creationDate", false});
    const auto listed = platform::fetchAssetsWithOptions(newestFirst);
    for (std::size_t i = 0; i < listed.count(); ++i) {
        const auto asset = listed.objectAtIndex(i);
        std::string identifier = asset ? asset->localIdentifier.substr(0, 36) : "nothing";
        std::erase(identifier, '-');
        description += "listed \"" + identifier + "\"\n";
    }
    return description;
}

std::string describeBackup() {
    if (!fs::exists(backup()))
        return "";
    const local::Verification verification = local::verifyLibrary(backup(), {});
    std::string description = "backup of " + std::to_string(verification.files) + " files\n";
    for (const local::Finding& found : verification.findings) {
        if (found.kind != local::Finding::Kind::unnamed) // on its way into the next one
            description += finding("in the backup: " + found.sentence);
    }
    return description;
}

std::string findings() {
    std::string description;
    const local::Verification verification = local::verifyLibrary(library(), {});
    for (const local::Finding& found : verification.findings)
        description += finding(found.sentence);
    if (verification.leftOver != 0 || !verification.complete)
        description += finding("files left over, or verification stopped");
    const local::ConnectionLease connection = local::Library::open()->connection();
    const bool remembers = connection->integer("SELECT count(*) FROM discarded_file") != 0;
    return description + (remembers ? finding("discarded files that are not forgotten") : "");
}

} // namespace

std::string describe(bool verified) {
    std::string description;
    try {
        description = describeLibrary(); // opens it
        description += describeBackup();
        return description + (verified ? findings() : "");
    } catch (const std::exception& error) {
        description = finding(error.what());
    }
    std::error_code none;
    const fs::recursive_directory_iterator files(library(), none);
    for (const fs::path& file : std::set<fs::path>(begin(files), end(files))) // in order
        description += file.string() + "\n";
    return description;
}

bool isWhole(const std::string& description) {
    return !description.empty() && description.find(findingMark) == std::string::npos;
}

std::string withoutNewIdentifiers(std::string text, const std::string& old) {
    for (std::size_t at = 0; (at = text.find('"', at)) != std::string::npos; ++at) {
        const std::string word = text.substr(at + 1, 32);
        const std::size_t end = text.find_first_not_of("0123456789ABCDEF", at + 1);
        if (end == at + 33 && old.find(word) == std::string::npos)
            text.replace(at + 1, 32, "NEW");
    }
    return text;
}

} // namespace faults
