#include "platform/local/catalogue/catalogue_rules.h"

#include <array>

namespace local {

namespace {

#define LISTED(row) "(" row "hidden = 0 AND " row "trashed_at IS NULL)"

#define POSSIBLE_DATES "-62135596800000 AND 253402300799999"

#define IN_SHELF(folder, shelf, name)                                                              \
    "(path GLOB '" folder "/?"                                                                     \
    "?/*' AND substr(path, " shelf ", 2) = substr(path, " name ", 2)"                              \
    " AND substr(path, " name ") NOT GLOB '*/*' AND substr(path, " name ") NOT GLOB '.*')"

#define DISCARDABLE                                                                                \
    "(" IN_SHELF("originals", "11", "14") " OR " IN_SHELF("renders", "9", "12") " OR " IN_SHELF(   \
        "derivatives", "13", "16") ")"

#define REACHED                                                                                    \
    "WITH RECURSIVE reached (n) AS (SELECT n FROM collection WHERE parent IS NULL UNION "          \
    "SELECT c.n FROM collection AS c JOIN reached AS r ON c.parent = r.n) "

#define TO_THE_TOP                                                                                 \
    "UPDATE collection SET position = (SELECT ifnull(max(position), 0) FROM collection "           \
    "WHERE parent IS NULL) + n, parent = NULL "

#define SMART_COUNTS                                                                               \
    "(SELECT (SELECT count(*) FROM favorite AS f CROSS JOIN asset AS a ON a.n = f.asset "          \
    "          WHERE a.hidden = 0 AND a.trashed_at IS NULL) AS favorites,"                         \
    "        ifnull(sum(hidden = 0 AND media = 2), 0) AS videos,"                                  \
    "        ifnull(sum(hidden = 0 AND traits & 1 <> 0), 0) AS animated,"                          \
    "        ifnull(sum(hidden = 0 AND traits & 2 <> 0), 0) AS raw,"                               \
    "        ifnull(sum(hidden = 0 AND traits & 4 <> 0), 0) AS screenshots,"                       \
    "        ifnull(sum(hidden = 0 AND traits & 8 <> 0), 0) AS selfies,"                           \
    "        ifnull(sum(hidden = 0 AND traits & 16 <> 0), 0) AS panoramas,"                        \
    "        ifnull(sum(hidden = 1), 0) AS hidden"                                                 \
    "   FROM asset WHERE trashed_at IS NULL)"

constexpr const char* smartAlbumsWrong =
    "SELECT (k.favorites <> t.favorites) + (k.videos <> t.videos) + (k.animated <> t.animated)"
    " + (k.raw <> t.raw) + (k.screenshots <> t.screenshots) + (k.selfies <> t.selfies)"
    " + (k.panoramas <> t.panoramas) + (k.hidden <> t.hidden)"
    " FROM smart_album AS k, " SMART_COUNTS " AS t";

constexpr const char* mendSmartAlbums =
    "UPDATE smart_album SET changes = changes + 1, favorites = t.favorites, videos = t.videos,"
    " animated = t.animated, raw = t.raw, screenshots = t.screenshots, selfies = t.selfies,"
    " panoramas = t.panoramas, hidden = t.hidden FROM " SMART_COUNTS " AS t";

constexpr std::array rules{
    CatalogueRule{"the tree", "Albums or folders lie inside something that is no folder",
                  "SELECT count(*) FROM collection AS c JOIN collection AS p ON p.n = c.parent "
                  "WHERE p.kind <> 2",
                  TO_THE_TOP "WHERE parent IN (SELECT n FROM collection WHERE kind <> 2)"},
    CatalogueRule{"the tree", "Albums or folders are in a circle of folders",
                  REACHED "SELECT count(*) FROM collection WHERE n NOT IN reached",
                  REACHED TO_THE_TOP "WHERE n NOT IN reached"},
    CatalogueRule{"edits", "Assets are marked as edited and have no edit, or the reverse",
                  "SELECT count(*) FROM asset AS a "
                  "WHERE edited <> EXISTS (SELECT 1 FROM edit WHERE asset = a.n)",
                  "UPDATE asset SET edited = EXISTS (SELECT 1 FROM edit WHERE asset = asset.n) "
                  "WHERE edited <> EXISTS (SELECT 1 FROM edit WHERE asset = asset.n)"},
    CatalogueRule{"dates", "Assets have dates outside the years 1 to 9999",
                  "SELECT count(*) FROM asset WHERE created NOT BETWEEN " POSSIBLE_DATES,
                  "UPDATE asset SET created = iif(added BETWEEN " POSSIBLE_DATES
                  ", added, unixepoch() * 1000) WHERE created NOT BETWEEN " POSSIBLE_DATES},
    CatalogueRule{"discarded files", "Files are to be removed that are none of the library's own",
                  "SELECT count(*) FROM discarded_file WHERE NOT " DISCARDABLE,
                  "DELETE FROM discarded_file WHERE NOT " DISCARDABLE},
    CatalogueRule{"favourites", "Favourites stand in the wrong order",
                  "SELECT count(*) FROM favorite AS f JOIN asset AS a ON a.n = f.asset "
                  "WHERE a.created <> f.created",
                  "UPDATE OR REPLACE favorite SET created = (SELECT created FROM asset "
                  "WHERE n = favorite.asset) WHERE created <> (SELECT created FROM asset "
                  "WHERE n = favorite.asset)"},
    CatalogueRule{
        "albums", "Members of albums are listed other than their assets",
        "SELECT count(*) FROM album_member AS m JOIN asset AS a ON a.n = m.asset "
        "WHERE m.created <> a.created OR m.listed <> " LISTED("a."),
        "UPDATE album_member SET created = a.created, listed = " LISTED(
            "a.") " FROM asset AS a WHERE a.n = album_member.asset AND (album_member.created <> "
                  "a.created OR album_member.listed <> " LISTED(
                      "a.") ");"
                            "UPDATE collection SET changes = changes + 1 WHERE kind = 1"},
    CatalogueRule{"albums", "The count of an album is wrong",
                  "SELECT count(*) FROM collection AS c WHERE kind = 1 AND held <> (SELECT "
                  "count(*) FROM album_member WHERE album = c.n AND listed = 1)",
                  "UPDATE collection SET changes = changes + 1, held = (SELECT count(*) FROM "
                  "album_member WHERE album = collection.n AND listed = 1) WHERE kind = 1"},
    CatalogueRule{"folders", "The count of a folder is wrong",
                  "SELECT count(*) FROM collection AS c WHERE kind = 2 AND held <> (SELECT "
                  "count(*) FROM collection WHERE parent = c.n)",
                  "UPDATE collection SET held = (SELECT count(*) FROM collection AS c WHERE "
                  "c.parent = collection.n) WHERE kind = 2"},
    CatalogueRule{"the library", "The count of listed assets is wrong",
                  "SELECT listed <> (SELECT count(*) FROM asset WHERE " LISTED("") ") FROM library",
                  "UPDATE library SET listed = (SELECT count(*) FROM asset WHERE " LISTED("") ")"},
    CatalogueRule{"smart albums", "The count of a smart album is wrong", smartAlbumsWrong,
                  mendSmartAlbums},
    CatalogueRule{"the listing log", "Its entries do not fit its number",
                  "SELECT count(*) FROM library, (SELECT max(seq) AS last FROM listing_change) "
                  "WHERE last IS NOT NULL AND last <> listing_changes",
                  "UPDATE library SET listing_changes = max(listing_changes, (SELECT "
                  "ifnull(max(seq), 0) FROM listing_change)) + 1;"
                  "DELETE FROM listing_change"},
};

} // namespace

std::span<const CatalogueRule> catalogueRules() {
    return rules;
}

} // namespace local
