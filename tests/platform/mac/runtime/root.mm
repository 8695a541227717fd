// The root class, and the classes that give literals and blocks their place. Compiled without
// automatic reference counting, which would have these methods call themselves.

#import <Foundation/Foundation.h>

#include <exception>

#include "tests/platform/mac/runtime/blocks.h"
#include "tests/platform/mac/runtime/classes.h"

extern "C" {
id standinAllocate(Class type);
id objc_retain(id object);
void objc_release(id object);
id objc_autorelease(id object);
}

namespace {

Class typeOf(id object) { return reinterpret_cast<objc_object*>(object)->isa; }

}  // namespace

@implementation NSObject
+ (instancetype)alloc {
  return standinAllocate(self);
}
+ (instancetype)new {
  return [[self alloc] init];
}
+ (Class)class {
  return self;
}
- (instancetype)init {
  return self;
}
- (void)dealloc {
}
- (instancetype)retain {
  return objc_retain(self);
}
- (oneway void)release {
  objc_release(self);
}
- (instancetype)autorelease {
  return objc_autorelease(self);
}
// Nothing here changes once it is made.
- (id)copy {
  return objc_retain(self);
}
- (instancetype)self {
  return self;
}
- (Class)class {
  return typeOf(self);
}
- (BOOL)isKindOfClass:(Class)aClass {
  return standin::isSubclass(typeOf(self), aClass) ? YES : NO;
}
- (BOOL)respondsToSelector:(SEL)aSelector {
  return standin::methodOf(typeOf(self), aSelector) != nullptr ? YES : NO;
}
@end

@interface StandinMallocBlock : NSObject
@end
@implementation StandinMallocBlock
@end
@interface StandinStackBlock : NSObject
@end
@implementation StandinStackBlock
@end
@interface StandinGlobalBlock : NSObject
@end
@implementation StandinGlobalBlock
@end

// Under the names by which the compiler's blocks find their classes.
__asm__(
    ".globl _NSConcreteMallocBlock\n.set _NSConcreteMallocBlock, OBJC_CLASS_$_StandinMallocBlock\n"
    ".globl _NSConcreteStackBlock\n.set _NSConcreteStackBlock, OBJC_CLASS_$_StandinStackBlock\n"
    ".globl _NSConcreteGlobalBlock\n.set _NSConcreteGlobalBlock, OBJC_CLASS_$_StandinGlobalBlock\n"
    ".globl standinMallocBlockClass\n"
    ".set standinMallocBlockClass, OBJC_CLASS_$_StandinMallocBlock\n"
    ".globl standinStackBlockClass\n"
    ".set standinStackBlockClass, OBJC_CLASS_$_StandinStackBlock\n"
    ".globl standinGlobalBlockClass\n"
    ".set standinGlobalBlockClass, OBJC_CLASS_$_StandinGlobalBlock\n");

extern "C" {

// As on a Mac, where "catch (...)" catches both kinds.
void objc_exception_throw(id object) {
  struct Thrown {
    explicit Thrown(id its) : object(objc_retain(its)) {}
    Thrown(const Thrown& other) : object(objc_retain(other.object)) {}
    Thrown& operator=(const Thrown&) = delete;
    ~Thrown() { objc_release(object); }
    id object;
  };
  throw Thrown(object);
}

}  // extern "C"
