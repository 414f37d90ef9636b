#include "platform/local/change_transaction.h"

#include "platform/local/access.h"
#include "platform/local/asset_creation.h"
#include "platform/local/asset_record.h"
#include "platform/local/checkpointer.h"
#include "platform/local/confirmation.h"
#include "platform/local/discarded_files.h"
#include "platform/local/edits.h"
#include "platform/local/guarded.h"
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

template <class Prepared>
using Parts = std::vector<std::unique_ptr<Prepared>>;

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

} // namespace

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

void refuseChangeUnderWay() noexcept {
    ChangeTransaction* const change = ChangeTransaction::current();
    if (!change || change->refusal)
        return;
    try {
        throw;
    } catch (const LibraryError& failure) {
        change->refusal = failure.error();
    } catch (const std::exception& failure) {
        change->refusal =
            platform::NSError{std::string(platform::PHPhotosErrorDomain), 0, failure.what()};
    }
}

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
