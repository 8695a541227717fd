// The declarations of ScreenCaptureKit that the macOS backend uses, for compiling it on other
// systems.
//
// As in CoreFoundation.h. Frames are in points from the top left of the main display.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

API_AVAILABLE(macos(12.3))
@interface SCRunningApplication : NSObject
@property(readonly) pid_t processID;
@end

API_AVAILABLE(macos(12.3))
@interface SCWindow : NSObject
@property(readonly) CGRect frame;
@property(readonly, nullable) NSString* title;
@property(readonly, nullable) SCRunningApplication* owningApplication;
@end

API_AVAILABLE(macos(12.3))
@interface SCDisplay : NSObject
@property(readonly) CGDirectDisplayID displayID;
@property(readonly) CGRect frame;
@end

API_AVAILABLE(macos(12.3))
@interface SCShareableContent : NSObject
@property(readonly) NSArray<SCWindow*>* windows;
@property(readonly) NSArray<SCDisplay*>* displays;
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludeDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenWindowsOnly
                                 completionHandler:
                                     (void (^)(SCShareableContent* _Nullable content,
                                               NSError* _Nullable error))completionHandler;
@end

API_AVAILABLE(macos(12.3))
@interface SCContentFilter : NSObject
- (instancetype)initWithDisplay:(SCDisplay*)display
               excludingWindows:(NSArray<SCWindow*>*)excludedWindows;
@end

API_AVAILABLE(macos(12.3))
@interface SCStreamConfiguration : NSObject
@property(nonatomic, assign) size_t width;       ///< Pixels; 1920 if not set.
@property(nonatomic, assign) size_t height;      ///< Pixels; 1080 if not set.
@property(nonatomic, assign) CGRect sourceRect;  ///< Points from the top left of the display.
@property(nonatomic, assign) BOOL showsCursor;   ///< YES if not set.
@end

// Not in the SDKs before that of macOS 14.
#if __MAC_OS_X_VERSION_MAX_ALLOWED >= 140000
API_AVAILABLE(macos(14.0))
@interface SCScreenshotManager : NSObject
/// The image is lent for the time of the call.
+ (void)captureImageWithFilter:(SCContentFilter*)contentFilter
                 configuration:(SCStreamConfiguration*)config
             completionHandler:(void (^_Nullable)(CGImageRef _Nullable sampleBuffer,
                                                  NSError* _Nullable error))completionHandler;
@end
#endif

#pragma clang assume_nonnull end
