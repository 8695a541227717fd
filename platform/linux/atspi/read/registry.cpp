#include "platform/linux/atspi/read/registry.h"

namespace tarqo::lnx::atspi {
namespace {

/// How long the name of the toolkit is not requested again from an application that had none.
constexpr auto kNameless = std::chrono::seconds(1);

}  // namespace

void Registry::forgetAfterReconnect() {
  // A new bus counts its names from the start again.
  static_cast<void>(bus_.connection());
  if (generation_ != bus_.generation()) {
    generation_ = bus_.generation();
    pids_.clear();
    toolkits_.clear();
    nameless_.clear();
    channelName_.clear();
    channel_.reset();
  }
}

void Registry::requestPids(const std::vector<Ref>& roots, Duration patience) {
  Batch batch(bus_);
  for (const Ref& root : roots) {
    if (pids_.contains(root.bus)) {
      continue;
    }
    Message message = batch.make({"org.freedesktop.DBus", "/org/freedesktop/DBus"},
                                 "org.freedesktop.DBus", "GetConnectionUnixProcessID");
    if (message) {
      sd_bus_message_append(message.get(), "s", root.bus.c_str());
    }
    batch.send(std::move(message), [this, name = root.bus](Reply reply) {
      if (const auto pid = reply.ok ? readNumber(reply.message) : std::nullopt) {
        pids_[name] = static_cast<Pid>(*pid);
      }
    });
  }
  static_cast<void>(batch.run({bus_.clock().now() + patience, patience}));
}

std::vector<Registration> Registry::registrationsOf(Pid pid, Duration patience) {
  forgetAfterReconnect();
  std::vector<Ref> roots;
  Batch batch(bus_);
  batch.call(registryRoot(), kAccessible, "GetChildren", [&roots](Reply reply) {
    if (auto children = reply.ok ? readRefs(reply.message) : std::nullopt) {
      roots = *std::move(children);
    }
  });
  static_cast<void>(batch.run({bus_.clock().now() + patience, patience}));
  requestPids(roots, patience);
  std::vector<Registration> result;
  for (const Ref& root : roots) {
    const auto found = pids_.find(root.bus);
    if (found != pids_.end() && found->second == pid) {
      result.push_back({root, pid});
    }
  }
  return result;
}

std::optional<Toolkit> Registry::toolkitOf(const std::string& busName, Duration patience) {
  forgetAfterReconnect();
  if (const std::optional<Toolkit> known = knownToolkitOf(busName)) {
    return known;
  }
  const auto nameless = nameless_.find(busName);
  if (nameless != nameless_.end() && nameless->second.isRunning(bus_.clock().now())) {
    return Toolkit::other;
  }
  std::optional<std::string> name;
  std::string version;
  Batch batch(bus_);
  const Ref root{busName, kRootPath};
  batch.property(root, kApplication, "ToolkitName", [&name](Reply reply) {
    name = reply.ok ? readVariantText(reply.message) : std::nullopt;
  });
  batch.property(root, kApplication, "Version", [&version](Reply reply) {
    version = reply.ok ? readVariantText(reply.message).value_or("") : "";
  });
  if (batch.run({bus_.clock().now() + patience, patience}) != BatchOutcome::complete) {
    return std::nullopt;
  }
  if (!name || name->empty()) {
    nameless_[busName].start(bus_.clock().now(), kNameless);
    return Toolkit::other;
  }
  return toolkits_[busName] = toolkitNamed(*name, version);
}

std::optional<Toolkit> Registry::knownToolkitOf(const std::string& busName) const {
  const auto known = toolkits_.find(busName);
  return known == toolkits_.end() ? std::nullopt : std::optional(known->second);
}

Bus& Registry::channelTo(const std::string& busName, Toolkit toolkit, Duration patience) {
  // The bus costs GTK 3 as much time again as its answers do, and Chromium half of it; the others
  // take long enough over them.
  if (toolkit != Toolkit::gtk3 && toolkit != Toolkit::chromium) {
    return bus_;
  }
  if (channelName_ != busName) {
    std::string address;
    Batch batch(bus_);
    batch.call({busName, kRootPath}, kApplication, "GetApplicationBusAddress",
               [&address](Reply reply) {
                 address = (reply.ok ? readText(reply.message) : std::nullopt).value_or("");
               });
    if (batch.run({bus_.clock().now() + patience, patience}) != BatchOutcome::complete) {
      return bus_;
    }
    channelName_ = busName;
    const auto pid = pids_.find(busName);
    const bool offered = !address.empty() && pid != pids_.end();
    channel_ =
        offered ? std::make_unique<Bus>(PeerAddress{std::move(address), pid->second}, bus_.clock())
                : nullptr;
  }
  return channel_ && channel_->connection() != nullptr ? *channel_ : bus_;
}

}  // namespace tarqo::lnx::atspi
