// The backend's own part of an element: which object of which connection, and as what it was met.
#pragma once

#include <memory>
#include <optional>

#include "platform/accessibility.h"
#include "platform/linux/atspi/wire/bus.h"

namespace tarqo::lnx {

/// One AT-SPI "menu" is both the entry that is clicked and the menu that opens from it.
enum class Facet { whole, openedMenu };

/// What an entry of a menu hangs on, which decides what it is called.
enum class MenuPlace { none, bar, menu };

class AtspiElement final : public ElementObject {
 public:
  enum class Kind { application, object };

  /// `pid` and `timeout` go on to everything reached from here.
  struct Parts {
    Kind kind = Kind::object;
    Pid pid = 0;
    Duration timeout{};
    AtspiRef
        ref{};  ///< Empty for an application element: a process may have several registrations.
    Facet facet = Facet::whole;
    MenuPlace place = MenuPlace::none;
    /// Reached through the menu bar, where what is in closed menus counts as there.
    bool inMenuBar = false;
    /// The part of its window that it can show in, where places are told inside the window: the
    /// areas of what scrolls around it.
    std::optional<Rect> clip{};
    AtspiRef window{};  ///< The top-level object it was reached through; empty when not known.

    /// Whether it is that top-level object itself.
    [[nodiscard]] bool isTopLevel() const { return !ref.empty() && ref == window; }
  };

  explicit AtspiElement(Parts parts) : parts_(std::move(parts)) {}

  [[nodiscard]] const Parts& parts() const { return parts_; }
  [[nodiscard]] bool isApplication() const { return parts_.kind == Kind::application; }

  [[nodiscard]] bool same(const ElementObject& other) const override {
    const auto* theirs = dynamic_cast<const AtspiElement*>(&other);
    if (theirs == nullptr || theirs->parts_.kind != parts_.kind ||
        theirs->parts_.pid != parts_.pid) {
      return false;
    }
    return isApplication() ||
           (theirs->parts_.ref == parts_.ref && theirs->parts_.facet == parts_.facet);
  }

 private:
  Parts parts_;
};

[[nodiscard]] inline Element makeElement(AtspiElement::Parts parts) {
  return Element(std::make_shared<const AtspiElement>(std::move(parts)));
}

/// The application element of a process; calls through it wait for at most `timeout` each.
[[nodiscard]] inline Element makeApplication(Pid pid, Duration timeout) {
  return makeElement({.kind = AtspiElement::Kind::application, .pid = pid, .timeout = timeout});
}

/// The backend's part of an element; null when the element is another backend's.
[[nodiscard]] inline const AtspiElement* atspiElement(const Element& element) {
  return dynamic_cast<const AtspiElement*>(&element.object());
}

}  // namespace tarqo::lnx
