// AppKit: running applications and how one is opened.

#import <AppKit/AppKit.h>

#include "tests/platform/mac/frameworks/objects.h"
#include "tests/platform/mac/standin/faults.h"

using tarqo::Platform;
using tarqo::RunningApplication;

@interface NSRunningApplication () {
  RunningApplication its_;
}
- (instancetype)initWithApplication:(const RunningApplication&)its;
@end

namespace {

/// In the pool; nil for none.
NSRunningApplication* given(const std::optional<RunningApplication>& its) {
  return its ? [[[NSRunningApplication alloc] initWithApplication:*its] autorelease] : nil;
}

NSArray* given(const std::vector<RunningApplication>& all) {
  std::vector<id> objects;
  for (const RunningApplication& each : all) {
    objects.push_back(given(std::optional(each)));
  }
  return standin::given(objects);
}

}  // namespace

@implementation NSRunningApplication
- (instancetype)initWithApplication:(const RunningApplication&)its {
  its_ = its;
  return self;
}
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  return given(standin::onDesktop([&](const Platform& platform) {
    return platform.workspace.runningApplications(standin::utf8Of(identifier));
  }));
}
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid {
  return given(standin::onDesktop(
      [&](const Platform& platform) { return platform.workspace.runningApplication(pid); }));
}
- (pid_t)processIdentifier {
  return its_.id.pid;
}
- (NSString*)bundleIdentifier {
  return standin::given(its_.bundleId);
}
- (NSURL*)bundleURL {
  return its_.bundlePath ? [NSURL fileURLWithPath:standin::given(its_.bundlePath)] : nil;
}
- (NSString*)localizedName {
  return standin::given(its_.localizedName);
}
- (NSApplicationActivationPolicy)activationPolicy {
  switch (its_.policy) {
    case tarqo::ActivationPolicy::regular:
      return NSApplicationActivationPolicyRegular;
    case tarqo::ActivationPolicy::accessory:
      return NSApplicationActivationPolicyAccessory;
    case tarqo::ActivationPolicy::prohibited:
      break;
  }
  return NSApplicationActivationPolicyProhibited;
}
- (BOOL)isTerminated {
  return standin::onDesktop(
      [&](const Platform& platform) { return platform.workspace.isTerminated(its_.id); });
}
- (BOOL)isHidden {
  return standin::onDesktop(
      [&](const Platform& platform) { return platform.workspace.isHidden(its_.id); });
}
- (BOOL)unhide {
  standin::onDesktop([&](const Platform& platform) { platform.workspace.unhide(its_.id); });
  return YES;
}
- (BOOL)activateWithOptions:(NSApplicationActivationOptions)options {
  if (options != 0) {
    standin::complain("an activation with options");
  }
  standin::onDesktop([&](const Platform& platform) { platform.workspace.activate(its_.id); });
  return YES;
}
@end

@interface NSWorkspaceOpenConfiguration () {
  BOOL activates_;
}
@end
@implementation NSWorkspaceOpenConfiguration
+ (instancetype)configuration {
  NSWorkspaceOpenConfiguration* made = [[[NSWorkspaceOpenConfiguration alloc] init] autorelease];
  made->activates_ = YES;
  return made;
}
- (BOOL)activates {
  return activates_;
}
- (void)setActivates:(BOOL)activates {
  activates_ = activates;
}
@end

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  static NSWorkspace* const workspace = [[NSWorkspace alloc] init];
  return workspace;
}
- (NSArray<NSRunningApplication*>*)runningApplications {
  return given(standin::onDesktop(
      [](const Platform& platform) { return platform.workspace.runningApplications(); }));
}
- (NSRunningApplication*)frontmostApplication {
  return given(standin::onDesktop([](const Platform& platform) {
    const auto front = platform.workspace.frontmostApplication();
    return front ? platform.workspace.runningApplication(*front) : std::nullopt;
  }));
}
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)bundleIdentifier {
  const auto path = standin::onDesktop([&](const Platform& platform) {
    return platform.bundles.pathForIdentifier(standin::utf8Of(bundleIdentifier));
  });
  return path ? [NSURL fileURLWithPath:standin::given(path)] : nil;
}
- (void)openApplicationAtURL:(NSURL*)applicationURL
               configuration:(NSWorkspaceOpenConfiguration*)configuration
           completionHandler:(void (^)(NSRunningApplication*, NSError*))completionHandler {
  const standin::KeptBlock<void (^)(NSRunningApplication*, NSError*)> handler(completionHandler);
  const std::string path = standin::utf8Of(applicationURL.path);
  standin::onDesktop([&](const Platform& platform) {
    platform.bundles.open(
        path, configuration.activates, [handler](const tarqo::OpenedApplication& opened) {
          standin::answer([handler, opened] {
            NSError* error = opened.error ? standin::makeError(*opened.error) : nil;
            handler.get()(given(opened.application), error);
          });
        });
  });
}
@end
