#include "platform/local/change/carry_out.h"

#include "platform/local/change/asset_creation.h"
#include "platform/local/change/confirmation.h"
#include "platform/local/change/edits.h"
#include "platform/local/library/access.h"
#include "platform/local/library/checkpointer.h"
#include "platform/local/library/discarded_files.h"
#include "platform/local/library/library.h"

namespace local {

namespace {

// How much of the log of listing changes is kept for processes that have fallen behind; one that
// has fallen further reads the listing anew, which costs about as much as so many changes.
void shortenListingLog(CatalogueConnection& connection) {
    connection
        .statement("DELETE FROM listing_change "
                   "WHERE seq <= (SELECT listing_changes FROM library) - 65536")
        .run();
}

template <class Prepared>
using Parts = std::vector<std::unique_ptr<Prepared>>;

} // namespace

void carryOut(const ChangeTransaction& changes) {
    if (changes.refusal)
        throw LibraryError(*changes.refusal);
    const std::shared_ptr<Library> library = Library::open();
    library->requireWritable();
    const ConnectionLease connection = library->connectionForChanges();
    requireChangeAccess(*connection);

    // What takes long needs no lock: the user's answer, copying and reading files.
    if (changes.deletedAssets > 0)
        confirmDeletion(*connection, changes.deletedAssets);
    Parts<PreparedAsset> assets;
    for (const auto& creation : changes.assetCreations)
        assets.push_back(std::make_unique<PreparedAsset>(library->files(), *creation));
    Parts<PreparedEdit> edits;
    for (const EditWish& wish : changes.edits)
        edits.push_back(std::make_unique<PreparedEdit>(library->files(), wish));

    {
        const std::unique_lock<std::mutex> lock = library->writeLock();
        WriteTransaction transaction(*connection);
        const bool limited = requireChangeAccess(*connection);
        for (const auto& asset : assets)
            asset->insert(*connection, limited);
        for (const auto& edit : edits)
            edit->insert(*connection);
        for (const auto& step : changes.steps)
            step(*connection);
        shortenListingLog(*connection);
        for (const auto& asset : assets)
            asset->commitBegins();
        for (const auto& edit : edits)
            edit->commitBegins();
        transaction.commit();
    }
    for (const auto& asset : assets)
        asset->committed();
    for (const auto& edit : edits)
        edit->committed();
    checkpointWhenLong(library, connection->logPages());
    if (!edits.empty())
        removeDiscardedFiles(*library);
}

void carryOutSteps(const std::vector<std::function<void(CatalogueConnection&)>>& steps) {
    const std::shared_ptr<Library> library = Library::open();
    library->requireWritable();
    const ConnectionLease connection = library->connectionForChanges();
    {
        const std::unique_lock<std::mutex> lock = library->writeLock();
        WriteTransaction transaction(*connection);
        for (const auto& step : steps)
            step(*connection);
        shortenListingLog(*connection);
        transaction.commit();
    }
    checkpointWhenLong(library, connection->logPages());
}

} // namespace local
