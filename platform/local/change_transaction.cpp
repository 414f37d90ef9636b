#include "platform/local/change_transaction.h"

#include "platform/local/access.h"
#include "platform/local/asset_creation.h"
#include "platform/local/asset_record.h"
#include "platform/local/checkpointer.h"
#include "platform/local/library.h"
#include "platform/photo_library.h"

namespace local {

namespace {

thread_local ChangeTransaction* currentTransaction = nullptr;

// How much of the log of listing changes is kept for processes that have fallen behind; one that
// has fallen further reads the listing anew, which costs about as much as so many changes.
void shortenListingLog(CatalogueConnection& connection) {
    connection
        .statement("DELETE FROM listing_change "
                   "WHERE seq <= (SELECT listing_changes FROM library) - 65536")
        .run();
}

void carryOut(const ChangeTransaction& changes) {
    const std::shared_ptr<Library> library = Library::open();
    library->requireWritable();
    const ConnectionLease connection = library->connectionForChanges();
    requireChangeAccess(*connection);

    // Copying and reading files takes long and needs no lock.
    std::vector<std::unique_ptr<PreparedAsset>> prepared;
    for (const auto& creation : changes.assetCreations)
        prepared.push_back(std::make_unique<PreparedAsset>(library->files(), *creation));

    {
        const std::unique_lock<std::mutex> lock = library->writeLock();
        WriteTransaction transaction(*connection);
        const bool limited = requireChangeAccess(*connection);
        for (const auto& asset : prepared)
            asset->insert(*connection, limited);
        for (const auto& step : changes.steps)
            step(*connection);
        shortenListingLog(*connection);
        for (const auto& asset : prepared)
            asset->commitBegins();
        transaction.commit();
    }
    for (const auto& asset : prepared)
        asset->committed();
    checkpointWhenLong(library, connection->logPages());
}

} // namespace

ChangeTransaction* ChangeTransaction::current() {
    return currentTransaction;
}

void ChangeTransaction::collect(const std::function<void()>& block) {
    struct Restore {
        ChangeTransaction* outer;
        ~Restore() { currentTransaction = outer; }
    } const restore{std::exchange(currentTransaction, this)};
    block();
}

} // namespace local

namespace platform {

bool performChangesAndWait(const std::function<void()>& changeBlock,
                           std::optional<NSError>& error) {
    try {
        local::ChangeTransaction changes;
        changes.collect(changeBlock);
        local::carryOut(changes);
        return true;
    } catch (const local::LibraryError& failure) {
        error = failure.error();
    } catch (const std::exception& failure) {
        error = NSError{std::string(PHPhotosErrorDomain), 0, failure.what()};
    }
    return false;
}

} // namespace platform
