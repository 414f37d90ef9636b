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

inline const UTType UTTypeMovie{"public.movie"};

// The content type of the file at the URL; nothing when it cannot be told.
std::optional<UTType> contentTypeOfFileAtURL(const NSURL& url);

// Whether the type is `other` or one of its kinds.
bool conformsToType(const UTType& type, const UTType& other);

} // namespace platform
