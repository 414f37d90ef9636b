// Declarations of the part of Foundation that the adapter uses, written from its documented
// interface: for type checks and cross builds without a Mac.
#pragma once

#include <stddef.h>
#include <stdint.h>

#if defined(__arm64__)
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr

typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double NSTimeInterval;
typedef NSUInteger NSDataWritingOptions;
typedef struct CGSize {
    double width, height;
} CGSize;
typedef CGSize NSSize;
typedef struct CGRect {
    double x, y, width, height;
} NSRect;

static inline NSSize NSMakeSize(double width, double height) {
    return NSSize{width, height};
}

@class NSDate, NSDictionary, NSString;

@protocol NSObject
- (instancetype)retain;
- (oneway void)release;
- (instancetype)autorelease;
- (BOOL)isKindOfClass:(Class)kind;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
    Class isa;
}
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init;
@end

typedef struct {
    unsigned long state;
    id* itemsPtr;
    unsigned long* mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id*)buffer
                                    count:(NSUInteger)count;
@end

typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@interface NSString : NSObject
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSStringEncoding)encoding;
- (NSUInteger)lengthOfBytesUsingEncoding:(NSStringEncoding)encoding;
- (const char*)UTF8String;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)arrayWithObject:(ObjectType)object;
- (NSUInteger)count;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
+ (instancetype)array;
+ (instancetype)arrayWithCapacity:(NSUInteger)count;
- (void)addObject:(ObjectType)object;
@end

@interface NSDictionary : NSObject
+ (instancetype)dictionaryWithObject:(id)object forKey:(id)key;
- (id)objectForKey:(id)key;
@end

@interface NSNumber : NSObject
+ (NSNumber*)numberWithDouble:(double)number;
@end

@interface NSDate : NSObject
- (NSTimeInterval)timeIntervalSince1970;
@end

@interface NSError : NSObject
- (NSString*)domain;
- (NSInteger)code;
- (NSString*)localizedDescription;
@end

@interface NSException : NSObject
- (NSString*)reason;
@end

@interface NSURL : NSObject
+ (NSURL*)fileURLWithPath:(NSString*)path;
- (NSString*)path;
@end

@interface NSData : NSObject
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length;
+ (instancetype)dataWithBytesNoCopy:(void*)bytes
                             length:(NSUInteger)length
                       freeWhenDone:(BOOL)freeWhenDone;
+ (instancetype)dataWithContentsOfFile:(NSString*)path;
- (BOOL)writeToURL:(NSURL*)url options:(NSDataWritingOptions)options error:(NSError**)error;
- (const void*)bytes;
- (NSUInteger)length;
@end

@interface NSPredicate : NSObject
+ (NSPredicate*)predicateWithFormat:(NSString*)format, ...;
@end

@interface NSSortDescriptor : NSObject
+ (instancetype)sortDescriptorWithKey:(NSString*)key ascending:(BOOL)ascending;
@end

@interface NSFileManager : NSObject
+ (NSFileManager*)defaultManager;
- (BOOL)isReadableFileAtPath:(NSString*)path;
- (BOOL)createDirectoryAtPath:(NSString*)path
    withIntermediateDirectories:(BOOL)intermediate
                     attributes:(NSDictionary*)attributes
                          error:(NSError**)error;
- (BOOL)createFileAtPath:(NSString*)path
                contents:(NSData*)contents
              attributes:(NSDictionary*)attributes;
- (BOOL)removeItemAtPath:(NSString*)path error:(NSError**)error;
- (BOOL)removeItemAtURL:(NSURL*)url error:(NSError**)error;
- (BOOL)copyItemAtURL:(NSURL*)source toURL:(NSURL*)destination error:(NSError**)error;
@end

@interface NSFileHandle : NSObject
+ (instancetype)fileHandleForWritingAtPath:(NSString*)path;
- (void)writeData:(NSData*)data;
- (void)closeFile;
@end
