// ScreenCaptureKit, and the older window image.

#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include <cmath>

#include "tests/platform/mac/frameworks/objects.h"
#include "tests/platform/mac/standin/desktop_quartz.h"
#include "tests/platform/mac/standin/faults.h"
#include "tests/platform/mac/standin/images.h"

using tarqo::Platform;

@interface SCRunningApplication () {
 @public
  pid_t pid_;
}
@end
@implementation SCRunningApplication
- (pid_t)processID {
  return pid_;
}
@end

@interface SCWindow () {
 @public
  CGRect frame_;
  NSString* title_;
  SCRunningApplication* owner_;
}
@end
@implementation SCWindow
- (void)dealloc {
  [title_ release];
  [owner_ release];
  [super dealloc];
}
- (CGRect)frame {
  return frame_;
}
- (NSString*)title {
  return [[title_ retain] autorelease];
}
- (SCRunningApplication*)owningApplication {
  return [[owner_ retain] autorelease];
}
@end

@interface SCDisplay () {
 @public
  standin::Display its_;
}
@end
@implementation SCDisplay
- (CGDirectDisplayID)displayID {
  return its_.id;
}
- (CGRect)frame {
  return its_.bounds;
}
@end

@interface SCShareableContent () {
 @public
  NSArray* windows_;
  NSArray* displays_;
}
@end

namespace {

using ContentBlock = void (^)(SCShareableContent*, NSError*);
using Windows = std::vector<tarqo::ShareableWindow>;

SCWindow* windowOf(const tarqo::ShareableWindow& its) {
  SCWindow* made = [[[SCWindow alloc] init] autorelease];
  made->frame_ = {{its.frame.x, its.frame.y}, {its.frame.width, its.frame.height}};
  made->title_ = its.title.empty() ? nil : [standin::given(its.title) retain];
  if (its.ownerPid) {
    made->owner_ = [[SCRunningApplication alloc] init];
    made->owner_->pid_ = *its.ownerPid;
  }
  return made;
}

SCShareableContent* contentOf(const Windows& windows) {
  std::vector<id> shown;
  for (const tarqo::ShareableWindow& each : windows) {
    shown.push_back(windowOf(each));
  }
  std::vector<id> displays;
  for (const standin::Display& each : standin::desktopDisplays()) {
    SCDisplay* display = [[[SCDisplay alloc] init] autorelease];
    display->its_ = each;
    displays.push_back(display);
  }
  SCShareableContent* made = [[[SCShareableContent alloc] init] autorelease];
  made->windows_ = [standin::given(shown) retain];
  made->displays_ = [standin::given(displays) retain];
  return made;
}

/// Of a desktop that has no such list, from its window server.
Windows listed(const Platform& platform) {
  Windows windows;
  for (const tarqo::WindowInfo& each : platform.windowServer.windows(tarqo::WindowList::onScreen)) {
    windows.push_back(
        {each.ownerPid, each.bounds.value_or(tarqo::Rect{}), each.title.value_or("")});
  }
  return windows;
}

void giveContent(const standin::KeptBlock<ContentBlock>& handler,
                 const std::optional<Windows>& windows) {
  standin::answer([handler, windows] {
    NSError* refused = windows ? nil : standin::makeError("The user declined.");
    handler.get()(windows ? contentOf(*windows) : nil, refused);
  });
}

}  // namespace

@implementation SCShareableContent
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludeDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenWindowsOnly
                                 completionHandler:(ContentBlock)completionHandler {
  if (excludeDesktopWindows || !onScreenWindowsOnly) {
    standin::complain("another list of windows");
  }
  const standin::KeptBlock<ContentBlock> handler(completionHandler);
  standin::onDesktop([&](const Platform& platform) {
    if (platform.screenCapture.listsShareableWindows()) {
      platform.screenCapture.shareableWindows(
          [handler](const std::optional<Windows>& windows) { giveContent(handler, windows); });
    } else {
      giveContent(handler, listed(platform));
    }
  });
}
- (void)dealloc {
  [windows_ release];
  [displays_ release];
  [super dealloc];
}
- (NSArray<SCWindow*>*)windows {
  return [[windows_ retain] autorelease];
}
- (NSArray<SCDisplay*>*)displays {
  return [[displays_ retain] autorelease];
}
@end

@interface SCContentFilter () {
 @public
  SCDisplay* display_;
}
@end
@implementation SCContentFilter
- (instancetype)initWithDisplay:(SCDisplay*)display
               excludingWindows:(NSArray<SCWindow*>*)excludedWindows {
  if (CFArrayGetCount((CFArrayRef)excludedWindows) > 0) {
    standin::complain("a filter that leaves windows out");
  }
  display_ = [display retain];
  return self;
}
- (void)dealloc {
  [display_ release];
  [super dealloc];
}
@end

@implementation SCStreamConfiguration
@synthesize width = width_, height = height_, sourceRect = sourceRect_, showsCursor = showsCursor_;
- (instancetype)init {
  // As the framework begins.
  width_ = 1920;
  height_ = 1080;
  showsCursor_ = YES;
  return self;
}
@end

namespace {

using ImageBlock = void (^)(CGImageRef, NSError*);

/// What the configuration asked for: an image of another size would have been scaled to it.
std::optional<tarqo::Image> asConfigured(std::optional<tarqo::Image> image, size_t width,
                                         size_t height) {
  constexpr double kRounding = 1;
  if (image && (std::abs(image->widthPx - static_cast<double>(width)) > kRounding ||
                std::abs(image->heightPx - static_cast<double>(height)) > kRounding)) {
    image->widthPx = static_cast<int>(width);
    image->heightPx = static_cast<int>(height);
  }
  return image;
}

/// The display of the desktop that a filter shows; none when there is no such display any more.
std::optional<tarqo::Screen> screenOf(const Platform& platform, CGDirectDisplayID number) {
  for (const tarqo::Screen& each : platform.windowServer.screens()) {
    if (each.displayNumber == number) {
      return each;
    }
  }
  return std::nullopt;
}

void giveImage(const standin::KeptBlock<ImageBlock>& handler,
               const std::optional<tarqo::Image>& image) {
  standin::answer([handler, image] {
    const auto made = standin::image(image);
    handler.get()(made.get(), made ? nil : standin::makeError("The stream\nfailed."));
  });
}

}  // namespace

@implementation SCScreenshotManager
+ (void)captureImageWithFilter:(SCContentFilter*)contentFilter
                 configuration:(SCStreamConfiguration*)config
             completionHandler:(ImageBlock)completionHandler {
  if (config != nil && config.showsCursor) {
    standin::complain("a picture with the pointer");
  }
  const standin::KeptBlock<ImageBlock> handler(completionHandler);
  if (contentFilter == nil || config == nil) {
    giveImage(handler, std::nullopt);
    return;
  }
  const standin::Display display = contentFilter->display_->its_;
  const CGRect part = config.sourceRect;
  const tarqo::Rect region{display.bounds.origin.x + part.origin.x,
                           display.bounds.origin.y + part.origin.y, part.size.width,
                           part.size.height};
  const size_t width = config.width;
  const size_t height = config.height;
  standin::onDesktop([&](const Platform& platform) {
    const auto screen = screenOf(platform, display.id);
    if (!screen) {
      giveImage(handler, std::nullopt);
      return;
    }
    platform.screenCapture.displayRegion(
        *screen, region, [handler, width, height](std::optional<tarqo::Image> image) {
          giveImage(handler, asConfigured(std::move(image), width, height));
        });
  });
}
@end

extern "C" {

const CGRect CGRectNull = {{__builtin_inf(), __builtin_inf()}, {0, 0}};

// Found by its name at run time, as on a Mac.
__attribute__((visibility("default"), used)) CGImageRef CGWindowListCreateImage(
    CGRect bounds, CGWindowListOption option, CGWindowID window, CGWindowImageOption image) {
  if (standin::Faults::instance().next("CGWindowListCreateImage").fails()) {
    return nullptr;
  }
  if (bounds.origin.x != CGRectNull.origin.x || option != kCGWindowListOptionIncludingWindow) {
    standin::complain("an image of more than one window");
  }
  const auto resolution = (image & kCGWindowImageBestResolution) != 0
                              ? tarqo::WindowImageResolution::best
                              : tarqo::WindowImageResolution::nominal;
  const auto made = standin::image(standin::onDesktop([&](const Platform& platform) {
    return platform.screenCapture.windowImage(window, resolution);
  }));
  return made ? (CGImageRef)CFRetain(made.get()) : nullptr;
}

}  // extern "C"
