// The one photo library of this user, as this process sees it: its folder, its catalogue
// connections, and what is kept between calls.
//
// Everything here may be used from any thread. Failures are thrown as LibraryError.
#pragma once

#include "platform/local/catalogue/catalogue_connection.h"
#include "platform/local/catalogue/listing_markers.h"
#include "platform/local/store/file_store.h"
#include "platform/local/system/unique_fd.h"

#include <sys/stat.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace local {

class Library;

// A catalogue connection for one thread's use; goes back to the library's pool at the end.
class ConnectionLease {
public:
    ConnectionLease(std::shared_ptr<Library> library, std::unique_ptr<CatalogueConnection> made,
                    bool forChanges);
    ConnectionLease(ConnectionLease&&) noexcept = default;
    ConnectionLease& operator=(ConnectionLease&&) = delete;
    ~ConnectionLease();

    CatalogueConnection& operator*() const { return *connection_; }
    CatalogueConnection* operator->() const { return connection_.get(); }
    Library& library() const { return *library_; }

private:
    std::shared_ptr<Library> library_;
    std::unique_ptr<CatalogueConnection> connection_;
    bool forChanges_;
};

class Library : public std::enable_shared_from_this<Library> {
public:
    // The library at the user's place, opened; created on first use. Kept for later calls as
    // long as the same folder stands there.
    static std::shared_ptr<Library> open();

    // Between these two, open() looks only once, on this thread, whether the library is still
    // where it was. They nest.
    static void beginCall() noexcept;
    static void endCall() noexcept;

    ConnectionLease connection();
    // One with room for the pages of a large change. It is kept apart, because dropping a large
    // cache whenever another process has committed would slow every read.
    ConnectionLease connectionForChanges();
    FileStore& files() { return files_; }
    SharedListingMarkers& listingMarkers() { return markers_; }
    AlbumMarkers& albumMarkers() { return albumMarkers_; }

    // Throws when the library takes no changes.
    void requireWritable() const;

    // A commit that was read may be one of a process that died before it was durable; after this it
    // is. To be called before a file is removed because of what was read.
    void makeDurable(CatalogueConnection& connection);

    // Held by a thread from before it begins a write transaction until that is over, so that the
    // threads of one process queue here instead of polling.
    std::unique_lock<std::mutex> writeLock() { return std::unique_lock(writer_); }

    explicit Library(const std::string& path);

private:
    friend class ConnectionLease;

    static std::shared_ptr<Library> openAnew();
    static void leaveToForkedFrom(std::shared_ptr<Library>& kept, const std::string& path);
    bool stillAt(const std::string& path) const;
    void markStore();
    void sweep();
    std::unique_ptr<CatalogueConnection> connect();
    bool tryToPrepareCatalogue(const std::string& path); // false: another process is at it
    void prepareCatalogue(const std::string& path);
    void giveBack(std::unique_ptr<CatalogueConnection> connection, bool forChanges);

    pid_t process_ = getpid();
    UniqueFd folder_;
    struct stat catalogueFile_ = {};
    CatalogueConnection::Mode mode_ = CatalogueConnection::Mode::readWrite;
    bool readOnly_ = false;
    std::chrono::steady_clock::time_point opened_ = std::chrono::steady_clock::now();
    FileStore files_;
    SharedListingMarkers markers_;
    AlbumMarkers albumMarkers_;
    std::mutex writer_;
    std::mutex poolMutex_;
    std::vector<std::unique_ptr<CatalogueConnection>> idle_;
    std::unique_ptr<CatalogueConnection> idleForChanges_;
};

} // namespace local
