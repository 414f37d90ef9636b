// Content types, and the files that Foundation reads and writes: those of the script, while there
// is one. Foundation's own classes do it by these methods here.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
#import "tests/photokit/frameworks/stand_in.h"

#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

#include <unistd.h>

using namespace standin;

// A constant to others. Classes are loaded later than the constants of this file are made.
extern "C" UTType* g_movieType __asm__("UTTypeMovie");
UTType* g_movieType;
NSString* const NSURLContentTypeKey = @"NSURLContentTypeKey";

static backing::UTType typeBehind(UTType* type) {
    return type == UTTypeMovie ? backing::UTTypeMovie : backing::UTType{plain([type identifier])};
}

@implementation UTType
+ (void)load {
    g_movieType = [[self alloc] init];
}
+ (instancetype)typeWithIdentifier:(NSString*)identifier {
    UTType* const type = [[[self alloc] init] autorelease];
    type->name = [identifier copy];
    return type;
}
- (void)dealloc {
    [name release];
    [super dealloc];
}
- (NSString*)identifier {
    return name;
}
- (BOOL)conformsToType:(UTType*)type {
    return backing::conformsToType(typeBehind(self), typeBehind(type));
}
@end

@implementation NSURL (ContentType)
- (NSDictionary*)resourceValuesForKeys:(NSArray*)keys error:(NSError**)error {
    const auto type = backing::contentTypeOfFileAtURL(urlOf(self));
    if (!type || ![keys containsObject:NSURLContentTypeKey])
        return [NSDictionary dictionary];
    return [NSDictionary dictionaryWithObject:[UTType typeWithIdentifier:text(type->identifier)]
                                       forKey:NSURLContentTypeKey];
}
@end

// Hands the error on as Foundation does: only of what has failed.
static BOOL answer(bool done, const std::optional<backing::NSError>& failure, NSError** error) {
    if (!done && error != nullptr)
        *error = errorOf(failure);
    return done;
}

@implementation NSFileManager (Scripted)
- (BOOL)isReadableFileAtPath:(NSString*)path {
    if ([path rangeOfString:@"GNUstep"].length != 0) // Foundation's own
        return access([path UTF8String], R_OK) == 0;
    return backing::isReadableFileAtPath(plain(path));
}
- (BOOL)createDirectoryAtPath:(NSString*)path
    withIntermediateDirectories:(BOOL)intermediate
                     attributes:(NSDictionary*)attributes
                          error:(NSError**)error {
    return intermediate && backing::createDirectoryAtPath(plain(path));
}
- (BOOL)createFileAtPath:(NSString*)path
                contents:(NSData*)contents
              attributes:(NSDictionary*)attributes {
    return backing::createFileAtPath(plain(path));
}
- (BOOL)removeItemAtPath:(NSString*)path error:(NSError**)error {
    return backing::removeItemAtPath(plain(path));
}
- (BOOL)removeItemAtURL:(NSURL*)url error:(NSError**)error {
    return backing::removeItemAtURL(urlOf(url));
}
- (BOOL)copyItemAtURL:(NSURL*)source toURL:(NSURL*)destination error:(NSError**)error {
    std::optional<backing::NSError> failure;
    const bool done = backing::copyItemAtURL(urlOf(source), urlOf(destination), failure);
    return answer(done, failure, error);
}
@end

@implementation NSData (Scripted)
+ (instancetype)dataWithContentsOfFile:(NSString*)path {
    const auto bytes = backing::dataWithContentsOfFile(plain(path));
    return bytes ? [self dataWithBytes:bytes->data() length:bytes->size()] : nil;
}
- (BOOL)writeToURL:(NSURL*)url options:(NSUInteger)options error:(NSError**)error {
    std::optional<backing::NSError> failure;
    const bool done = backing::writeToURL(bytesOf(self), urlOf(url), options, failure);
    return answer(done, failure, error);
}
@end

// Has no reason of its own where none is given.
@interface ScriptedException : NSException
@end

@implementation ScriptedException
- (NSString*)reason {
    return [[self userInfo] objectForKey:@"reason"];
}
@end

@interface ScriptedFile : StandInObject
- (void)writeData:(NSData*)data;
- (void)closeFile;
@end

// Whether it was written; in a function without C++ destructors, which not every runtime runs when
// it unwinds, for the one that raises.
static bool writeAll(ScriptedFile* file, NSData* data, NSString** reason) {
    std::optional<std::string> sentence;
    const bool done = tryToWrite(behind<backing::NSFileHandle>(file), bytesOf(data), sentence);
    *reason = text(sentence);
    return done;
}

@implementation ScriptedFile
- (void)writeData:(NSData*)data {
    NSString* reason = nil;
    if (!writeAll(self, data, &reason))[[ScriptedException
        exceptionWithName:NSFileHandleOperationException
                   reason:nil
                 userInfo:[NSDictionary dictionaryWithObjectsAndKeys:reason, @"reason", nil]] raise]
        ;
}
- (void)closeFile {
    backing::closeFile(behind<backing::NSFileHandle>(self));
}
@end

@implementation NSFileHandle (Scripted)
+ (instancetype)fileHandleForWritingAtPath:(NSString*)path {
    return objectOf([ScriptedFile class], backing::fileHandleForWritingAtPath(plain(path)));
}
@end
