#include "platform/mac/mac_bundles.h"

#import <AppKit/AppKit.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/mac/mac_objc.h"
#include "platform/mac/mac_running_application.h"
#include "platform/mac/mac_spawn.h"

namespace tarqo::mac {
namespace {

constexpr const char* kOpenTool = "/usr/bin/open";
constexpr std::string_view kBundleSuffix = ".app";

/// Nil when there is no bundle at the path.
NSBundle* _Nullable bundle(const std::string& path) {
  NSString* text = path.empty() ? nil : nsString(path);
  return text != nil ? [[NSBundle alloc] initWithPath:text] : nil;
}

}  // namespace

std::vector<std::string> MacBundles::applicationFolders() {
  std::vector<std::string> folders{"/Applications", "/System/Applications"};
  const auto home =
      guarded([] { return textOf(NSFileManager.defaultManager.homeDirectoryForCurrentUser.path); });
  if (home) {
    folders.push_back(*home + "/Applications");
  }
  return folders;
}

std::vector<std::string> MacBundles::bundlesIn(const std::string& folder) {
  return guarded([&] {
    std::vector<std::string> names;
    NSString* path = nsString(folder);
    if (path == nil) {
      return names;
    }
    for (NSString* entry in [NSFileManager.defaultManager contentsOfDirectoryAtPath:path
                                                                              error:nil]) {
      auto name = textOf(entry);
      if (name && name->ends_with(kBundleSuffix)) {
        names.push_back(*std::move(name));
      }
    }
    return names;
  });
}

std::optional<Bundle> MacBundles::bundleAt(const std::string& path) {
  return guarded([&]() -> std::optional<Bundle> {
    NSBundle* found = bundle(path);
    return found != nil ? std::optional(Bundle{textOf(found.bundleIdentifier)}) : std::nullopt;
  });
}

std::optional<std::string> MacBundles::infoText(const std::string& path, std::string_view key) {
  return guarded([&]() -> std::optional<std::string> {
    NSString* name = nsString(key);
    if (name == nil) {
      return std::nullopt;
    }
    return textIn((__bridge CFTypeRef)[bundle(path) objectForInfoDictionaryKey:name]);
  });
}

std::string MacBundles::displayName(const std::string& path) {
  const auto name = guarded([&]() -> std::optional<std::string> {
    NSString* text = nsString(path);
    return text != nil ? textOf([NSFileManager.defaultManager displayNameAtPath:text])
                       : std::nullopt;
  });
  return name.value_or(path.substr(path.rfind('/') + 1));
}

std::optional<std::string> MacBundles::recordedBundleOf(Pid /*pid*/) { return std::nullopt; }

std::string MacBundles::resolved(const std::string& path) {
  // Foundation's own functions take "/private" off some paths and so make two spellings of one.
  std::error_code error;
  const std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
  return error ? path : real.string();
}

std::optional<std::string> MacBundles::pathForIdentifier(std::string_view bundleId) {
  return guarded([&]() -> std::optional<std::string> {
    NSString* identifier = nsString(bundleId);
    if (identifier == nil) {
      return std::nullopt;
    }
    return textOf(
        [NSWorkspace.sharedWorkspace URLForApplicationWithBundleIdentifier:identifier].path);
  });
}

void MacBundles::open(const std::string& path, bool activates, OpenCompletion completion) {
  guarded([&] {
    NSString* text = nsString(path);
    if (text == nil) {
      completion({std::nullopt, "There is no application to open at " + path + "."});
      return;
    }
    NSWorkspaceOpenConfiguration* configuration = [NSWorkspaceOpenConfiguration configuration];
    configuration.activates = activates;
    // The block owns the completion, however long the system takes.
    const OpenCompletion done = std::move(completion);
    [NSWorkspace.sharedWorkspace
        openApplicationAtURL:[NSURL fileURLWithPath:text]
               configuration:configuration
           completionHandler:^(NSRunningApplication* application, NSError* error) {
             guarded([&] {
               done({application != nil ? describe(application) : std::nullopt,
                     textOf(error.localizedDescription)});
             });
           }];
  });
}

void MacBundles::openSite(const std::string& bundleId, const std::string& site) {
  const Pid child = spawn(kOpenTool, {"-nb", bundleId, "--args", "--new-window", site});
  if (child > 0) {
    collectLater(child);
  }
}

}  // namespace tarqo::mac
