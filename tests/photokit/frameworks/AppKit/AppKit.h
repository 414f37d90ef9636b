// Declarations of the part of AppKit and CoreGraphics that the adapter uses.
#pragma once

#import <Foundation/Foundation.h>

typedef struct CGImage* CGImageRef;
enum NSBitmapImageFileType : NSUInteger;

extern "C" {
CGImageRef CGImageRetain(CGImageRef image);
void CGImageRelease(CGImageRef image);
extern NSString* const NSImageCompressionFactor;
}

// Where the stand-in keeps what an object is about. The real frameworks have no such class.
@interface StandInObject : NSObject {
@public
    void* value;
}
@end

@class NSGraphicsContext;

@interface NSImage : StandInObject
- (CGImageRef)CGImageForProposedRect:(NSRect*)rect
                             context:(NSGraphicsContext*)context
                               hints:(NSDictionary*)hints;
@end

@interface NSBitmapImageRep : StandInObject
- (instancetype)initWithCGImage:(CGImageRef)image;
- (NSData*)representationUsingType:(NSBitmapImageFileType)type properties:(NSDictionary*)properties;
@end
