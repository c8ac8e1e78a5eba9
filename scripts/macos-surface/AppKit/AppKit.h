// The AppKit classes and methods the Objective-C++ sources use, declared from
// Apple's AppKit reference (NSSound, NSWorkspace).
#pragma once

#import <Foundation/Foundation.h>

@interface NSSound : NSObject
+ (NSSound*)soundNamed:(NSString*)name;
- (BOOL)play;
@end

@interface NSWorkspace : NSObject
@property(class, readonly) NSWorkspace* sharedWorkspace;
- (void)activateFileViewerSelectingURLs:(NSArray<NSURL*>*)fileURLs;
@end
