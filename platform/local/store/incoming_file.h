// How a file comes into the store.
#pragma once

#include "platform/local/store/content_hasher.h"
#include "platform/local/store/file_store.h"

namespace local {

// Copies into the store ask this between their pieces, on the thread that copies, and where it says
// so they end, with posixErrorDomain's ECANCELED, and leave nothing. Until it is called they ask
// nobody: no host's copy is stopped.
void stopCopiesWhen(bool (*stop)());

// One file on its way into the store: copied, placed, and kept once its row is committed.
// Leaves no trace when destroyed before commitBegins().
class IncomingFile {
public:
    // Copies all of `source` (a regular file, read from its start), hashing on the way. The name
    // begins with a UUID of this file's own.
    IncomingFile(const FileStore& store, Stored kind, const std::string& name, int source);
    ~IncomingFile();
    IncomingFile(const IncomingFile&) = delete;
    IncomingFile& operator=(const IncomingFile&) = delete;

    // The copy, opened for reading only.
    int readable() const { return readable_.get(); }
    const ContentHash& hash() const { return hash_; }
    std::int64_t size() const { return size_; }

    // Moves the copy to its final place and makes both durable.
    void place();

    // From here on the file stays: whether the commit took effect is for the catalogue to say,
    // and if it did not, a sweep removes the file.
    void commitBegins() { removable_ = false; }
    // The row is committed: the lock file has done its work.
    void committed();

private:
    void makeLockFile();
    bool makeFolder(const std::string& path) const; // false: it was there
    void makeDurable(const std::string& folder) const;
    void remove() noexcept;

    const FileStore& store_;
    Stored kind_;
    std::string partPath_, lockPath_, finalPath_, finalFolder_, root_;
    UniqueFd lockFile_, writable_, readable_;
    ContentHash hash_{};
    std::int64_t size_ = 0;
    bool placed_ = false;
    bool removable_ = true;
};

} // namespace local
