// Declarations of the part of AppKit and CoreGraphics that the adapter uses.
#pragma once

#import <Foundation/Foundation.h>

typedef struct CGImage* CGImageRef;
typedef NS_ENUM(NSUInteger, NSBitmapImageFileType) { NSBitmapImageFileTypeJPEG = 3 };

extern "C" {
CGImageRef CGImageRetain(CGImageRef image);
void CGImageRelease(CGImageRef image);
extern NSString* const NSImageCompressionFactor;
}

@class NSGraphicsContext;

@interface NSImage : NSObject {
@public
    CGImageRef bitmap;
}
- (CGImageRef)CGImageForProposedRect:(NSRect*)rect
                             context:(NSGraphicsContext*)context
                               hints:(NSDictionary*)hints;
@end

@interface NSBitmapImageRep : NSObject {
@public
    CGImageRef bitmap;
}
- (instancetype)initWithCGImage:(CGImageRef)image;
- (NSData*)representationUsingType:(NSBitmapImageFileType)type properties:(NSDictionary*)properties;
@end
