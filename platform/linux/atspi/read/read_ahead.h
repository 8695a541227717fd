// What was read ahead of one application's tree while the core walks it.
//
// The core walks a tree in order of appearance, element by element. Asking in the same manner would
// cost several round trips an element, so whole stretches of the tree are asked for at once, in
// about the order of the walk, as soon as the walk reaches an element that is not there yet.
//
// Reading ahead ends when the application fails to answer, and some time before the walk must end.
// From then on the walk is told what was read until then, and nobody asks the application.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/properties.h"
#include "platform/linux/atspi/translate/window_matching.h"
#include "platform/linux/atspi/wire/bus.h"

namespace tarqo::lnx {

/// Everything the core asks of an element that it walks over.
[[nodiscard]] FactSet factsReadAhead();

class AtspiTree {
 public:
  AtspiTree(const AtspiElement::Parts& root, const TreeReadLimits& limits);

  [[nodiscard]] Pid pid() const { return pid_; }

  /// Whether reading ahead has ended, maybe with objects left unread.
  [[nodiscard]] bool ended() const { return ended_; }

  /// Whether nobody may ask the application for more than was read.
  [[nodiscard]] bool closed() const { return closed_; }

  void end() { ended_ = closed_ = true; }
  void askAgain() {
    ended_ = true;
    closed_ = false;
  }

  /// The facts of an object, as far as they are known; made when there are none.
  [[nodiscard]] const std::shared_ptr<AtspiFacts>& factsOf(const AtspiRef& ref);

  /// Reads the stretch of the tree that begins with `object`, unless it was read before, through a
  /// connection to its application. The root is read however little time is left: then this waits
  /// for at most its messaging time-out.
  void readAhead(const AtspiElement::Parts& object, Toolkit toolkit, AtspiBus& channel);

  std::optional<ApplicationWindows> windows;  ///< As they were when first asked for.

 private:
  struct Node {
    AtspiRef ref;
    bool whole = false;          ///< Also what is not shown: inside a menu bar.
    std::optional<Rect> clip{};  ///< As in `AtspiElement::Parts`.
  };
  struct Stretch;

  [[nodiscard]] bool isOver() const;
  void start(Stretch& stretch);
  void open(Stretch& stretch, const Node& node);
  void lookKnown(Stretch& stretch, const Node& node, const std::shared_ptr<AtspiFacts>& facts);
  void placeKnown(Stretch& stretch, const Node& node, const std::shared_ptr<AtspiFacts>& facts);
  void askAll(Stretch& stretch, const Node& node, const std::shared_ptr<AtspiFacts>& facts);
  void passBy(Stretch& stretch, AtspiFacts& facts);
  void readCache(const AtspiElement::Parts& object, AtspiBus& channel);

  Pid pid_;
  AtspiRef root_;
  std::size_t elements_;  ///< About as many as the walk will visit.
  Instant openUntil_;     ///< From then on no further object is asked.
  Instant answersUntil_;  ///< From then on what has not answered is given up.
  bool ended_ = false;
  bool closed_ = false;
  bool cacheTried_ = false;
  std::optional<Rect> window_;  ///< Where the toolkit tells places inside the window.
  std::unordered_map<AtspiRef, std::shared_ptr<AtspiFacts>, AtspiRefHash> facts_;
  std::vector<Node> ahead_;  ///< Known of, not asked yet; the last is the next in the walk.
};

}  // namespace tarqo::lnx
