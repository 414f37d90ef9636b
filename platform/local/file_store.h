// Where the bytes of assets lie. Originals and rendered edits go in once, durably, and never
// change; nothing above this file knows their paths.
//
// A file on its way in stands in incoming/ under the name it will have, beside a marker
// "<name>.importing" ("<name>.editing" for a rendered edit) that its importer holds locked (flock)
// from before the first byte until after the commit. A marker that nobody holds belongs to an
// importer that died: what it left is swept when the catalogue does not name it.
#pragma once

#include "platform/local/content_hasher.h"
#include "platform/local/library_error.h"
#include "platform/local/unique_fd.h"

#include <array>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace local {

using Uuid = std::array<std::uint8_t, 16>;

std::string uppercaseText(const Uuid& uuid); // 8-4-4-4-12
// Reads what uppercaseText writes; nothing for any other text.
std::optional<Uuid> uuidFromText(std::string_view text);
Uuid randomUuid();
std::string hexadecimal(const ContentHash& hash); // 32 lower-case digits

// Whether the open file or folder still has a name.
bool isLinked(int file);

// What a stored file is: it decides the folder, "originals" or "renders".
enum class Stored { original, render };
std::string_view folderOf(Stored kind);
std::string_view markerEnding(Stored kind); // of the name of a marker in incoming/

// Where a stored file lies, relative to the library: "<folder>/<first two characters>/<name>".
// Names come out of the catalogue, which may be damaged or somebody's trap: one that would lead
// anywhere else throws LibraryError.
std::string pathOf(Stored kind, std::string_view name);
// Whether pathOf takes the name.
bool isStorableName(std::string_view name);

// A file in "originals" and in "renders" that says: this is the store. Where it is missing another
// folder stands in the store's place, such as the empty one below a disk that is not mounted; what
// is not found there is not gone, and nothing may be put there.
inline constexpr std::string_view storeMarkerName = ".photos-kit";

class FileStore {
public:
    // `folder` is the library's folder; borrowed.
    explicit FileStore(int folder) : folder_(folder) {}

    // Makes the store's folders in a new library.
    void create() const;

    // Opens the file `name` for reading; throws when it cannot.
    UniqueFd open(Stored kind, const std::string& name) const;

    // The folder of scaled pictures, or an empty descriptor when there is none and none can be
    // made. A cache: whoever uses it does without when it fails. One descriptor serves all.
    std::shared_ptr<const UniqueFd> derivatives();

    bool holdsOriginals() const;

    // Whether there is a file of this name.
    bool holds(Stored kind, const std::string& name) const;

    // Whether the folder of this kind holds its store marker.
    bool isPresent(Stored kind) const;
    void requirePresent(Stored kind) const; // throws, with a sentence
    // Puts the marker there, durably, in a folder that is made where it is missing. Throws.
    void mark(Stored kind) const;

    // Removes what importers and editors left that died: `isCatalogued` tells whether the
    // catalogue names the file, and is asked only about files that nobody holds. `beforeRemoval`
    // runs once before anything is removed, and may throw to prevent it.
    void sweep(const std::function<bool(Stored, const std::string& name)>& isCatalogued,
               const std::function<void()>& beforeRemoval) const;

    // Removes files that no row names any longer, by their paths relative to the library: stored
    // files and derivatives, nothing else. Answers those that are gone durably.
    std::vector<std::string> removeDiscarded(const std::vector<std::string>& paths) const;

    // Makes durable what was made or removed in a folder, by its path relative to the library.
    // False, with errno, when it cannot; a folder that is not there has nothing to lose.
    bool syncFolder(const std::string& path) const;

    int folder() const { return folder_; }

private:
    int folder_;
    std::mutex derivativesMutex_;
    std::shared_ptr<const UniqueFd> derivatives_;
};

// A folder for one edit's rendered picture, "incoming/<uuid>.edit", until the edit is over. Held
// locked (flock), so that a sweep can tell it from a dead one's.
class EditFolder {
public:
    explicit EditFolder(const FileStore& store); // throws when it cannot be made
    ~EditFolder();                               // with all that is in it
    EditFolder(const EditFolder&) = delete;
    EditFolder& operator=(const EditFolder&) = delete;

    int descriptor() const { return opened_.get(); }

private:
    const FileStore& store_;
    std::string path_;
    UniqueFd opened_;
};

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
    // The row is committed: the marker has done its work.
    void committed();

private:
    void makeMarker();
    bool makeFolder(const std::string& path) const; // false: it was there
    void makeDurable(const std::string& folder) const;
    void remove() noexcept;

    const FileStore& store_;
    std::string partPath_, markerPath_, finalPath_, finalFolder_, root_;
    UniqueFd marker_, writable_, readable_;
    ContentHash hash_{};
    std::int64_t size_ = 0;
    bool placed_ = false;
    bool removable_ = true;
};

} // namespace local
