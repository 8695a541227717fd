// The declarations of Foundation that the macOS backend uses, for compiling it on other systems.
//
// As in CoreFoundation.h. Everything is there since macOS 10.12 or longer.
//
// "(bindings)" marks what was read in published bindings of the same framework for iOS instead, and
// is to be seen on a Mac.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>
#include <objc/NSObject.h>
#include <objc/objc.h>
#include <os/availability.h>

#pragma clang assume_nonnull begin

typedef double NSTimeInterval;

// What "for ... in" over a collection calls.
typedef struct {
  unsigned long state;
  id __unsafe_unretained _Nullable* _Nullable itemsPtr;
  unsigned long* _Nullable mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)length;
@end

// What a collection copies its keys by; the literals of dictionaries ask for it.
@protocol NSCopying
@end

typedef enum NSComparisonResult : NSInteger {
  NSOrderedAscending = -1,
  NSOrderedSame = 0,
  NSOrderedDescending = 1,
} NSComparisonResult;

@interface NSString : NSObject <NSCopying>
- (NSComparisonResult)localizedCaseInsensitiveCompare:(NSString*)string;
@property(readonly, copy) NSString* lowercaseString;  ///< (bindings)
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
@property(nullable, nonatomic, readonly) ObjectType firstObject;  ///< (bindings)
/// What "@[...]" calls (bindings).
+ (instancetype)arrayWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                           count:(NSUInteger)count;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject
/// What "@{...}" calls (bindings).
+ (instancetype)dictionaryWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                              forKeys:(const KeyType<NSCopying> _Nonnull[_Nullable])keys
                                count:(NSUInteger)count;
@end

@interface NSError : NSObject
@property(readonly, copy) NSString* localizedDescription;  ///< (bindings)
@end

@interface NSURL : NSObject
+ (NSURL*)fileURLWithPath:(NSString*)path;
@property(nullable, readonly, copy) NSString* path;
@end

@interface NSThread : NSObject
/// Bytes, a multiple of 16 KB; before `start` only. 512 KB otherwise.
@property NSUInteger stackSize;
- (instancetype)initWithBlock:(void (^)(void))block API_AVAILABLE(macos(10.12));
- (void)start;
@end

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;  ///< (bindings)
/// By its documented name alone: macOS only. To be seen on a Mac.
@property(readonly, copy) NSURL* homeDirectoryForCurrentUser API_AVAILABLE(macos(10.12));
/// (bindings)
- (nullable NSArray<NSString*>*)contentsOfDirectoryAtPath:(NSString*)path
                                                    error:(NSError* _Nullable* _Nullable)error;
- (NSString*)displayNameAtPath:(NSString*)path;
@end

@interface NSBundle : NSObject
- (nullable instancetype)initWithPath:(NSString*)path;
@property(nullable, readonly, copy) NSString* bundleIdentifier;
- (nullable id)objectForInfoDictionaryKey:(NSString*)key;
@end

#ifdef __cplusplus
extern "C" {
#endif
/// The user's own, with a trailing slash.
NSString* NSTemporaryDirectory(void);
#ifdef __cplusplus
}
#endif

#pragma clang assume_nonnull end
