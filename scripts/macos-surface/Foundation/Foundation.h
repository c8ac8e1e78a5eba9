// The Foundation classes and methods the Objective-C++ sources use, declared
// from Apple's Foundation reference. Only interfaces: enough for clang to
// check messages and their argument types.
#pragma once

#include <stddef.h>

typedef signed char BOOL;
#define YES ((BOOL)1)
#define NO ((BOOL)0)
typedef unsigned long NSUInteger;
typedef long NSInteger;
#define nil nullptr

__attribute__((objc_root_class))
@interface NSObject {
    Class isa;
}
+ (instancetype)alloc;
- (instancetype)init;
- (instancetype)retain;
- (void)release;
- (instancetype)autorelease;
@end

@interface NSString : NSObject
+ (instancetype)stringWithUTF8String:(const char*)nullTerminatedCString;
@property(readonly) const char* UTF8String;
@property(readonly) const char* fileSystemRepresentation;
@end

@interface NSArray<ObjectType> : NSObject
+ (instancetype)arrayWithObjects:(const ObjectType[])objects count:(NSUInteger)count;
@property(readonly) NSUInteger count;
@end

@interface NSURL : NSObject
+ (NSURL*)fileURLWithPath:(NSString*)path;
+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path
                                  isDirectory:(BOOL)isDir
                                relativeToURL:(NSURL*)baseURL;
@property(readonly) const char* fileSystemRepresentation;
@end

@interface NSFileManager : NSObject
@property(class, readonly) NSFileManager* defaultManager;
- (NSString*)stringWithFileSystemRepresentation:(const char*)str length:(NSUInteger)len;
@end
