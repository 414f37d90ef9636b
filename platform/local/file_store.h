// Where the bytes of assets lie. Originals go in once, durably, and never change; nothing above
// this file knows their paths.
//
// A file on its way in stands in incoming/ under the name it will have, beside a marker
// "<name>.importing" that its importer holds locked (flock) from before the first byte until
// after the commit. A marker that nobody holds belongs to an importer that died: what it left is
// swept when its asset is not in the catalogue.
#pragma once

#include "platform/local/library_error.h"
#include "platform/local/unique_fd.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace local {

using Uuid = std::array<std::uint8_t, 16>;
using ContentHash = std::array<std::uint8_t, 16>; // XXH3 128, big endian (its canonical form)

std::string uppercaseText(const Uuid& uuid); // 8-4-4-4-12
// Reads what uppercaseText writes; nothing for any other text.
std::optional<Uuid> uuidFromText(std::string_view text);
Uuid randomUuid();
std::string hexadecimal(const ContentHash& hash); // 32 lower-case digits

// Whether the open file still has a name.
bool isLinked(int file);

class FileStore {
public:
    // `folder` is the library's folder; borrowed.
    explicit FileStore(int folder) : folder_(folder) {}

    // Makes the store's folders in a new library.
    void create() const;

    // Opens the original `name` for reading; throws when it cannot.
    UniqueFd openOriginal(const std::string& name) const;

    // The folder of scaled pictures, or an empty descriptor when there is none and none can be
    // made. A cache: whoever uses it does without when it fails.
    UniqueFd openDerivatives() const;

    bool holdsOriginals() const;

    // Removes what importers left that died: `isCatalogued` tells whether an asset with this
    // uuid exists, and is asked only about files that nobody holds. `beforeRemoval` runs once
    // before anything is removed, and may throw to prevent it.
    void sweep(const std::function<bool(const Uuid&)>& isCatalogued,
               const std::function<void()>& beforeRemoval) const;

    int folder() const { return folder_; }

private:
    int folder_;
};

// One original on its way into the store: copied, placed, and kept once its asset is committed.
// Leaves no trace when destroyed before commitBegins().
class IncomingOriginal {
public:
    // Copies all of `source` (a regular file, read from its start), hashing on the way.
    IncomingOriginal(const FileStore& store, const Uuid& uuid, const std::string& name, int source);
    ~IncomingOriginal();
    IncomingOriginal(const IncomingOriginal&) = delete;
    IncomingOriginal& operator=(const IncomingOriginal&) = delete;

    // The copy, opened for reading only.
    int readable() const { return readable_.get(); }
    const ContentHash& hash() const { return hash_; }
    std::int64_t size() const { return size_; }

    // Moves the copy to its final place and makes both durable.
    void place();

    // From here on the file stays: whether the commit took effect is for the catalogue to say,
    // and if it did not, a sweep removes the file.
    void commitBegins() { removable_ = false; }
    // The asset is committed: the marker has done its work.
    void committed();

private:
    void makeMarker();
    void syncFolder(const std::string& path) const;
    void remove() noexcept;

    const FileStore& store_;
    std::string partPath_, markerPath_, finalPath_, finalFolder_;
    UniqueFd marker_, writable_, readable_;
    ContentHash hash_{};
    std::int64_t size_ = 0;
    bool placed_ = false;
    bool removable_ = true;
};

} // namespace local
