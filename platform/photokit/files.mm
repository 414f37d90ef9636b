#include "platform/files.h"

#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

#include "platform/photokit/objects.h"

namespace platform {
static ::UTType* nativeType(const UTType& type) {
    if (type.identifier == UTTypeMovie.identifier)
        return ::UTTypeMovie;
    return [::UTType typeWithIdentifier:native(type.identifier)];
}

bool isReadableFileAtPath(const std::string& path) {
    return [[NSFileManager defaultManager] isReadableFileAtPath:native(path)];
}

std::optional<UTType> contentTypeOfFileAtURL(const NSURL& url) {
    NSArray* const keys = [NSArray arrayWithObject:NSURLContentTypeKey];
    NSDictionary* const values = [native(url) resourceValuesForKeys:keys error:nullptr];
    ::UTType* const type = [values objectForKey:NSURLContentTypeKey];
    const auto identifier = textOf([type identifier]);
    return identifier ? std::optional(UTType{*identifier}) : std::nullopt;
}

bool conformsToType(const UTType& type, const UTType& other) {
    return [nativeType(type) conformsToType:nativeType(other)];
}

bool createDirectoryAtPath(const std::string& path) {
    return [[NSFileManager defaultManager] createDirectoryAtPath:native(path)
                                     withIntermediateDirectories:YES
                                                      attributes:nil
                                                           error:nullptr];
}

bool removeItemAtPath(const std::string& path) {
    return [[NSFileManager defaultManager] removeItemAtPath:native(path) error:nullptr];
}

bool removeItemAtURL(const NSURL& url) {
    return [[NSFileManager defaultManager] removeItemAtURL:native(url) error:nullptr];
}

bool createFileAtPath(const std::string& path) {
    NSFileManager* const manager = [NSFileManager defaultManager];
    return [manager createFileAtPath:native(path) contents:nil attributes:nil];
}

bool copyItemAtURL(const NSURL& source, const NSURL& destination, std::optional<NSError>& error) {
    ::NSError* nativeError = nil;
    const BOOL done = [[NSFileManager defaultManager] copyItemAtURL:native(source)
                                                              toURL:native(destination)
                                                              error:&nativeError];
    error = done ? std::nullopt : errorOf(nativeError);
    return done;
}

// The scope gives the framework's copy of the bytes back at once: one picture can be large.
std::optional<NSData> dataWithContentsOfFile(const std::string& path) {
    @autoreleasepool {
        ::NSData* const data = [::NSData dataWithContentsOfFile:native(path)];
        return data == nil ? std::nullopt : std::optional(copyOf(data));
    }
}

bool writeToURL(const NSData& data, const NSURL& url, unsigned long options,
                std::optional<NSError>& error) {
    ::NSError* nativeError = nil;
    const BOOL done = [nativeView(data) writeToURL:native(url) options:options error:&nativeError];
    error = done ? std::nullopt : errorOf(nativeError);
    return done;
}
} // namespace platform
