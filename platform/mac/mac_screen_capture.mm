#include "platform/mac/mac_screen_capture.h"

#import <CoreGraphics/CoreGraphics.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>

#include "platform/mac/mac_images.h"
#include "platform/mac/mac_objc.h"

namespace tarqo::mac {
namespace {

using WindowImageFunction = CGImageRef (*)(CGRect, CGWindowListOption, CGWindowID,
                                           CGWindowImageOption);

/// Null where the system has it no more. Looked up by name: from the SDK of macOS 15 on a program
/// that names the function does not compile for that system, though older ones still need it.
WindowImageFunction windowImageFunction() {
  return reinterpret_cast<WindowImageFunction>(dlsym(RTLD_DEFAULT, "CGWindowListCreateImage"));
}

bool isMacOS14OrLater() {
  if (@available(macOS 14.0, *)) {
    return true;
  }
  return false;
}

Rect rectOf(CGRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

std::vector<ShareableWindow> describe(SCShareableContent* content) {
  std::vector<ShareableWindow> described;
  for (SCWindow* window in content.windows) {
    SCRunningApplication* owner = window.owningApplication;
    described.push_back({owner != nil ? std::optional<Pid>(owner.processID) : std::nullopt,
                         rectOf(window.frame), textOf(window.title).value_or("")});
  }
  return described;
}

using ContentHandler = void (^)(SCShareableContent* _Nullable, NSError* _Nullable);

/// With the windows of the desktop itself, of the windows on the screen only.
void askForContent(ContentHandler handler) {
  [SCShareableContent getShareableContentExcludingDesktopWindows:NO
                                             onScreenWindowsOnly:YES
                                               completionHandler:handler];
}

[[maybe_unused]] void report(NSError* error) {
  std::string text = textOf(error.localizedDescription).value_or("no error was given");
  // One line, whatever the system's text holds.
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  std::fprintf(stderr, "tarqo-ax capture: %s\n", text.c_str());
}

/// A part of a display, in points from the display's own top left, and its size in pixels.
struct Region {
  CGDirectDisplayID display = 0;
  CGRect globalPoints;
  double scale = 1;
};

#if __MAC_OS_X_VERSION_MAX_ALLOWED >= 140000

SCDisplay* _Nullable displayIn(SCShareableContent* content, CGDirectDisplayID number) {
  for (SCDisplay* display in content.displays) {
    if (display.displayID == number) {
      return display;
    }
  }
  return nil;
}

API_AVAILABLE(macos(14.0))
void captureRegion(SCDisplay* display, const Region& region, const ImageCompletion& completion) {
  const CGRect points = region.globalPoints;
  SCStreamConfiguration* configuration = [[SCStreamConfiguration alloc] init];
  configuration.sourceRect = {
      {points.origin.x - display.frame.origin.x, points.origin.y - display.frame.origin.y},
      points.size};
  // Pixels; a configuration that does not say gives 1920 by 1080.
  configuration.width = static_cast<size_t>(points.size.width * region.scale);
  configuration.height = static_cast<size_t>(points.size.height * region.scale);
  configuration.showsCursor = NO;
  SCContentFilter* filter = [[SCContentFilter alloc] initWithDisplay:display excludingWindows:@[]];
  const ImageCompletion done = completion;
  [SCScreenshotManager captureImageWithFilter:filter
                                configuration:configuration
                            completionHandler:^(CGImageRef image, NSError* error) {
                              guarded([&] {
                                if (error != nil) {
                                  report(error);
                                }
                                // Lent for the time of this call; the holder keeps it, and frees it
                                // also when nobody waits any more.
                                done(imageOf(retain(image)));
                              });
                            }];
}

API_AVAILABLE(macos(14.0))
void captureOnMainQueue(const Region& region, const ImageCompletion& completion) {
  const ImageCompletion done = completion;
  const Region wanted = region;
  askForContent(^(SCShareableContent* content, NSError* error) {
    guarded([&] {
      SCDisplay* display = displayIn(content, wanted.display);
      if (display == nil) {
        if (error != nil) {
          report(error);
        }
        done(std::nullopt);
        return;
      }
      captureRegion(display, wanted, done);
    });
  });
}

#endif

}  // namespace

std::vector<CaptureTechnique> MacScreenCapture::techniques() {
  if (isMacOS14OrLater()) {
    return {CaptureTechnique::commandLine, CaptureTechnique::displayRegion};
  }
  return {CaptureTechnique::windowImage};
}

bool MacScreenCapture::listsShareableWindows() { return isMacOS14OrLater(); }

std::optional<Image> MacScreenCapture::windowImage(WindowNumber window,
                                                   WindowImageResolution resolution) {
  return guarded([&]() -> std::optional<Image> {
    const WindowImageFunction createImage = windowImageFunction();
    if (createImage == nullptr) {
      return std::nullopt;
    }
    CGWindowImageOption options = kCGWindowImageBoundsIgnoreFraming;  // Without the shadow.
    if (resolution == WindowImageResolution::best) {
      options |= kCGWindowImageBestResolution;
    }
    return imageOf(
        adopt(createImage(CGRectNull, kCGWindowListOptionIncludingWindow, window, options)));
  });
}

void MacScreenCapture::shareableWindows(ShareableWindowsCompletion completion) {
  guarded([&] {
    const ShareableWindowsCompletion done = std::move(completion);
    askForContent(^(SCShareableContent* content, NSError* /*error*/) {
      guarded([&] { done(content != nil ? std::optional(describe(content)) : std::nullopt); });
    });
  });
}

void MacScreenCapture::displayRegion([[maybe_unused]] const Screen& screen,
                                     [[maybe_unused]] const Rect& region,
                                     ImageCompletion completion) {
#if __MAC_OS_X_VERSION_MAX_ALLOWED >= 140000
  if (@available(macOS 14.0, *)) {
    const ImageCompletion done = completion;
    const Region wanted{screen.displayNumber,
                        {{region.minX(), region.minY()}, {region.extentX(), region.extentY()}},
                        screen.scale};
    dispatch_async(dispatch_get_main_queue(), ^{
      guarded([&] { captureOnMainQueue(wanted, done); });
    });
    return;
  }
#endif
  completion(std::nullopt);
}

}  // namespace tarqo::mac
