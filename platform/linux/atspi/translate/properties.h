// What AT-SPI objects report of themselves.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/atspi/translate/tables.h"
#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/atspi/wire/codec.h"

namespace tarqo::lnx::atspi {

/// The toolkits whose peculiarities are known. `other` is taken to follow AT-SPI.
enum class Toolkit { gtk3, gtk4, qt, chromium, gecko, other };

/// The toolkit behind the name and version that an application gives.
[[nodiscard]] Toolkit toolkitNamed(std::string_view name, std::string_view version);

/// A text without the marks that stand in it for objects (U+FFFC) or for nothing: Gecko puts a
/// U+FEFF after every emoji.
[[nodiscard]] std::string withoutMarks(std::string text);

/// What can be requested of an object, one bit each.
enum class Property : unsigned {
  roleAndStates = 1U << 0,  ///< Always requested.
  interfaces = 1U << 1,     ///< Requested with the properties that depend on them.
  basics = roleAndStates | interfaces,
  name = 1U << 2,
  description = 1U << 3,
  identifier = 1U << 4,
  attributes = 1U << 5,
  parent = 1U << 6,
  children = 1U << 7,
  extents = 1U << 8,
  actions = 1U << 9,
  value = 1U << 10,   ///< The text or the number that the value of its role is made of.
  address = 1U << 11  ///< Of a web page.
};

class PropertySet {
 public:
  PropertySet() = default;
  // Implicit, so that one property stands for the set of it.
  PropertySet(Property one)
      : bits_(static_cast<unsigned>(one)) {}  // NOLINT(google-explicit-constructor)

  [[nodiscard]] bool has(Property one) const { return hasAll(one); }
  [[nodiscard]] bool hasAll(PropertySet other) const {
    return (bits_ & other.bits_) == other.bits_;
  }
  void add(PropertySet other) { bits_ |= other.bits_; }
  [[nodiscard]] PropertySet without(PropertySet other) const {
    return PropertySet(bits_ & ~other.bits_);
  }
  friend PropertySet operator|(PropertySet a, PropertySet b) {
    return PropertySet(a.bits_ | b.bits_);
  }

 private:
  explicit PropertySet(unsigned bits) : bits_(bits) {}

  unsigned bits_ = 0;
};

inline PropertySet operator|(Property a, Property b) { return PropertySet(a) | PropertySet(b); }

/// What an object reported. `known`: the properties that were requested. A requested property
/// without an answer is empty.
struct Properties {
  PropertySet known;
  bool alive = false;  ///< It reported its role.
  std::uint32_t role = 0;
  States states;
  Interfaces interfaces;
  std::string name;
  std::string label;  ///< The name of what labels a field that has none itself, or a choice.
  std::string description;
  std::string identifier;
  Attributes attributes;
  std::optional<Ref> parent;
  std::optional<std::vector<Ref>> children;
  std::optional<int> childCount;  ///< Reported along with other properties by some toolkits.
  std::optional<Rect>
      extents;  ///< As reported: inside the window in GTK 4, on the screen elsewhere.
  /// Whether it holds the middle of its extents, requested with them in GTK 4 alone.
  std::optional<bool> drawn;
  std::vector<std::string> actions;
  std::optional<std::string> text;
  std::optional<double> number;
  std::string address;

  [[nodiscard]] bool is(Role which) const { return role == static_cast<std::uint32_t>(which); }
  [[nodiscard]] bool has(State state) const { return states.has(state); }
  [[nodiscard]] bool has(Interface which) const { return interfaces.has(which); }

  /// The value of an attribute; null when the object has no such attribute.
  [[nodiscard]] const std::string* attribute(std::string_view key) const;
};

}  // namespace tarqo::lnx::atspi
