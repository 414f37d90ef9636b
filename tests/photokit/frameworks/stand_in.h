// What the stand-in's classes share.
#pragma once

#import <Photos/Photos.h>

#include "tests/photokit/script.h"

#include <string>

namespace standin {

inline NSString* text(const std::string& text) {
    return [[[NSString alloc] initWithBytes:text.data()
                                     length:text.size()
                                   encoding:NSUTF8StringEncoding] autorelease];
}

inline NSString* text(const std::optional<std::string>& optional) {
    return optional ? text(*optional) : nil;
}

inline std::string plain(NSString* text) {
    return text == nil ? "nil" : [text UTF8String];
}

inline std::string yesOrNo(BOOL value) {
    return value ? "YES" : "NO";
}

NSError* errorOf(const std::optional<Failure>& failure);

// The identifiers of the objects, with commas between them.
std::string identifiers(id<NSFastEnumeration> objects);

// What the options say, or "nil".
std::string described(PHFetchOptions* options);

// Objects that the caller owns.
PHAsset* newAsset(const Asset& asset);
PHCollection* newCollection(const Collection& collection);
PHObjectPlaceholder* newPlaceholder(NSString* identifier);

// A fetch result of the objects, which are released, as the options want them.
PHFetchResult* result(NSMutableArray* objects, PHFetchOptions* options);

// ---- Changes: only while a change block runs ----

// Notes the request and answers whether it comes at the right time; one that does not is noted as
// such.
bool noteRequest(const std::string& line);
void atCommit(std::function<void(Script&)> effect);
const Change& currentChange();
std::string newIdentifier(const std::string& suffix);

} // namespace standin

// Sets one of an object's values; nil leaves it out.
inline void setValue(StandInObject* object, NSString* key, id value) {
    if (value != nil)
        [object->values setObject:value forKey:key];
}
