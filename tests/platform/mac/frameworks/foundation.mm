// Foundation and the main queue, as far as the backend uses them.

#include "tests/platform/mac/frameworks/objects.h"

#include <cstdlib>
#include <thread>

#include "tests/platform/mac/standin/faults.h"
#include "tests/platform/mac/standin/language.h"

namespace {

const standin::String& stringOf(NSString* text) {
  return standin::as<standin::String>((CFTypeRef)text, "a message to NSString");
}

}  // namespace

namespace standin {

NSString* given(const std::optional<std::string>& its) {
  if (!its) {
    return nil;
  }
  const auto made = tarqo::mac::makeString(*its);
  return [[(NSString*)made.get() retain] autorelease];
}

NSArray* given(const std::vector<id>& objects) {
  std::vector<Owned> items;
  for (id object : objects) {
    items.push_back(Owned::retain((CFTypeRef)object));
  }
  const Owned made = array(items);
  return [[(NSArray*)made.get() retain] autorelease];
}

std::string utf8Of(NSString* its) { return tarqo::mac::textOf((CFStringRef)its); }

void answer(std::function<void()> deed) {
  onSystemThread([deed = std::move(deed)] {
    @autoreleasepool {
      try {
        deed();
      } catch (...) {  // One that a switch had a call of the framework's own throw.
      }
    }
  });
}

}  // namespace standin

@implementation NSString
- (NSString*)lowercaseString {
  const standin::Owned text = standin::text16(standin::lowered(stringOf(self).units()));
  return [[(NSString*)text.get() retain] autorelease];
}
- (NSComparisonResult)localizedCaseInsensitiveCompare:(NSString*)string {
  const int order = standin::compare(stringOf(self).units(), stringOf(string).units());
  return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
}
@end

/// What a literal belongs to: static data, which nobody counts.
@interface StandinConstantString : NSString
@end
@implementation StandinConstantString
@end
__asm__(".globl __CFConstantStringClassReference\n"
        ".set __CFConstantStringClassReference, OBJC_CLASS_$_StandinConstantString\n");

/// What an object of Core Foundation belongs to that has no class of its own.
@interface StandinObject : NSObject
@end
@implementation StandinObject
@end

@implementation NSArray
+ (instancetype)arrayWithObjects:(const id _Nonnull[])objects count:(NSUInteger)count {
  return (id)standin::given(std::vector<id>(objects, objects + count));
}
- (id)firstObject {
  const CFArrayRef its = (CFArrayRef)self;
  return CFArrayGetCount(its) > 0 ? (id)CFArrayGetValueAtIndex(its, 0) : nil;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id[])buffer
                                    count:(NSUInteger)length {
  const CFArrayRef its = (CFArrayRef)self;
  const auto all = static_cast<NSUInteger>(CFArrayGetCount(its));
  NSUInteger count = 0;
  for (; count < length && state->state < all; ++count, ++state->state) {
    buffer[count] = (id)CFArrayGetValueAtIndex(its, static_cast<CFIndex>(state->state));
  }
  state->itemsPtr = buffer;
  state->mutationsPtr = &state->extra[0];  // Never changes.
  return count;
}
@end

@implementation NSDictionary
+ (instancetype)dictionaryWithObjects:(const id _Nonnull[])objects
                              forKeys:(const id<NSCopying> _Nonnull[])keys
                                count:(NSUInteger)count {
  const void* entryKeys[16];
  const void* entryValues[16];
  for (NSUInteger i = 0; i < count && i < 16; ++i) {
    entryKeys[i] = (const void*)keys[i];
    entryValues[i] = (const void*)objects[i];
  }
  id made =
      (id)CFDictionaryCreate(nullptr, entryKeys, entryValues, static_cast<CFIndex>(count),
                             &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
  return [made autorelease];
}
@end

// The empty literals, which the compiler takes from Core Foundation.
extern "C" {
id __NSArray0__;
id __NSDictionary0__;
}
namespace {
__attribute__((constructor(103))) void makeEmptyLiterals() {
  __NSArray0__ = (id)standin::emptyArray();
  __NSDictionary0__ = (id)standin::emptyDictionary();
}
}  // namespace

@interface NSError () {
  NSString* text_;
}
- (instancetype)initWithText:(NSString*)text;
@end
@implementation NSError
- (instancetype)initWithText:(NSString*)text {
  text_ = [text retain];
  return self;
}
- (void)dealloc {
  [text_ release];
  [super dealloc];
}
- (NSString*)localizedDescription {
  return [[text_ retain] autorelease];
}
@end

NSError* standin::makeError(const std::string& its) {
  return [[[NSError alloc] initWithText:given(its)] autorelease];
}

@interface NSURL () {
  NSString* path_;
}
@end
@implementation NSURL
+ (NSURL*)fileURLWithPath:(NSString*)path {
  NSURL* made = [[NSURL alloc] init];
  made->path_ = [path retain];
  return [made autorelease];
}
- (void)dealloc {
  [path_ release];
  [super dealloc];
}
- (NSString*)path {
  return [[path_ retain] autorelease];
}
@end

@interface NSThread () {
  void* block_;
  NSUInteger stackSize_;
}
@end
@implementation NSThread
- (instancetype)initWithBlock:(void (^)(void))block {
  block_ = _Block_copy((const void*)block);
  return self;
}
- (void)dealloc {
  _Block_release(block_);
  [super dealloc];
}
- (void)setStackSize:(NSUInteger)bytes {
  stackSize_ = bytes;
}
- (NSUInteger)stackSize {
  return stackSize_;
}
- (void)start {
  NSThread* its = [self retain];
  std::thread([its] {
    @autoreleasepool {
      ((void (^)(void))its->block_)();
    }
    [its release];
  }).detach();
}
@end

@implementation NSFileManager
+ (NSFileManager*)defaultManager {
  static NSFileManager* const manager = [[NSFileManager alloc] init];
  return manager;
}
- (NSURL*)homeDirectoryForCurrentUser {
  const char* home = std::getenv("HOME");
  return [NSURL fileURLWithPath:standin::given(std::string(home == nullptr ? "/" : home))];
}
- (NSArray<NSString*>*)contentsOfDirectoryAtPath:(NSString*)path error:(NSError**)error {
  const auto names = standin::onDesktop([&](const tarqo::Platform& platform) {
    return platform.bundles.bundlesIn(standin::utf8Of(path));
  });
  if (names.empty()) {
    if (error != nullptr) {
      *error = standin::makeError("The folder doesn't exist.");
    }
    return nil;
  }
  std::vector<id> all;
  for (const std::string& name : names) {
    all.push_back(standin::given(name));
  }
  all.push_back(@".DS_Store");
  return standin::given(all);
}
- (NSString*)displayNameAtPath:(NSString*)path {
  return standin::given(standin::onDesktop([&](const tarqo::Platform& platform) {
    return platform.bundles.displayName(standin::utf8Of(path));
  }));
}
@end

@interface NSBundle () {
  NSString* path_;
  NSString* identifier_;
}
@end
@implementation NSBundle
- (instancetype)initWithPath:(NSString*)path {
  const auto found = standin::onDesktop([&](const tarqo::Platform& platform) {
    return platform.bundles.bundleAt(standin::utf8Of(path));
  });
  if (!found) {
    [self release];
    return nil;
  }
  path_ = [path retain];
  identifier_ = [standin::given(found->identifier) retain];
  return self;
}
- (void)dealloc {
  [path_ release];
  [identifier_ release];
  [super dealloc];
}
- (NSString*)bundleIdentifier {
  return [[identifier_ retain] autorelease];
}
- (id)objectForInfoDictionaryKey:(NSString*)key {
  return standin::given(standin::onDesktop([&](const tarqo::Platform& platform) {
    return platform.bundles.infoText(standin::utf8Of(path_), standin::utf8Of(key));
  }));
}
@end

NSString* NSTemporaryDirectory(void) {
  const char* folder = std::getenv("TMPDIR");
  return standin::given(std::string(folder == nullptr ? "/tmp" : folder) + "/");
}
