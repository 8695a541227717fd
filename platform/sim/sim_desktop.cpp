#include "platform/sim/sim_desktop.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace tarqo::sim {
namespace {

constexpr const char* kCaptureTool = "/usr/sbin/screencapture";

// "com.example.Notes" lies in "/Applications/Notes.app".
std::string defaultPath(const std::string& bundleId) {
  return "/Applications/" + bundleId.substr(bundleId.rfind('.') + 1) + ".app";
}

}  // namespace

std::uint64_t SeededRandom::next() {
  // The finaliser of splitmix64 over a counter.
  std::uint64_t bits = ++count_ * 0x9E3779B97F4A7C15U;
  bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
  bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
  return bits ^ (bits >> 31U);
}

void ParkedLoop::run() {
  std::mutex mutex;
  std::condition_variable nothing;
  std::unique_lock lock(mutex);
  while (true) {
    nothing.wait(lock);
  }
}

Desktop::~Desktop() { clock().stop(); }

Platform Desktop::platform() {
  return {accessibility_, workspace_, bundles_,    processes_, permissions_, world_.windows,
          capture_,       input_,     recognizer_, images_,    world_.clock, random_};
}

App& Desktop::app(const std::string& bundleId) {
  for (const auto& app : world_.apps) {
    if (!app->terminated() && app->facts.bundleId == bundleId) {
      return *app;
    }
  }
  return anotherApp(bundleId);
}

App& Desktop::anotherApp(const std::string& bundleId) {
  return bundles_.start(installed(bundleId));
}

InstalledBundle& Desktop::installed(const std::string& bundleId) {
  InstalledBundle* bundle = bundles_.find(bundleId);
  return bundle != nullptr ? *bundle : bundles_.install(defaultPath(bundleId), bundleId);
}

App& Desktop::hostedBy(const std::string& bundleId, const std::string& name) {
  App& host = app(bundleId);
  host.facts.localizedName = name;
  const Pid shell = processes_.add("/bin/zsh", host.pid());
  processes_.table[processes_.own].parent = shell;
  return host;
}

Program& Desktop::captureTool() {
  if (capture_.offered.empty() || capture_.offered.front() != CaptureTechnique::commandLine) {
    capture_.offered.insert(capture_.offered.begin(), CaptureTechnique::commandLine);
  }
  Program& tool = processes_.programs[kCaptureTool];
  tool.effect = [this](const Arguments& arguments) {
    for (const std::string& argument : arguments) {
      if (!argument.starts_with("-l")) {
        continue;
      }
      const auto number = static_cast<WindowNumber>(std::stoul(argument.substr(2)));
      const ServerWindow* window = world_.windows.find(number);
      const auto image =
          window == nullptr || !window->info.bounds
              ? std::nullopt
              : capture_.render(*window, world_.windows.scaleAt(*window->info.bounds));
      if (image) {
        const auto png = ImagesService().encodePng(*image);
        processes_.files[arguments.back()] = std::get<std::string>(png);
      }
    }
  };
  return tool;
}

void Desktop::every(Duration period, int times, const std::function<void()>& deed) {
  for (int i = 1; i <= times; ++i) {
    clock().after(period * i, deed);
  }
}

}  // namespace tarqo::sim
