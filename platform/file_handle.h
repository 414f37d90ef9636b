// A file that is being written, chunk by chunk.
#pragma once

#include "platform/foundation.h"

#include <exception>
#include <span>

namespace platform {

// What writeData throws, and nothing else does. `reason` is a sentence for people.
struct NSException : std::exception {
    explicit NSException(std::optional<std::string> sentence) : reason(std::move(sentence)) {}
    const char* what() const noexcept override { return reason ? reason->c_str() : "NSException"; }

    std::optional<std::string> reason;
};

// An open file. Copies are the same open file; one thread at a time, but not always the same. It is
// closed by closeFile, at the latest when the last copy is gone.
struct NSFileHandle {
    std::shared_ptr<void> object;
};

// Opens a file that exists, at its start and as it is; nothing when that fails. Never waits: what
// is not a file of bytes is not opened.
std::optional<NSFileHandle> fileHandleForWritingAtPath(const std::string& path);

// Writes all the bytes behind those written before. Throws NSException when that fails (also after
// closeFile); some of the bytes may be written then, and the handle stays usable.
void writeData(const NSFileHandle& file, std::span<const std::uint8_t> data);

// Closing twice does no harm.
void closeFile(const NSFileHandle& file);

} // namespace platform
