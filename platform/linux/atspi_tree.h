// What was read ahead of one application's tree while the core walks it.
//
// The core walks a tree in order of appearance, element by element. Asking in the same manner would
// cost several round trips an element, so whole stretches of the tree are asked for at once, in
// about the order of the walk, as soon as the walk reaches an element that is not there yet.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi_bus.h"
#include "platform/linux/atspi_element.h"
#include "platform/linux/atspi_facts.h"
#include "platform/linux/atspi_windows.h"

namespace tarqo::lnx {

/// Everything the core asks of an element that it walks over.
[[nodiscard]] FactSet factsReadAhead();

class AtspiTree {
 public:
  AtspiTree(Pid pid, const TreeReadLimits& limits) : pid_(pid), limits_(limits) {}

  [[nodiscard]] Pid pid() const { return pid_; }
  [[nodiscard]] Instant deadline() const { return limits_.deadline; }

  /// Whether the application failed to answer in time; then nobody asks it again in this scope.
  [[nodiscard]] bool failed() const { return failed_; }
  void fail() { failed_ = true; }

  /// The facts of an object, as far as they are known; made when there are none.
  [[nodiscard]] const std::shared_ptr<AtspiFacts>& factsOf(const AtspiRef& ref);

  /// Reads the stretch of the tree that begins with `object`, unless it was read before, through a
  /// connection to its application.
  void readAhead(const AtspiElement::Parts& object, Toolkit toolkit, AtspiBus& channel);

  std::optional<ApplicationWindows> windows;  ///< As they were when first asked for.

 private:
  struct Node {
    AtspiRef ref;
    bool whole = false;          ///< Also what is not shown: inside a menu bar.
    std::optional<Rect> clip{};  ///< As in `AtspiElement::Parts`.
  };
  struct Stretch;

  void start(Stretch& stretch);
  void open(Stretch& stretch, const Node& node);
  void lookKnown(Stretch& stretch, const Node& node, const std::shared_ptr<AtspiFacts>& facts);
  void placeKnown(Stretch& stretch, const Node& node, const std::shared_ptr<AtspiFacts>& facts);
  void askAll(Stretch& stretch, const Node& node, const std::shared_ptr<AtspiFacts>& facts);
  void passBy(Stretch& stretch, AtspiFacts& facts);
  void readCache(const AtspiElement::Parts& object, AtspiBus& channel);

  Pid pid_;
  TreeReadLimits limits_;
  bool failed_ = false;
  bool cacheTried_ = false;
  std::optional<Rect> window_;  ///< Where the toolkit tells places inside the window.
  std::unordered_map<AtspiRef, std::shared_ptr<AtspiFacts>, AtspiRefHash> facts_;
  std::vector<Node> ahead_;  ///< Known of, not asked yet; the last is the next in the walk.
};

}  // namespace tarqo::lnx
