// What was read ahead of one application's tree while the core walks it.
//
// The core walks a tree in order of appearance, element by element. Requests in the same manner
// would cost several round trips an element, so whole stretches of the tree are requested at once,
// in about the order of the walk, as soon as the walk reaches an element that is not there yet.
//
// Reading ahead ends when the application fails to answer, and some time before the walk must end.
// From then on the walk gets what was read until then, and nothing more is requested.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/translate/window_matching.h"
#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/atspi/wire/object_handle.h"

namespace tarqo::lnx::atspi {

/// Everything the core reads of an element that it walks over.
[[nodiscard]] PropertySet propertiesReadAhead();

/// One per scope of `Accessibility::readTree`. Worker thread only.
class ReadAhead {
 public:
  /// `clock` is kept and outlives this.
  ReadAhead(const ObjectHandle& root, const TreeReadLimits& limits, Clock& clock);

  [[nodiscard]] Pid pid() const { return pid_; }

  /// Whether reading ahead has ended, maybe with objects left unread.
  [[nodiscard]] bool ended() const { return ended_; }

  /// Whether nothing more may be requested of the application.
  [[nodiscard]] bool closed() const { return closed_; }

  /// Ends it for good: the walk gets what was read until now.
  void end() { ended_ = closed_ = true; }

  /// Ends it for good: what was not read may be requested live again.
  void readLive() {
    ended_ = true;
    closed_ = false;
  }

  /// The properties of an object, as far as they are known; empty ones for a new object.
  [[nodiscard]] const std::shared_ptr<Properties>& propertiesOf(const Ref& ref);

  /// Reads the stretch of the tree that begins with `object`, unless it was read before, through a
  /// connection to its application. The root is read however little time is left: then this waits
  /// for at most its messaging time-out.
  void readFrom(const ObjectHandle& object, Toolkit toolkit, Bus& channel);

  std::optional<ApplicationWindows> windows;  ///< As they were when first read.

 private:
  struct Node {
    Ref ref;
    bool whole = false;          ///< Also what is not shown: inside a menu bar.
    std::optional<Rect> clip{};  ///< As in `ObjectHandle`.
  };
  struct Stretch;

  [[nodiscard]] bool isOver() const;
  void start(Stretch& stretch);
  void open(Stretch& stretch, const Node& node);
  void onRoleAndStates(Stretch& stretch, const Node& node,
                       const std::shared_ptr<Properties>& properties);
  void onExtents(Stretch& stretch, const Node& node, const std::shared_ptr<Properties>& properties);
  void requestAll(Stretch& stretch, const Node& node,
                  const std::shared_ptr<Properties>& properties);
  void skip(Stretch& stretch, Properties& properties);
  void readCache(const ObjectHandle& object, Bus& channel);

  Clock& clock_;
  Pid pid_;
  Ref root_;
  std::size_t elements_;  ///< About as many as the walk will visit.
  Instant openUntil_;     ///< From then on no further object is read.
  Instant answersUntil_;  ///< From then on what has not answered is given up.
  bool ended_ = false;
  bool closed_ = false;
  bool cacheTried_ = false;
  std::optional<Rect> window_;  ///< Its extents, where places are inside it (GTK 4).
  std::unordered_map<Ref, std::shared_ptr<Properties>, RefHash> properties_;
  std::vector<Node> ahead_;  ///< Not read yet; the last is the next in the walk.
};

}  // namespace tarqo::lnx::atspi
