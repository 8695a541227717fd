#include "tests/contract/contract_fixture.h"

#include <algorithm>
#include <stdexcept>

namespace tarqo::contract {

using namespace std::chrono_literals;

bool Contract::waitUntil(const std::function<bool()>& holds, Duration limit) const {
  const Instant deadline = clock.now() + limit;
  while (!holds()) {
    if (clock.now() >= deadline) {
      return false;
    }
    clock.runLoopFor(20ms);
  }
  return true;
}

std::vector<Element> Contract::elements(const Element& element, std::string_view name) const {
  std::vector<Element> result;
  for (const Value& value : read<Values>(element, name).value_or(Values{})) {
    if (const auto* each = value.as<Element>()) {
      result.push_back(*each);
    }
  }
  return result;
}

std::optional<Rect> Contract::frame(const Element& element) const {
  const auto position = read<Point>(element, "AXPosition");
  const auto size = read<Size>(element, "AXSize");
  if (!position || !size) {
    return std::nullopt;
  }
  return Rect{position->x, position->y, size->width, size->height};
}

void TargetContract::SetUp() {
  target = backend->startTarget("Contract", {120, 100, 640, 480});
  ASSERT_NE(target, nullptr);
  ASSERT_TRUE(waitUntil([&] {
    const std::vector<Element> windows = elements(application(), "AXWindows");
    if (!windows.empty()) {
      window_ = windows.front();
    }
    return window_.has_value();
  })) << "the target shows no window";
  bringToFront(*target);
}

std::vector<Element> TargetContract::tree(const Element& root) const {
  std::vector<Element> found{root};
  for (std::size_t i = 0; i < found.size(); ++i) {
    const std::vector<Element> children = elements(found[i], "AXChildren");
    found.insert(found.end(), children.begin(), children.end());
  }
  return found;
}

Element TargetContract::control(std::string_view role, std::string_view name) const {
  for (const Element& element : tree(window())) {
    if (text(element, "AXRole") != role) {
      continue;
    }
    for (const char* attribute : {"AXTitle", "AXDescription", "AXValue"}) {
      if (text(element, attribute) == name) {
        return element;
      }
    }
  }
  throw std::runtime_error("the target has no " + std::string(role) + " \"" + std::string(name) +
                           "\"");
}

std::string TargetContract::status() const {
  for (const Element& element : tree(window())) {
    std::string value = text(element, "AXValue");
    if (text(element, "AXRole") == "AXStaticText" && value.starts_with("Status: ")) {
      return value;
    }
  }
  return "";
}

std::optional<RunningApplication> TargetContract::running(const ContractTarget& which) const {
  return platform.workspace.runningApplication(which.pid());
}

void TargetContract::bringToFront(const ContractTarget& which) const {
  const auto application = running(which);
  ASSERT_TRUE(application) << "the target is no application";
  // As the product does: from macOS 14 on `activate` alone is a request, which may be refused.
  const Element element = ax.application(which.pid(), kMessagingTimeout);
  (void)ax.set(element, "AXFrontmost", Value{true});
  platform.workspace.activate(application->id);
  ASSERT_TRUE(waitUntil([&] { return platform.workspace.frontmostApplication() == which.pid(); }));
}

std::optional<WindowInfo> TargetContract::serverWindow(const ContractTarget& which) const {
  const auto windows = platform.windowServer.windows(WindowList::onScreenAboveDesktop);
  const auto found = std::find_if(windows.begin(), windows.end(), [&](const WindowInfo& each) {
    return each.ownerPid == which.pid() && each.layer == 0;
  });
  return found == windows.end() ? std::nullopt : std::optional(*found);
}

}  // namespace tarqo::contract
