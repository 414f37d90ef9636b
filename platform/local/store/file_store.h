// Where the bytes of assets lie. Originals and rendered edits go in once, durably, and never
// change. Their paths are made here; beside this room only maintenance spells them.
//
// A file on its way in stands in incoming/ under the name it will have, beside a lock file
// "<name>.importing" ("<name>.editing" for a rendered edit) that its importer holds locked (flock)
// from before the first byte until after the commit. A lock file that nobody holds belongs to an
// importer that died: what it left is swept when the catalogue does not name it.
#pragma once

#include "platform/local/store/content_hasher.h"
#include "platform/local/system/library_error.h"
#include "platform/local/system/unique_fd.h"
#include "platform/local/system/uuid.h"

#include <array>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace local {

// Whether the open file or folder still has a name.
bool isLinked(int file);

// What a stored file is: it decides the folder, "originals" or "renders".
enum class Stored { original, render };
std::string_view folderOf(Stored kind);
std::string_view lockFileEnding(Stored kind); // of the name of a lock file in incoming/

// Where a stored file lies, relative to the library: "<folder>/<first two characters>/<name>".
// Names come out of the catalogue, which may be damaged or somebody's trap: one that would lead
// anywhere else throws LibraryError.
std::string pathOf(Stored kind, std::string_view name);
// Whether pathOf takes the name.
bool isStorableName(std::string_view name);

// A file in "originals" and in "renders" that says: this is the store. Where it is missing another
// folder stands in the store's place, such as the empty one below a disk that is not mounted; what
// is not found there is not gone, and nothing may be put there.
inline constexpr std::string_view sentinelName = ".photos-kit";

inline constexpr std::string_view editFolderEnding = ".edit";
// Removes a folder in which an edit was rendered, by its path from the folder `parent`.
void removeEditFolder(int parent, const std::string& path);

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

    // Whether the folder of this kind holds its sentinel: without it a disk is not mounted there.
    bool isPresent(Stored kind) const;
    void requirePresent(Stored kind) const; // throws, with a sentence
    // Puts the sentinel there, durably, in a folder that is made where it is missing. Throws.
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

    // Makes the name of a shelf (the folder of a stored file) durable, once in this process:
    // whoever made it may have died before that. False, with errno, when it cannot.
    bool makeShelfDurable(Stored kind, const std::string& shelf) const;

    int folder() const { return folder_; }

private:
    int folder_;
    mutable std::mutex shelvesMutex_;
    mutable std::set<std::string> durableShelves_; // by their paths
    std::mutex derivativesMutex_;
    std::shared_ptr<const UniqueFd> derivatives_;
};

} // namespace local
