// What an AT-SPI object tells of itself, and how it is asked: in two rounds, because what is worth
// asking depends on what kind of object it is.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/atspi/wire/codec.h"

namespace tarqo::lnx {

/// The toolkits whose peculiarities are known. `other` is treated as doing what AT-SPI says.
enum class Toolkit { gtk3, gtk4, qt, chromium, other };

/// The toolkit behind the name and version that an application gives.
[[nodiscard]] Toolkit toolkitNamed(std::string_view name, std::string_view version);

/// Things to learn of an object, one bit each.
enum class Fact : unsigned {
  look = 1U << 0,        ///< Role and states: always asked.
  interfaces = 1U << 1,  ///< Asked with whatever depends on them.
  kind = look | interfaces,
  name = 1U << 2,
  description = 1U << 3,
  identifier = 1U << 4,
  attributes = 1U << 5,
  parent = 1U << 6,
  children = 1U << 7,
  extents = 1U << 8,
  actions = 1U << 9,
  value = 1U << 10,   ///< Whatever its role's value is made of.
  address = 1U << 11  ///< Of a web page.
};

class FactSet {
 public:
  FactSet() = default;
  FactSet(Fact fact) : bits_(static_cast<unsigned>(fact)) {}  // NOLINT(google-explicit-constructor)

  [[nodiscard]] bool has(Fact fact) const { return hasAll(fact); }
  [[nodiscard]] bool hasAll(FactSet other) const { return (bits_ & other.bits_) == other.bits_; }
  void add(FactSet other) { bits_ |= other.bits_; }
  [[nodiscard]] FactSet without(FactSet other) const { return FactSet(bits_ & ~other.bits_); }
  friend FactSet operator|(FactSet a, FactSet b) { return FactSet(a.bits_ | b.bits_); }

 private:
  explicit FactSet(unsigned bits) : bits_(bits) {}

  unsigned bits_ = 0;
};

inline FactSet operator|(Fact a, Fact b) { return FactSet(a) | FactSet(b); }

/// What was learnt. `known` tells what was asked; of that, what the object did not answer is empty.
struct AtspiFacts {
  FactSet known;
  bool alive = false;  ///< It told its role.
  std::uint32_t role = 0;
  AtspiStates states;
  AtspiInterfaces interfaces;
  std::string name;
  std::string description;
  std::string identifier;
  AtspiAttributes attributes;
  std::optional<AtspiRef> parent;
  std::optional<std::vector<AtspiRef>> children;
  std::optional<int> childCount;  ///< Told by the way by some toolkits.
  std::optional<Rect> extents;    ///< As told, in the coordinates the toolkit is asked for.
  std::vector<std::string> actions;
  std::optional<std::string> text;
  std::optional<double> number;
  std::string address;

  [[nodiscard]] bool is(AtspiRole which) const { return role == static_cast<std::uint32_t>(which); }
  [[nodiscard]] bool has(AtspiState state) const { return states.has(state); }
  [[nodiscard]] bool has(AtspiInterface which) const { return interfaces.has(which); }

  /// The value of an attribute; null when there is none.
  [[nodiscard]] const std::string* attribute(std::string_view key) const;
};

struct FactRequest {
  AtspiRef ref;
  Toolkit toolkit = Toolkit::other;
  FactSet wanted;
  /// Leaves out children that are not shown, where asking for the others costs less: what a long
  /// list has scrolled away.
  bool onlyShownChildren = false;
};

/// Asks, within a batch, for those of the facts wanted that are not known yet. `done` is called
/// from the batch's run when all have been answered, or never. `facts` is kept alive until then.
void askFacts(AtspiBatch& batch, const FactRequest& request, std::shared_ptr<AtspiFacts> facts,
              std::function<void()> done);

/// Whether the toolkit says that the object is on the screen.
[[nodiscard]] bool isShowing(const AtspiFacts& facts, Toolkit toolkit);

}  // namespace tarqo::lnx
