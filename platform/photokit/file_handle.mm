#include "platform/file_handle.h"

#include "platform/photokit/objects.h"

namespace platform {
static ::NSFileHandle* nativeFile(const NSFileHandle& file) {
    return static_cast<::NSFileHandle*>(static_cast<id>(file.object.get()));
}

// The one place that catches what the frameworks raise. Nothing in here has a C++ destructor:
// not every Objective-C runtime runs it when it unwinds. Answers whether all was written.
static bool writeAll(::NSFileHandle* file, ::NSData* data, NSString** reason) {
    @try {
        [file writeData:data];
        return true;
    } @catch (::NSException* exception) {
        *reason = [[[exception reason] retain] autorelease];
    }
    return false;
}

std::optional<NSFileHandle> fileHandleForWritingAtPath(const std::string& path) {
    const auto object = retained([::NSFileHandle fileHandleForWritingAtPath:native(path)]);
    return object ? std::optional(NSFileHandle{object}) : std::nullopt;
}

void writeData(const NSFileHandle& file, std::span<const std::uint8_t> data) {
    NSString* reason = nil;
    if (!writeAll(nativeFile(file), nativeView(data), &reason))
        throw NSException(textOf(reason));
}

void closeFile(const NSFileHandle& file) {
    [nativeFile(file) closeFile];
}
} // namespace platform
