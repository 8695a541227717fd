// Which connections on the accessibility bus belong to which process. Sends requests to the
// registry and the bus; to an application only for its toolkit and its own address.
//
// Worker thread only.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/atspi/translate/properties.h"
#include "platform/linux/atspi/wire/bus.h"
#include "platform/linux/base/backoff.h"

namespace tarqo::lnx::atspi {

/// One registration of an application. A process may have several.
struct Registration {
  Ref root;
  Pid pid = 0;
};

class Registry {
 public:
  /// `bus` is kept and outlives this.
  explicit Registry(Bus& bus) : bus_(bus) {}

  /// The registrations of a process, in the registry's order; empty when it has none or the bus
  /// does not answer within `patience`.
  [[nodiscard]] std::vector<Registration> registrationsOf(Pid pid, Duration patience);

  /// The toolkit of a connection, requested once; empty while the application does not answer. One
  /// that answers without a name, as it may while it starts, is `other` for a second.
  [[nodiscard]] std::optional<Toolkit> toolkitOf(const std::string& busName, Duration patience);

  /// The same without a request; empty for a connection whose toolkit is not known yet.
  [[nodiscard]] std::optional<Toolkit> knownToolkitOf(const std::string& busName) const;

  /// The connection to read an application through: its own, past the bus, where it offers one and
  /// is the faster for it, else the bus. Requested once; the bus also while there is no answer.
  [[nodiscard]] Bus& channelTo(const std::string& busName, Toolkit toolkit, Duration patience);

 private:
  void forgetAfterReconnect();
  void requestPids(const std::vector<Ref>& roots, Duration patience);

  Bus& bus_;
  int generation_ = 0;
  std::unordered_map<std::string, Pid> pids_;  ///< Unique names are never used again.
  std::unordered_map<std::string, Toolkit> toolkits_;
  std::unordered_map<std::string, Backoff> nameless_;  ///< Had no toolkit's name.
  std::string channelName_;                            ///< Bus name that `channel_` belongs to.
  std::unique_ptr<Bus> channel_;                       ///< Null for the bus.
};

}  // namespace tarqo::lnx::atspi
