// The declarations of CoreGraphics that the macOS backend uses, for compiling it on other systems.
//
// As in CoreFoundation.h. Global coordinates are points from the top left of the main display.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stddef.h>
#include <sys/types.h>

extern "C" {

typedef double CGFloat;

struct CGPoint {
  CGFloat x;
  CGFloat y;
};
typedef struct CGPoint CGPoint;

struct CGSize {
  CGFloat width;
  CGFloat height;
};
typedef struct CGSize CGSize;

struct CGRect {
  CGPoint origin;
  CGSize size;
};
typedef struct CGRect CGRect;

extern const CGRect CGRectNull;

typedef struct CGImage* CGImageRef;
typedef struct CGDisplayMode* CGDisplayModeRef;
typedef struct __CGEvent* CGEventRef;
typedef struct __CGEventSource* CGEventSourceRef;

// Windows.
typedef uint32_t CGWindowID;
enum : CGWindowID { kCGNullWindowID = 0 };

typedef uint32_t CGWindowListOption;
enum : CGWindowListOption {
  kCGWindowListOptionAll = 0,
  kCGWindowListOptionOnScreenOnly = 1,
  kCGWindowListOptionOnScreenAboveWindow = 2,
  kCGWindowListOptionOnScreenBelowWindow = 4,
  kCGWindowListOptionIncludingWindow = 8,
  kCGWindowListExcludeDesktopElements = 16,
};

typedef uint32_t CGWindowImageOption;
enum : CGWindowImageOption {
  kCGWindowImageDefault = 0,
  kCGWindowImageBoundsIgnoreFraming = 1,
  kCGWindowImageShouldBeOpaque = 2,
  kCGWindowImageOnlyShadows = 4,
  kCGWindowImageBestResolution = 8,
  kCGWindowImageNominalResolution = 16,
};

/// Null outside a graphical session; front to back for the windows on the screen.
CFArrayRef _Nullable CGWindowListCopyWindowInfo(CGWindowListOption option,
                                                CGWindowID relativeToWindow);
extern const CFStringRef kCGWindowNumber;
extern const CFStringRef kCGWindowOwnerPID;
extern const CFStringRef kCGWindowOwnerName;
extern const CFStringRef kCGWindowBounds;
extern const CFStringRef kCGWindowLayer;
extern const CFStringRef kCGWindowAlpha;
extern const CFStringRef kCGWindowName;
bool CGRectMakeWithDictionaryRepresentation(CFDictionaryRef _Nullable dictionary,
                                            CGRect* _Nullable rect);

/// The header says 10.15, but the symbols link from 11.0 on.
TARQO_SDK_SINCE(10.15) bool CGPreflightScreenCaptureAccess(void);
TARQO_SDK_SINCE(10.15) bool CGRequestScreenCaptureAccess(void);

/// Null outside a graphical session.
CFDictionaryRef _Nullable CGSessionCopyCurrentDictionary(void);
#define kCGSessionOnConsoleKey CFSTR("kCGSSessionOnConsoleKey")

// Displays.
typedef uint32_t CGDirectDisplayID;
// The name of the value: Apple's CGError.h.
enum CGError : SInt32 { kCGErrorSuccess = 0 };

CGDirectDisplayID CGMainDisplayID(void);
CGError CGGetActiveDisplayList(uint32_t maxDisplays, CGDirectDisplayID* _Nullable displays,
                               uint32_t* _Nullable displayCount);
CGRect CGDisplayBounds(CGDirectDisplayID display);
CGDisplayModeRef _Nullable CGDisplayCopyDisplayMode(CGDirectDisplayID display);
size_t CGDisplayModeGetWidth(CGDisplayModeRef _Nullable mode);
size_t CGDisplayModeGetPixelWidth(CGDisplayModeRef _Nullable mode);

// Images; sizes in pixels.
size_t CGImageGetWidth(CGImageRef _Nullable image);
size_t CGImageGetHeight(CGImageRef _Nullable image);

// Events. A null source is accepted everywhere.
enum CGEventSourceStateID : int32_t {
  kCGEventSourceStatePrivate = -1,
  kCGEventSourceStateCombinedSessionState = 0,
  kCGEventSourceStateHIDSystemState = 1,
};

enum CGEventType : uint32_t {
  kCGEventLeftMouseDown = 1,
  kCGEventLeftMouseUp = 2,
  kCGEventRightMouseDown = 3,
  kCGEventRightMouseUp = 4,
  kCGEventMouseMoved = 5,
  kCGEventLeftMouseDragged = 6,
  kCGEventRightMouseDragged = 7,
  kCGEventKeyDown = 10,
  kCGEventKeyUp = 11,
  kCGEventFlagsChanged = 12,
  kCGEventScrollWheel = 22,
};

enum CGMouseButton : uint32_t {
  kCGMouseButtonLeft = 0,
  kCGMouseButtonRight = 1,
  kCGMouseButtonCenter = 2,
};

typedef uint64_t CGEventFlags;
enum : CGEventFlags {
  kCGEventFlagMaskAlphaShift = 0x10000,
  kCGEventFlagMaskShift = 0x20000,
  kCGEventFlagMaskControl = 0x40000,
  kCGEventFlagMaskAlternate = 0x80000,
  kCGEventFlagMaskCommand = 0x100000,
};

enum CGEventField : uint32_t { kCGMouseEventClickState = 1 };

enum CGScrollEventUnit : uint32_t { kCGScrollEventUnitPixel = 0, kCGScrollEventUnitLine = 1 };

enum CGEventTapLocation : uint32_t {
  kCGHIDEventTap = 0,
  kCGSessionEventTap = 1,
  kCGAnnotatedSessionEventTap = 2,
};

typedef uint16_t CGKeyCode;

CGEventSourceRef _Nullable CGEventSourceCreate(CGEventSourceStateID state);
CGEventRef _Nullable CGEventCreate(CGEventSourceRef _Nullable source);
CGPoint CGEventGetLocation(CGEventRef _Nullable event);
CGEventRef _Nullable CGEventCreateMouseEvent(CGEventSourceRef _Nullable source, CGEventType type,
                                             CGPoint position, CGMouseButton button);
CGEventRef _Nullable CGEventCreateKeyboardEvent(CGEventSourceRef _Nullable source,
                                                CGKeyCode virtualKey, bool keyDown);
void CGEventKeyboardSetUnicodeString(CGEventRef _Nullable event, UniCharCount length,
                                     const UniChar* _Nullable text);
void CGEventSetFlags(CGEventRef _Nullable event, CGEventFlags flags);
void CGEventSetIntegerValueField(CGEventRef _Nullable event, CGEventField field, int64_t value);
TARQO_SDK_SINCE(10.13)
CGEventRef _Nullable CGEventCreateScrollWheelEvent2(CGEventSourceRef _Nullable source,
                                                    CGScrollEventUnit units, uint32_t wheelCount,
                                                    int32_t wheel1, int32_t wheel2, int32_t wheel3);
void CGEventPost(CGEventTapLocation tap, CGEventRef _Nullable event);

}  // extern "C"
