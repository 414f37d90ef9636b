// Declarations of the part of UniformTypeIdentifiers that the adapter uses.
#pragma once

#import <Foundation/Foundation.h>

@interface UTType : NSObject {
@public
    NSString* name;
}
+ (instancetype)typeWithIdentifier:(NSString*)identifier;
- (NSString*)identifier;
- (BOOL)conformsToType:(UTType*)type;
@end

extern "C" {
extern UTType* const UTTypeMovie;
extern NSString* const NSURLContentTypeKey;
}

@interface NSURL (ContentType)
- (NSDictionary*)resourceValuesForKeys:(NSArray*)keys error:(NSError**)error;
@end
