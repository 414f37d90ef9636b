// Between the facade's values and the frameworks' objects. Objective-C++ with manual reference
// counting: an object that a value carries is counted by a shared_ptr, every other object is a
// temporary of the scope it was made in.
//
// The frameworks' classes bear the names of the facade's types; they are the ones written with ::.
#pragma once

#import <Photos/Photos.h>

#include <span>

#include "platform/asset_change_requests.h"
#include "platform/collection_change_requests.h"

#if __has_feature(objc_arc)
#error "written for manual reference counting: build without -fobjc-arc"
#endif

namespace platform {
// Takes over a reference that the caller owns.
inline std::shared_ptr<void> adopted(id object) {
    if (object == nil)
        return nullptr;
    return {static_cast<void*>(object), [](void* held) { [static_cast<id>(held) release]; }};
}

inline std::shared_ptr<void> retained(id object) {
    return adopted([object retain]);
}

// Which class stands behind which value.
::PHAsset* classBehind(const PHAsset&);
::PHAssetResource* classBehind(const PHAssetResource&);
::PHAssetCollection* classBehind(const PHAssetCollection&);
::PHCollectionList* classBehind(const PHCollectionList&);
::PHAssetChangeRequest* classBehind(const PHAssetChangeRequest&);
::PHAssetCreationRequest* classBehind(const PHAssetCreationRequest&);
::PHAssetCollectionChangeRequest* classBehind(const PHAssetCollectionChangeRequest&);
::PHCollectionListChangeRequest* classBehind(const PHCollectionListChangeRequest&);
::PHContentEditingInput* classBehind(const PHContentEditingInput&);
::PHContentEditingOutput* classBehind(const PHContentEditingOutput&);
template <class Record>
::PHFetchResult* classBehind(const PHFetchResult<Record>&);

// The object behind a value; nil when there is none. It lives as long as the value.
template <class Value>
auto native(const Value& value) {
    void* const object = const_cast<void*>(static_cast<const void*>(value.object.get()));
    return static_cast<decltype(classBehind(value))>(static_cast<id>(object));
}

inline ::PHCollection* native(const PHCollection& collection) {
    return std::visit([](const auto& either) -> ::PHCollection* { return native(either); },
                      collection);
}

// Nil for text that is not UTF-8, which the core never passes on.
inline NSString* native(const std::string& text) {
    return [[[NSString alloc] initWithBytes:text.data()
                                     length:text.size()
                                   encoding:NSUTF8StringEncoding] autorelease];
}

inline ::NSURL* native(const NSURL& url) {
    return [::NSURL fileURLWithPath:native(url.path)];
}

// The values' objects in their order.
template <class Value>
NSArray* native(const std::vector<Value>& values) {
    NSMutableArray* const array = [NSMutableArray arrayWithCapacity:values.size()];
    for (const Value& value : values) {
        if (const id object = native(value))
            [array addObject:object];
    }
    return array;
}

// Refers to the bytes and must not outlive them.
inline ::NSData* nativeView(std::span<const std::uint8_t> bytes) {
    return [::NSData dataWithBytesNoCopy:const_cast<std::uint8_t*>(bytes.data())
                                  length:bytes.size()
                            freeWhenDone:NO];
}

inline std::optional<std::string> textOf(NSString* text) {
    const char* const bytes = [text UTF8String];
    if (bytes == nullptr)
        return std::nullopt;
    return std::string(bytes, [text lengthOfBytesUsingEncoding:NSUTF8StringEncoding]);
}

inline std::span<const std::uint8_t> bytesOf(::NSData* data) {
    return {static_cast<const std::uint8_t*>([data bytes]), [data length]};
}

inline NSData copyOf(::NSData* data) {
    const auto bytes = bytesOf(data);
    return NSData(bytes.begin(), bytes.end());
}

inline std::optional<NSError> errorOf(::NSError* error) {
    if (error == nil)
        return std::nullopt;
    return NSError{textOf([error domain]).value_or(""), static_cast<long>([error code]),
                   textOf([error localizedDescription])};
}

inline std::optional<PHObjectPlaceholder> placeholderOf(::PHObjectPlaceholder* placeholder) {
    if (placeholder == nil)
        return std::nullopt;
    return PHObjectPlaceholder{textOf([placeholder localIdentifier])};
}

// Fetch results differ only in their records, which recordOf makes of the frameworks' objects.
#define DEFINE_FETCH_RESULT(Record)                                                                \
    template <>                                                                                    \
    std::size_t PHFetchResult<Record>::count() const {                                             \
        return [native(*this) count];                                                              \
    }                                                                                              \
    template <>                                                                                    \
    std::optional<Record> PHFetchResult<Record>::objectAtIndex(std::size_t index) const {          \
        ::Record* const found = [native(*this) objectAtIndex:index];                               \
        return found == nil ? std::nullopt : std::optional<Record>(recordOf(found));               \
    }

::PHFetchOptions* nativeOptions(const PHFetchOptions& options);
} // namespace platform
