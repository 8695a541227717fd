#include "platform/linux/x11/screens.h"

#include <xcb/randr.h>

#include <algorithm>
#include <utility>

namespace tarqo::lnx::x11 {
namespace {

struct Monitor {
  std::uint32_t number = 0;
  Rect area;  // From the top left.
};

std::vector<Monitor> readMonitors(Server& server) {
  std::vector<Monitor> monitors;
  if (!server.extensions().randrMonitors) {
    return monitors;
  }
  const auto reply = server.take<xcb_randr_get_monitors_reply_t>(
      xcb_randr_get_monitors(server.raw(), server.root(), 1));
  if (!reply) {
    return monitors;
  }
  for (auto all = xcb_randr_get_monitors_monitors_iterator(reply.get()); all.rem > 0;
       xcb_randr_monitor_info_next(&all)) {
    const xcb_randr_monitor_info_t& each = *all.data;
    if (each.width > 0 && each.height > 0) {
      monitors.push_back(
          {each.name, Rect{static_cast<double>(each.x), static_cast<double>(each.y),
                           static_cast<double>(each.width), static_cast<double>(each.height)}});
    }
  }
  return monitors;
}

/// The whole screen, whose size may have changed since the connection was made.
std::vector<Monitor> wholeScreen(Server& server) {
  const auto geometry =
      server.take<xcb_get_geometry_reply_t>(xcb_get_geometry(server.raw(), server.root()));
  if (!geometry) {
    return {};
  }
  return {
      {0, Rect{0, 0, static_cast<double>(geometry->width), static_cast<double>(geometry->height)}}};
}

}  // namespace

std::vector<Screen> readScreens(Server& server) {
  std::vector<Monitor> monitors = readMonitors(server);
  if (monitors.empty()) {
    monitors = wholeScreen(server);
  }
  std::stable_sort(monitors.begin(), monitors.end(), [](const Monitor& a, const Monitor& b) {
    return std::pair(a.area.y, a.area.x) < std::pair(b.area.y, b.area.x);
  });
  std::vector<Screen> screens;
  for (const Monitor& monitor : monitors) {
    const double bottom = monitors.front().area.maxY();
    Rect frame = monitor.area;
    frame.y = bottom - monitor.area.maxY();
    screens.push_back({monitor.number, frame, 1.0});
  }
  return screens;
}

}  // namespace tarqo::lnx::x11
