#include "platform/sim/sim_world.h"

#include <algorithm>

namespace tarqo::sim {

App* World::appOf(Pid pid) const {
  const auto found = std::find_if(apps.begin(), apps.end(), [&](const auto& app) {
    return app->pid() == pid && !app->terminated();
  });
  return found == apps.end() ? nullptr : found->get();
}

App* World::appOf(const ApplicationId& id) const {
  const auto found =
      std::find_if(apps.begin(), apps.end(), [&](const auto& app) { return app->id() == id; });
  return found == apps.end() ? nullptr : found->get();
}

std::optional<Pid> World::keyReceiver() const {
  if (keyboardGrab) {
    return keyboardGrab;
  }
  return frontmost == nullptr ? std::nullopt : std::optional(frontmost->pid());
}

void World::deliver(const App& app, const std::shared_ptr<const Identity>& element,
                    const std::string& notification) {
  // A callback may end listeners and add others.
  const std::vector<std::weak_ptr<Listener>> present = listeners;
  for (const std::weak_ptr<Listener>& each : present) {
    const std::shared_ptr<Listener> listener = each.lock();
    if (listener == nullptr || listener->pid != app.pid()) {
      continue;
    }
    const bool subscribed = listener->subscriptions.contains({nullptr, notification}) ||
                            listener->subscriptions.contains({element, notification});
    if (subscribed) {
      listener->callback(notification);
    }
  }
  std::erase_if(listeners, [](const auto& each) { return each.expired(); });
}

}  // namespace tarqo::sim
