// How long an accessible object is waited for that shows a window of its application: toolkits
// register their windows a moment after the X server shows them, some seconds after, or never.
#pragma once

#include <unordered_map>
#include <vector>

#include "platform/clock.h"
#include "platform/linux/x11/window_locator.h"
#include "platform/process_id.h"

namespace tarqo::lnx::atspi {

class LateObjects {
 public:
  /// `clock` is kept and outlives this.
  explicit LateObjects(Clock& clock) : clock_(clock) {}

  struct Verdict {
    std::vector<x11::LocatedWindow> bare;  ///< Those whose object need not be waited for any more.
    bool awaited = false;                  ///< The object of another may still come.
  };

  /// Judges the windows of a process that no object shows. `hasObjects`: whether objects show other
  /// windows of it. The time counts from when a window was first judged: 0.7 s at most, 1.5 s for
  /// the first window of an application that was just started, none at all for a further window of
  /// one that is known to have no objects.
  [[nodiscard]] Verdict judge(Pid pid, bool hasObjects,
                              const std::vector<x11::LocatedWindow>& windows);

 private:
  struct Seen {
    Pid pid = 0;
    Instant since;
    bool given = false;  ///< Was found to be bare.
  };

  void forgetOthers(Pid pid, const std::vector<x11::LocatedWindow>& windows);
  [[nodiscard]] Duration patienceFor(Pid pid, bool hasObjects) const;

  Clock& clock_;
  std::unordered_map<WindowNumber, Seen> seen_;
};

}  // namespace tarqo::lnx::atspi
