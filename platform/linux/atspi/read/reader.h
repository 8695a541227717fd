// Reads the properties of objects: live, each read bounded by its application's messaging time-out,
// or from what was read ahead while a tree is being read.
//
// Worker thread only.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/read/late_objects.h"
#include "platform/linux/atspi/read/read_ahead.h"
#include "platform/linux/atspi/read/registry.h"
#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/translate/window_matching.h"
#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/atspi/wire/object_handle.h"
#include "platform/linux/base/backoff.h"

namespace tarqo::lnx::atspi {

using PropertiesPtr = std::shared_ptr<const Properties>;

class Reader {
 public:
  /// Both are kept and outlive this.
  Reader(Bus& bus, x11::WindowLocator& locator)
      : bus_(bus), registry_(bus), locator_(locator), late_(bus.clock()) {}

  /// What an object reports; null when it is gone, does not answer, or was not read before the
  /// reading ahead of this scope ended.
  [[nodiscard]] PropertiesPtr read(const ObjectHandle& object, PropertySet wanted);

  /// The same for several objects of one application in one batch: one slot each, in order.
  [[nodiscard]] std::vector<PropertiesPtr> readAll(std::span<const ObjectHandle> objects,
                                                   PropertySet wanted);

  /// The top-level objects of a process with their windows, and its windows without an object.
  /// While a new window may still get its object, that is waited for, once for each window and for
  /// 1.5 s at most (`LateObjects`).
  [[nodiscard]] const ApplicationWindows& windowsOf(Pid pid, Duration patience);

  /// What a window reported before its application stopped answering; null when it answers, and
  /// when the object is no window.
  [[nodiscard]] PropertiesPtr propertiesOfSilentWindow(const ObjectHandle& object);

  /// The top-level object that an object lies in; empty when it cannot be found, or not within one
  /// messaging time-out: the answers of an application that is slow, but in time, add up.
  [[nodiscard]] std::optional<Toplevel> toplevelOf(const ObjectHandle& object);

  /// `other` when the application does not answer.
  [[nodiscard]] Toolkit toolkitOf(const ObjectHandle& object);

  /// In a tree read: reads ahead from an object that the walk has reached.
  void readAheadFrom(const ObjectHandle& object);

  /// Runs one batch of requests, which `fill` adds; false when an answer did not come in time or
  /// the connection failed.
  bool request(const ObjectHandle& object, const std::function<void(Batch&)>& fill);

  [[nodiscard]] Bus& bus() { return bus_; }
  [[nodiscard]] Registry& registry() { return registry_; }
  [[nodiscard]] x11::WindowLocator& locator() { return locator_; }
  [[nodiscard]] Clock& clock() { return bus_.clock(); }

  /// Forgets what holds only for the length of one call of the service: where the windows are.
  void beginCall() { windowsThisCallPid_ = 0; }

  /// The scope of `Accessibility::readTree`.
  [[nodiscard]] std::unique_ptr<TreeRead> readTree(const ObjectHandle& window,
                                                   const TreeReadLimits& limits);

 private:
  class Scope;

  [[nodiscard]] ReadAhead* readAheadOf(Pid pid);
  [[nodiscard]] std::vector<ObjectHandle> topLevelObjects(Pid pid, Duration patience);
  [[nodiscard]] std::vector<Toplevel> reportedToplevels(Pid pid, Duration patience);
  [[nodiscard]] ApplicationWindows paired(Pid pid, const std::vector<Toplevel>& toplevels,
                                          Duration patience);
  [[nodiscard]] std::optional<Ref> activeTwin(Pid pid, const Twins& twins, WindowNumber focused,
                                              Duration patience);
  [[nodiscard]] std::vector<Ref> activeAmong(Pid pid, const std::vector<Ref>& objects,
                                             Duration patience);
  [[nodiscard]] bool failed(Pid pid);
  void noteFailure(Pid pid);
  [[nodiscard]] BatchLimits limitsFor(const ObjectHandle& object);

  Bus& bus_;
  Registry registry_;
  x11::WindowLocator& locator_;
  LateObjects late_;
  std::shared_ptr<ReadAhead> readAhead_;
  std::unordered_map<Pid, Backoff> silent_;               ///< Who failed to answer.
  std::unordered_map<Pid, std::vector<Toplevel>> known_;  ///< As last reported, without windows.
  /// Which of several twins is which does not change while they live.
  std::unordered_map<Pid, std::vector<ProvenPair>> proven_;
  Pid windowsThisCallPid_ = 0;
  bool objectsAwaited_ = false;  ///< The object of a new window may still come.
  ApplicationWindows windowsThisCall_;
};

}  // namespace tarqo::lnx::atspi
