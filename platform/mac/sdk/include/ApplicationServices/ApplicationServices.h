// The accessibility declarations of ApplicationServices that the macOS backend uses, for compiling
// it on other systems. As in CoreFoundation.h.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <sys/types.h>

extern "C" {

typedef const struct __AXUIElement* AXUIElementRef;
typedef const struct __AXValue* AXValueRef;
typedef struct __AXObserver* AXObserverRef;

enum AXError : SInt32 {
  kAXErrorSuccess = 0,
  kAXErrorFailure = -25200,
  kAXErrorIllegalArgument = -25201,
  kAXErrorInvalidUIElement = -25202,
  kAXErrorInvalidUIElementObserver = -25203,
  kAXErrorCannotComplete = -25204,
  kAXErrorAttributeUnsupported = -25205,
  kAXErrorActionUnsupported = -25206,
  kAXErrorNotificationUnsupported = -25207,
  kAXErrorNotImplemented = -25208,
  kAXErrorNotificationAlreadyRegistered = -25209,
  kAXErrorNotificationNotRegistered = -25210,
  kAXErrorAPIDisabled = -25211,
  kAXErrorNoValue = -25212,
  kAXErrorParameterizedAttributeUnsupported = -25213,
  kAXErrorNotEnoughPrecision = -25214,
};

// Trust.
Boolean AXIsProcessTrusted(void);
/// A prompt is shown on its own and does not change the answer.
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef _Nullable options);
extern CFStringRef kAXTrustedCheckOptionPrompt;

// Elements.
AXUIElementRef AXUIElementCreateApplication(pid_t pid);
AXUIElementRef AXUIElementCreateSystemWide(void);
/// Of the system-wide element: the process's default. Of another: of that reference alone, not of
/// references equal to it. 0 goes back to the default; negative is an illegal argument.
AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float seconds);
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value);

typedef UInt32 AXCopyMultipleAttributeOptions;
enum : AXCopyMultipleAttributeOptions { kAXCopyMultipleAttributeOptionStopOnError = 0x1 };

/// Without options, a slot that failed holds a value of kAXValueTypeAXError, or kCFNull.
AXError AXUIElementCopyMultipleAttributeValues(AXUIElementRef element, CFArrayRef attributes,
                                               AXCopyMultipleAttributeOptions options,
                                               CFArrayRef* values);
AXError AXUIElementIsAttributeSettable(AXUIElementRef element, CFStringRef attribute,
                                       Boolean* settable);
AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef value);
AXError AXUIElementCopyActionNames(AXUIElementRef element, CFArrayRef* names);
AXError AXUIElementPerformAction(AXUIElementRef element, CFStringRef action);
AXError AXUIElementCopyElementAtPosition(AXUIElementRef application, float x, float y,
                                         AXUIElementRef* element);
AXError AXUIElementGetPid(AXUIElementRef element, pid_t* pid);
CFTypeID AXUIElementGetTypeID(void);

// Header macros, not symbols.
#define kAXRoleAttribute CFSTR("AXRole")

// Values.
enum AXValueType : UInt32 {
  kAXValueTypeIllegal = 0,
  kAXValueTypeCGPoint = 1,
  kAXValueTypeCGSize = 2,
  kAXValueTypeCGRect = 3,
  kAXValueTypeCFRange = 4,
  kAXValueTypeAXError = 5,
};

CFTypeID AXValueGetTypeID(void);
AXValueRef _Nullable AXValueCreate(AXValueType type, const void* value);
AXValueType AXValueGetType(AXValueRef value);
/// False when the type does not match.
Boolean AXValueGetValue(AXValueRef value, AXValueType type, void* out);

// Observers. Callbacks arrive on the loop that serves the source; their arguments are lent.
typedef void (*AXObserverCallback)(AXObserverRef observer, AXUIElementRef element,
                                   CFStringRef notification, void* _Nullable refcon);
AXError AXObserverCreate(pid_t application, AXObserverCallback callback, AXObserverRef* observer);
AXError AXObserverAddNotification(AXObserverRef observer, AXUIElementRef element,
                                  CFStringRef notification, void* _Nullable refcon);
/// Lent. Releasing the observer removes the source from its loop.
CFRunLoopSourceRef AXObserverGetRunLoopSource(AXObserverRef observer);

}  // extern "C"
