// The root of all classes, as far as the backend and the stand-in's frameworks use it.
#pragma once

#include <objc/objc.h>

#pragma clang assume_nonnull begin

@protocol NSObject
- (instancetype)self;
- (Class)class;
- (BOOL)isKindOfClass:(Class)aClass;
- (BOOL)respondsToSelector:(SEL)aSelector;
@end

@interface NSObject <NSObject> {
  Class isa;
}
+ (instancetype)alloc;
+ (instancetype)new;
+ (Class)class;
- (instancetype)init;
- (void)dealloc;
#if !__has_feature(objc_arc)
- (instancetype)retain;
- (oneway void)release;
- (instancetype)autorelease;
#endif
- (id)copy;
@end

#pragma clang assume_nonnull end
