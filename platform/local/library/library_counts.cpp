#include "platform/local/library/library_counts.h"

#include "platform/asset.h"
#include "platform/local/library/library.h"

namespace local {

namespace {

void countAssets(CatalogueConnection& connection, LibraryCounts& counts) {
    Statement rows =
        connection.statement("SELECT media, hidden, trashed_at IS NOT NULL, count(*), sum(size) "
                             "FROM asset GROUP BY 1, 2, 3");
    while (rows.step()) {
        const std::int64_t assets = rows.integer(3);
        const std::int64_t bytes = rows.integer(4);
        counts.originalBytes += bytes;
        if (rows.integer(2) != 0) {
            counts.trashed += assets;
            counts.trashedBytes += bytes;
            continue;
        }
        const bool video = rows.integer(0) == platform::PHAssetMediaTypeVideo;
        (video ? counts.videos : counts.photos) += assets;
        if (rows.integer(1) != 0)
            counts.hidden += assets;
    }
}

} // namespace

LibraryCounts countLibrary() {
    const ConnectionLease connection = Library::open()->connection();
    const Snapshot snapshot(*connection);
    LibraryCounts counts;
    countAssets(*connection, counts);
    counts.favorites =
        connection->integer("SELECT count(*) FROM favorite AS f "
                            "CROSS JOIN asset ON asset.n = f.asset WHERE trashed_at IS NULL");
    counts.albums = connection->integer("SELECT count(*) FROM collection WHERE kind = 1");
    counts.folders = connection->integer("SELECT count(*) FROM collection WHERE kind = 2");
    counts.editBytes = connection->integer("SELECT ifnull(sum(size), 0) FROM edit");
    return counts;
}

} // namespace local
