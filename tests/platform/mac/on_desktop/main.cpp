// tarqo-ax-standin: the whole helper with the macOS backend, on the stand-in for macOS, which shows
// the desktop of this system.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <variant>

#include "platform/platform.h"
#include "server/server.h"
#include "server/worker.h"
#include "tests/platform/mac/on_desktop/app_folders.h"
#include "tests/platform/mac/standin/desktop.h"
#include "tests/platform/mac/standin/heap.h"
#include "tests/platform/mac/standin/mac_on_desktop.h"
#include "tests/platform/mac/standin/tools.h"

namespace {

constexpr const char* kProgram = "tarqo-ax-standin";
constexpr std::string_view kWindowOption = "-l";

/// A new file with the picture of the window that the capture tool of macOS is asked for; empty
/// when there is none.
std::string pictureFor(const standin::CommandLine& command) {
  for (const std::string& word : command) {
    if (!word.starts_with(kWindowOption) || word.size() == kWindowOption.size()) {
      continue;
    }
    const auto number = static_cast<tarqo::WindowNumber>(std::stoul(word.substr(2)));
    const auto png = standin::onDesktop([&](const tarqo::Platform& platform) {
      const auto image =
          platform.screenCapture.windowImage(number, tarqo::WindowImageResolution::best);
      return image ? platform.images.encodePng(*image)
                   : std::variant<std::string, tarqo::PngError>(tarqo::PngError::failed);
    });
    const auto* bytes = std::get_if<std::string>(&png);
    if (bytes == nullptr) {
      return "";
    }
    const std::string path = command.back() + ".picture";
    std::ofstream(path, std::ios::binary) << *bytes;
    return path;
  }
  return "";
}

/// What macOS has as programs of its own.
void replaceTools() {
  standin::replaceTool("/usr/sbin/screencapture", [](const standin::CommandLine& command) {
    const std::string picture = pictureFor(command);
    return picture.empty() ? standin::CommandLine{"/bin/false"}
                           : standin::CommandLine{"/bin/mv", picture, command.back()};
  });
  standin::replaceTool("/usr/bin/open", [](const standin::CommandLine& command) {
    // open -nb IDENTIFIER --args --new-window SITE
    if (command.size() > 5) {
      standin::onDesktop([&](const tarqo::Platform& platform) {
        platform.bundles.openSite(command[2], command[5]);
      });
    }
    return standin::CommandLine{"/bin/true"};
  });
}

}  // namespace

int main(int /*argc*/, char** argv) {
  const auto streams = tarqo::claimStreams(kProgram);
  if (!streams) {
    return 1;
  }
  standin::Heap::instance().freeWhatEnds();
  const std::unique_ptr<tarqo::Backend> desktop = tarqo::makePlatform(argv[0]);
  const tarqo::Platform own = desktop->platform();
  standin::ShownBundles bundles(own.bundles);
  standin::ShownWorkspace workspace(own.workspace, own.bundles);
  standin::enterDesktop(
      {own.accessibility, workspace, bundles, own.processes, own.permissions, own.windowServer,
       own.screenCapture, own.inputEvents, own.textRecognizer, own.images, own.clock, own.random},
      false);
  replaceTools();
  std::thread([&desktop] { desktop->mainLoop().run(); }).detach();

  const std::unique_ptr<tarqo::Backend> mac = tarqo::makeMacPlatform(argv[0]);
  tarqo::Server server(mac->platform());
  if (!tarqo::serveOnWorker(kProgram, *streams,
                            [&](std::string_view line) { return server.serve(line); })) {
    return 1;
  }
  mac->mainLoop().run();
}
