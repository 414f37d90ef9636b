// Files of the operating system, and what type of content a file's name promises.
#pragma once

#include "platform/foundation.h"

namespace platform {

// Whether a file that this process may read stands at the path. Never waits on what is there.
bool isReadableFileAtPath(const std::string& path);

// A uniform type, by its identifier ("public.jpeg").
struct UTType {
    std::string identifier;
};

// Never destroyed: threads of the host may ask until the process ends.
inline const UTType& UTTypeMovie = *new UTType{"public.movie"};

// The content type of the file at the URL; nothing when it cannot be told.
std::optional<UTType> contentTypeOfFileAtURL(const NSURL& url);

// Whether the type is `other` or one of its kinds.
bool conformsToType(const UTType& type, const UTType& other);

// The rest changes or reads single files. On Linux the photo library guards its own folder: an
// operation whose destination is that folder, lies inside it or holds it fails and touches nothing;
// the renderedContentURL of an edit is the one place in there that may be written. (A Mac guards
// its library by other means.) An empty path is no place: everything fails there.

// Makes the directory and those above it that are missing. Answers whether it stands there now;
// directories that were made before a failure stay.
bool createDirectoryAtPath(const std::string& path);

// Removes what stands at the path: a file, a directory with all that is in it, or a link itself,
// never its target. Answers whether it did; nothing at the path counts as a failure. A directory
// may lose a part of its contents before a failure.
bool removeItemAtPath(const std::string& path);

bool removeItemAtURL(const NSURL& url);

// Makes an empty file, or empties the file that stands there. Answers whether it did; a failure
// leaves what stood there.
[[nodiscard]] bool createFileAtPath(const std::string& path);

// Copies a file to a path where nothing stands, in a directory that exists. Answers whether the
// copy is there and whole; a failure leaves no part of it and `error` tells why if the system says
// so.
[[nodiscard]] bool copyItemAtURL(const NSURL& source, const NSURL& destination,
                                 std::optional<NSError>& error);

// All bytes of the file; nothing when it cannot be read. On Linux never waits on what is not a file
// of bytes: that cannot be read.
std::optional<NSData> dataWithContentsOfFile(const std::string& path);

enum NSDataWritingOptions : unsigned long {
    NSDataWritingAtomic = 1,
};

// Writes a file of these bytes, in a directory that exists. Answers whether it did; `error` tells
// why not if the system says so. With NSDataWritingAtomic the bytes are there as a whole or what
// stood there before is untouched.
[[nodiscard]] bool writeToURL(const NSData& data, const NSURL& url, unsigned long options,
                              std::optional<NSError>& error);

} // namespace platform
