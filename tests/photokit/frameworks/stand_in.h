// What the stand-in's classes share. Each is a thin shell: what it stands for, and what happens
// when it is sent something, is the scripted library's, which implements the facade in a namespace
// of its own here. So the core's tests, their script and their expectations hold for the adapter as
// well.
#pragma once

#import <Photos/Photos.h>

#include "tests/double/scripted_library.h"

#import <objc/blocks_runtime.h>

#include <any>

namespace backing = platform; // which the build calls something else: see the list of its sources

namespace standin {

// Objects of the stand-in's classes that nobody has let go of yet.
long livingObjects();
void countObject(int change);

// What an object is about; made when it is first asked for.
template <class Value>
Value& behind(StandInObject* object) {
    if (object->value == nullptr)
        object->value = new std::any(Value());
    return std::any_cast<Value&>(*static_cast<std::any*>(object->value));
}

template <class Value>
id objectOf(Class kind, Value value) {
    StandInObject* const object = [[[kind alloc] init] autorelease];
    object->value = new std::any(std::move(value));
    return object;
}

template <class Value>
id objectOf(Class kind, const std::optional<Value>& value) {
    return value ? objectOf(kind, *value) : nil;
}

// Methods that hand out or take in one of an object's values.
#define READS(Type, name, Record)                                                                  \
    -(Type)name {                                                                                  \
        return static_cast<Type>(behind<backing::Record>(self).name);                              \
    }
#define READS_TEXT(name, Record)                                                                   \
    -(NSString*)name {                                                                             \
        return text(behind<backing::Record>(self).name);                                           \
    }
#define TAKES(Name, Type, Record, name)                                                            \
    -(void)set##Name : (Type)given {                                                               \
        behind<backing::Record>(self).name = given;                                                \
    }

// What a fetch found, whatever its type.
struct Fetched {
    std::any result;
    std::function<std::size_t()> count;
    std::function<id(std::size_t)> at;
};
template <class Record>
const backing::PHFetchResult<Record>& fetchBehind(id object) {
    return std::any_cast<const backing::PHFetchResult<Record>&>(behind<Fetched>(object).result);
}

inline backing::PHCollection collectionBehind(PHCollection* collection) {
    if ([collection isKindOfClass:[PHAssetCollection class]])
        return behind<backing::PHAssetCollection>(collection);
    return behind<backing::PHCollectionList>(collection);
}

// Makes an object and hands it over on a thread that may have no pool, as the frameworks do; what
// the receiver leaves to a pool there is reported as leaked.
template <class Make, class Receive>
void handOver(Make make, Receive receive) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    const id object = [make() retain];
    [pool drain];
    receive(object);
    [object release];
}

// A block that outlives the call it was given to.
template <class Block>
class Kept {
public:
    explicit Kept(Block block)
        : block_(reinterpret_cast<void*>(Block_copy(block)), [](void* it) { Block_release(it); }) {}
    Block get() const { return reinterpret_cast<Block>(block_.get()); }

private:
    std::shared_ptr<void> block_;
};

inline NSString* text(const std::string& text) {
    return [[[NSString alloc] initWithBytes:text.data()
                                     length:text.size()
                                   encoding:NSUTF8StringEncoding] autorelease];
}
inline NSString* text(const std::optional<std::string>& optional) {
    return optional ? text(*optional) : nil;
}
inline std::string plain(NSString* text) {
    return text == nil ? "(nil)" : [text UTF8String];
}
inline std::optional<std::string> optional(NSString* text) {
    return text == nil ? std::nullopt : std::optional(plain(text));
}
inline backing::NSURL urlOf(NSURL* url) {
    return backing::fileURLWithPath(plain([url path]));
}
inline backing::NSData bytesOf(NSData* data) {
    const auto* const bytes = static_cast<const std::uint8_t*>([data bytes]);
    return {bytes, bytes + [data length]};
}
inline NSData* dataOf(std::span<const std::uint8_t> bytes) {
    return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}
// Writes in plain C++, which alone catches what the scripted file throws.
bool tryToWrite(const backing::NSFileHandle& file, const backing::NSData& bytes,
                std::optional<std::string>& reason);
NSError* errorOf(const std::optional<backing::NSError>& error);

} // namespace standin
