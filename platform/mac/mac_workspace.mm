#include "platform/mac/mac_workspace.h"

#import <AppKit/AppKit.h>

#include "platform/mac/mac_objc.h"
#include "platform/mac/mac_process_record.h"
#include "platform/mac/mac_running_application.h"

namespace tarqo::mac {
namespace {

constexpr NSApplicationActivationOptions kNoOptions = 0;

ActivationPolicy policyOf(NSApplicationActivationPolicy policy) {
  switch (policy) {
    case NSApplicationActivationPolicyRegular:
      return ActivationPolicy::regular;
    case NSApplicationActivationPolicyAccessory:
      return ActivationPolicy::accessory;
    case NSApplicationActivationPolicyProhibited:
      break;
  }
  return ActivationPolicy::prohibited;
}

std::vector<RunningApplication> describeAll(NSArray<NSRunningApplication*>* applications) {
  std::vector<RunningApplication> described;
  for (NSRunningApplication* application in applications) {
    if (auto one = describe(application)) {
      described.push_back(*std::move(one));
    }
  }
  return described;
}

/// Nil when the process is another one by now.
NSRunningApplication* _Nullable applicationOf(const ApplicationId& id) {
  const auto record = processRecord(id.pid);
  return record && record->startedAt == id.instance
             ? [NSRunningApplication runningApplicationWithProcessIdentifier:id.pid]
             : nil;
}

}  // namespace

std::optional<RunningApplication> describe(NSRunningApplication* application) {
  const Pid pid = application.processIdentifier;
  const auto record = processRecord(pid);
  if (!record) {
    return std::nullopt;
  }
  return RunningApplication{{pid, record->startedAt},
                            textOf(application.bundleIdentifier),
                            textOf(application.bundleURL.path),
                            textOf(application.localizedName),
                            policyOf(application.activationPolicy)};
}

std::vector<RunningApplication> MacWorkspace::runningApplications() {
  return guarded([] { return describeAll(NSWorkspace.sharedWorkspace.runningApplications); });
}

std::vector<RunningApplication> MacWorkspace::runningApplications(std::string_view bundleId) {
  return guarded([&] {
    NSString* identifier = nsString(bundleId);
    return identifier != nil ? describeAll([NSRunningApplication
                                   runningApplicationsWithBundleIdentifier:identifier])
                             : std::vector<RunningApplication>();
  });
}

std::optional<RunningApplication> MacWorkspace::runningApplication(Pid pid) {
  return guarded([&]() -> std::optional<RunningApplication> {
    NSRunningApplication* application =
        [NSRunningApplication runningApplicationWithProcessIdentifier:pid];
    return application != nil ? describe(application) : std::nullopt;
  });
}

bool MacWorkspace::isTerminated(const ApplicationId& application) {
  const auto record = processRecord(application.pid);
  if (!record || record->startedAt != application.instance) {
    return true;
  }
  return guarded([&] {
    // No object is no proof of an end: the process is there, and AppKit may not have met it yet.
    NSRunningApplication* running =
        [NSRunningApplication runningApplicationWithProcessIdentifier:application.pid];
    return running != nil && running.terminated;
  });
}

bool MacWorkspace::isHidden(const ApplicationId& application) {
  return guarded([&] {
    NSRunningApplication* running = applicationOf(application);
    return running != nil && running.hidden;
  });
}

void MacWorkspace::unhide(const ApplicationId& application) {
  guarded([&] { [applicationOf(application) unhide]; });
}

void MacWorkspace::activate(const ApplicationId& application) {
  guarded([&] { [applicationOf(application) activateWithOptions:kNoOptions]; });
}

std::optional<Pid> MacWorkspace::frontmostApplication() {
  const auto answer = askMainThread([]() -> std::optional<Pid> {
    NSRunningApplication* front = NSWorkspace.sharedWorkspace.frontmostApplication;
    // AppKit says -1 for an application that has no process.
    const Pid pid = front != nil ? front.processIdentifier : 0;
    return pid > 0 ? std::optional(pid) : std::nullopt;
  });
  return answer.value_or(std::nullopt);
}

}  // namespace tarqo::mac
