// The declarations of CoreFoundation that the macOS backend uses, for compiling it on other
// systems.
//
// Copied one by one from Apple's documentation; a Mac compiles against Apple's own headers instead.
// What a function or value lacks here the backend does not use. `_Nullable` stands where null is an
// ordinary answer. Create and Copy give a reference that the caller releases, Get lends one.
#pragma once

#include <stdint.h>

#ifndef __clang__
#define _Nullable
#define _Nonnull
#endif

#ifdef __clang__
#define TARQO_SDK_SINCE(version) __attribute__((availability(macos, introduced = version)))
#else
#define TARQO_SDK_SINCE(version)
#endif

extern "C" {

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef uint16_t UInt16;
typedef int32_t SInt32;
typedef uint32_t UInt32;
typedef int64_t SInt64;
typedef UInt16 UniChar;
typedef unsigned long UniCharCount;

typedef signed long CFIndex;
typedef unsigned long CFTypeID;
typedef double CFTimeInterval;
typedef UInt32 CFStringEncoding;

typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;

enum : CFIndex { kCFNotFound = -1 };

typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFData* CFDataRef;
typedef struct __CFData* CFMutableDataRef;
typedef const struct __CFURL* CFURLRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFBoolean* CFBooleanRef;
typedef const struct __CFNull* CFNullRef;
typedef struct __CFRunLoop* CFRunLoopRef;
typedef struct __CFRunLoopSource* CFRunLoopSourceRef;

// Every reference; null crashes.
Boolean CFEqual(CFTypeRef first, CFTypeRef second);
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);

CFTypeID CFNullGetTypeID(void);
extern const CFNullRef kCFNull;

// Texts; lengths in UTF-16 units.
enum : CFStringEncoding { kCFStringEncodingUTF16 = 0x0100, kCFStringEncodingUTF8 = 0x08000100 };

CFTypeID CFStringGetTypeID(void);
CFIndex CFStringGetLength(CFStringRef text);
/// Without room for a NUL; kCFNotFound when the size does not fit its type.
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
/// The number of units converted. With a `lossByte` of 0 it stops before what cannot be.
CFIndex CFStringGetBytes(CFStringRef text, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* _Nullable buffer,
                         CFIndex bufferSize, CFIndex* _Nullable usedSize);
/// Null when the bytes are not valid in the encoding.
CFStringRef _Nullable CFStringCreateWithBytes(CFAllocatorRef _Nullable allocator,
                                              const UInt8* bytes, CFIndex count,
                                              CFStringEncoding encoding,
                                              Boolean isExternalRepresentation);

// A constant: not to be released. Compilers without constant strings of Core Foundation call a
// function, as Apple's own header has them do.
#ifdef __CONSTANT_CFSTRINGS__
#define CFSTR(literal) ((CFStringRef)__builtin___CFStringMakeConstantString("" literal ""))
#else
CFStringRef __CFStringMakeConstantString(const char* text);
#define CFSTR(literal) __CFStringMakeConstantString("" literal "")
#endif

// Not confirmed by Apple's current documentation, so to be seen on a Mac: the types are those of
// the sources of CFString and CFCharacterSet that Apple publishes.
typedef const struct __CFCharacterSet* CFCharacterSetRef;
typedef uint32_t UTF32Char;
enum CFCharacterSetPredefinedSet : CFIndex { kCFCharacterSetControl = 1 };  ///< Cc and Cf.

CFRange CFStringGetRangeOfComposedCharactersAtIndex(CFStringRef text, CFIndex index);
CFCharacterSetRef CFCharacterSetGetPredefined(CFCharacterSetPredefinedSet which);
Boolean CFCharacterSetIsLongCharacterMember(CFCharacterSetRef set, UTF32Char character);

// Booleans and numbers are of different types, also when a boolean was made as an NSNumber.
CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;

enum CFNumberType : CFIndex {
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberFloat64Type = 6,
  kCFNumberDoubleType = 13,
};

CFTypeID CFNumberGetTypeID(void);
/// False when the conversion lost something; the value is written all the same.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
CFNumberRef _Nullable CFNumberCreate(CFAllocatorRef _Nullable allocator, CFNumberType type,
                                     const void* value);

// Collections lend what they hold. An index out of range crashes.
typedef struct CFArrayCallBacks CFArrayCallBacks;
typedef struct CFDictionaryKeyCallBacks CFDictionaryKeyCallBacks;
typedef struct CFDictionaryValueCallBacks CFDictionaryValueCallBacks;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

// As every type's: Apple's CFArray.h.
CFTypeID CFArrayGetTypeID(void);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
CFArrayRef _Nullable CFArrayCreate(CFAllocatorRef _Nullable allocator, const void** values,
                                   CFIndex count, const CFArrayCallBacks* _Nullable callBacks);

// As every type's: Apple's CFDictionary.h.
CFTypeID CFDictionaryGetTypeID(void);
const void* _Nullable CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
CFDictionaryRef _Nullable CFDictionaryCreate(
    CFAllocatorRef _Nullable allocator, const void** keys, const void** values, CFIndex count,
    const CFDictionaryKeyCallBacks* _Nullable keyCallBacks,
    const CFDictionaryValueCallBacks* _Nullable valueCallBacks);

CFTypeID CFURLGetTypeID(void);
CFStringRef CFURLGetString(CFURLRef url);
CFURLRef _Nullable CFURLCopyAbsoluteURL(CFURLRef url);

const UInt8* CFDataGetBytePtr(CFDataRef data);
CFIndex CFDataGetLength(CFDataRef data);
/// To be seen on a Mac, as above.
CFDataRef _Nullable CFDataCreate(CFAllocatorRef _Nullable allocator, const UInt8* bytes,
                                 CFIndex length);
CFMutableDataRef _Nullable CFDataCreateMutable(CFAllocatorRef _Nullable allocator,
                                               CFIndex capacity);

// Run loops.
typedef CFStringRef CFRunLoopMode;
extern const CFRunLoopMode kCFRunLoopDefaultMode;

enum CFRunLoopRunResult : SInt32 {
  kCFRunLoopRunFinished = 1,
  kCFRunLoopRunStopped = 2,
  kCFRunLoopRunTimedOut = 3,
  kCFRunLoopRunHandledSource = 4,
};

CFRunLoopRef CFRunLoopGetMain(void);
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);
void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);
CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled);

}  // extern "C"
