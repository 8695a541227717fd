#include "tests/platform/mac/standin/desktop_elements.h"

#include <array>
#include <utility>
#include <variant>

#include "tests/platform/mac/standin/ax_element.h"
#include "tests/platform/mac/standin/ax_observers.h"
#include "tests/platform/mac/standin/desktop_values.h"
#include "tests/platform/mac/standin/run_loop.h"

namespace standin {

using tarqo::Duration;
using tarqo::Performed;

namespace {

/// As long as the system waits when nobody limits it.
constexpr std::chrono::seconds kSystemsOwnLimit(6);

Duration durationOf(float seconds) {
  return seconds > 0 ? std::chrono::duration_cast<Duration>(std::chrono::duration<float>(seconds))
                     : Duration(kSystemsOwnLimit);
}

}  // namespace

std::string DesktopElement::description() const { return "element of " + std::to_string(pid()); }

void DesktopElement::limit(float seconds) {
  AxElement::limit(seconds);
  if (isApplication_) {
    element_ = onDesktop([&](const tarqo::Platform& platform) {
      return std::optional(platform.accessibility.application(pid(), durationOf(seconds)));
    });
  }
}

bool DesktopElement::same(const AxElement& other) const {
  const auto* theirs = dynamic_cast<const DesktopElement*>(&other);
  return theirs != nullptr && element_ && theirs->element_ && *element_ == *theirs->element_;
}

template <typename Ask>
auto DesktopElement::ask(const Ask& question) const
    -> decltype(question(std::declval<tarqo::Accessibility&>(),
                         std::declval<const tarqo::Element&>())) {
  using Result = decltype(question(std::declval<tarqo::Accessibility&>(), *element_));
  return onDesktop([&](const tarqo::Platform& platform) {
    return element_ ? question(platform.accessibility, *element_) : Result();
  });
}

Answer DesktopElement::read(const std::string& name) {
  const auto value = ask([&](tarqo::Accessibility& all, const tarqo::Element& element) {
    return all.attribute(element, name);
  });
  return value ? Answer{kAXErrorSuccess, objectOf(*value)} : Answer{kAXErrorNoValue, {}};
}

Answer DesktopElement::readMany(const std::vector<std::string>& names) {
  const std::vector<std::string_view> wanted(names.begin(), names.end());
  const auto values = ask([&](tarqo::Accessibility& all, const tarqo::Element& element) {
    return all.attributes(element, wanted);
  });
  if (values.size() != names.size()) {
    return {kAXErrorCannotComplete, {}};
  }
  std::vector<Owned> slots;
  for (const auto& value : values) {
    slots.push_back(value ? objectOf(*value) : axError(kAXErrorNoValue));
  }
  return {kAXErrorSuccess, array(slots)};
}

Answer DesktopElement::actionNames() {
  const auto names = ask([](tarqo::Accessibility& all, const tarqo::Element& element) {
    return all.actionNames(element);
  });
  std::vector<Owned> texts;
  for (const std::string& name : names) {
    texts.push_back(text(name));
  }
  return {kAXErrorSuccess, array(texts)};
}

AXError DesktopElement::perform(const std::string& action) {
  const auto performed = ask([&](tarqo::Accessibility& all, const tarqo::Element& element) {
    return all.perform(element, action);
  });
  switch (performed) {
    case Performed::refused:
      return kAXErrorActionUnsupported;
    case Performed::pending:
      return kAXErrorCannotComplete;
    case Performed::taken:
    case Performed::acknowledged:
      break;
  }
  return kAXErrorSuccess;
}

Answer DesktopElement::settable(const std::string& name) {
  const bool can = ask([&](tarqo::Accessibility& all, const tarqo::Element& element) {
    return all.isSettable(element, name);
  });
  return {kAXErrorSuccess, boolean(can)};
}

AXError DesktopElement::set(const std::string& name, CFTypeRef value) {
  const bool taken = ask([&](tarqo::Accessibility& all, const tarqo::Element& element) {
    return all.set(element, name, valueOf(value));
  });
  return taken ? kAXErrorSuccess : kAXErrorAttributeUnsupported;
}

AXError DesktopElement::pidError() const {
  return pid() > 0 ? kAXErrorSuccess : kAXErrorInvalidUIElement;
}

AXUIElementRef desktopApplication(pid_t pid) {
  auto* made = Heap::instance().make<DesktopElement>(pid, std::nullopt, true);
  made->limit(0);
  return toRef<AXUIElementRef>(made);
}

AXError desktopHit(float x, float y, AXUIElementRef* element) {
  const auto hit = onDesktop([&](const tarqo::Platform& platform) {
    return platform.accessibility.elementAt({x, y});
  });
  if (!hit) {
    return kAXErrorNoValue;
  }
  const Owned object = objectOf(tarqo::Value{*hit});
  *element = static_cast<AXUIElementRef>(CFRetain(object.get()));
  return kAXErrorSuccess;
}

DesktopObserver::DesktopObserver() = default;
DesktopObserver::DesktopObserver(DesktopObserver&& other) noexcept = default;
DesktopObserver& DesktopObserver::operator=(DesktopObserver&& other) noexcept = default;
DesktopObserver::~DesktopObserver() = default;

bool DesktopObserver::begin(pid_t pid) {
  observer_ = onDesktop([&](const tarqo::Platform& platform) {
    return platform.accessibility.observe(pid, [pid](std::string_view heard) {
      // Whoever lets time pass is not the main loop, which alone calls back.
      onMainLoop([pid, notification = std::string(heard)] {
        const auto deliveries = deliveriesOf(notification, [pid](CFTypeRef element) {
          return as<AxElement>(element, "a subscription").pid() == pid;
        });
        if (deliveries.empty()) {
          return;
        }
        const auto sender = tarqo::mac::adopt(desktopApplication(pid));
        // One of them for each observer: which element it was the desktop does not say.
        const void* last = nullptr;
        for (const Delivery& each : deliveries) {
          if (std::exchange(last, each.observer.get()) != each.observer.get()) {
            deliver(each, sender.get(), notification);
          }
        }
      });
    });
  });
  return observer_ != nullptr;
}

AXError DesktopObserver::subscribe(AxElement& element, const std::string& notification) {
  const auto* its = dynamic_cast<const DesktopElement*>(&element);
  if (observer_ == nullptr || its == nullptr || !its->element()) {
    return kAXErrorInvalidUIElement;
  }
  const bool taken = onDesktop([&](const tarqo::Platform& /*platform*/) {
    return observer_->add(*its->element(), notification);
  });
  return taken ? kAXErrorSuccess : kAXErrorNotificationUnsupported;
}

void DesktopObserver::end() {
  const DesktopLock lock;
  observer_.reset();
}

}  // namespace standin
