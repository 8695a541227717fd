// Asks objects for facts: live, each bounded by its application's messaging time-out, or from what
// was read ahead while a tree is being read.
//
// Worker thread only.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/read/element.h"
#include "platform/linux/atspi/read/properties.h"
#include "platform/linux/atspi/read/read_ahead.h"
#include "platform/linux/atspi/read/registry.h"
#include "platform/linux/atspi/translate/window_matching.h"
#include "platform/linux/atspi/wire/bus.h"

namespace tarqo::lnx {

using FactsPtr = std::shared_ptr<const AtspiFacts>;

class AtspiReader {
 public:
  AtspiReader(AtspiBus& bus, WindowLocator& locator)
      : bus_(bus), applications_(bus), locator_(locator) {}

  /// What an object tells; null when it is gone, does not answer, or is not among what was read
  /// before this tree read ended.
  [[nodiscard]] FactsPtr learn(const AtspiElement::Parts& object, FactSet wanted);

  /// The same for several objects of one application in one batch: one slot each, in order.
  [[nodiscard]] std::vector<FactsPtr> learnAll(std::span<const AtspiElement::Parts> objects,
                                               FactSet wanted);

  /// The top-level objects of a process with their windows.
  [[nodiscard]] const ApplicationWindows& windowsOf(Pid pid, Duration patience);

  /// What a window told before its application stopped answering; null when it answers, and when
  /// the object is no window.
  [[nodiscard]] FactsPtr factsOfSilentWindow(const AtspiElement::Parts& object);

  /// The top-level object that an object lies in; none when it cannot be found, or not within the
  /// messaging time-out: the answers of an application that is slow, but in time, add up.
  [[nodiscard]] std::optional<Toplevel> toplevelOf(const AtspiElement::Parts& object);

  /// `other` when the application does not answer.
  [[nodiscard]] Toolkit toolkitOf(const AtspiElement::Parts& object);

  /// In a tree read: reads ahead from an object that the walk has reached.
  void reach(const AtspiElement::Parts& object);

  /// Asks one thing; false when there was no answer in time or the connection failed.
  bool ask(const AtspiElement::Parts& object, const std::function<void(AtspiBatch&)>& fill);

  [[nodiscard]] AtspiBus& bus() { return bus_; }
  [[nodiscard]] AtspiApplications& applications() { return applications_; }
  [[nodiscard]] WindowLocator& locator() { return locator_; }

  /// Forgets what holds only for the length of one call of the service: where the windows are.
  void beginCall() { momentPid_ = 0; }

  /// The scope of `Accessibility::readTree`.
  [[nodiscard]] std::unique_ptr<TreeRead> readTree(const AtspiElement::Parts& window,
                                                   const TreeReadLimits& limits);

 private:
  class Scope;

  [[nodiscard]] AtspiTree* treeOf(Pid pid);
  [[nodiscard]] std::vector<AtspiElement::Parts> topLevelObjects(Pid pid, Duration patience);
  [[nodiscard]] ApplicationWindows paired(Pid pid, const std::vector<Toplevel>& toplevels,
                                          Duration patience);
  [[nodiscard]] std::optional<AtspiRef> activeTwin(Pid pid, const Twins& twins,
                                                   WindowNumber focused, Duration patience);
  [[nodiscard]] std::vector<AtspiRef> activeAmong(Pid pid, const std::vector<AtspiRef>& objects,
                                                  Duration patience);
  [[nodiscard]] bool failed(Pid pid);
  void noteFailure(Pid pid);
  [[nodiscard]] BatchLimits limitsFor(const AtspiElement::Parts& object);

  AtspiBus& bus_;
  AtspiApplications applications_;
  WindowLocator& locator_;
  std::shared_ptr<AtspiTree> tree_;
  std::unordered_map<Pid, Instant> silentUntil_;          ///< Who failed to answer.
  std::unordered_map<Pid, std::vector<Toplevel>> known_;  ///< As last told, without places.
  /// Which of several twins is which does not change while they live.
  std::unordered_map<Pid, std::vector<ProvenPair>> proven_;
  Pid momentPid_ = 0;
  ApplicationWindows moment_;
};

}  // namespace tarqo::lnx
