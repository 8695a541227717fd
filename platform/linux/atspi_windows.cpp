#include "platform/linux/atspi_windows.h"

#include <algorithm>
#include <cmath>

#include "platform/linux/atspi_translate.h"

namespace tarqo::lnx {
namespace {

/// Objects and windows whose titles differ must agree to this much in every coordinate.
constexpr double kTolerance = 3;

struct Pair {
  std::size_t toplevel = 0;
  std::size_t window = 0;
  bool titled = false;
  double distance = 0;
};

double distance(const Rect& a, const Rect& b, bool sizeOnly) {
  const double size = std::max(std::abs(a.width - b.width), std::abs(a.height - b.height));
  if (sizeOnly) {
    return size;
  }
  return std::max({size, std::abs(a.x - b.x), std::abs(a.y - b.y)});
}

Rect withoutShadow(const LocatedWindow& window) {
  if (!window.shadow) {
    return window.client;
  }
  const Insets& shadow = *window.shadow;
  return {window.client.x + shadow.left, window.client.y + shadow.top,
          window.client.width - shadow.left - shadow.right,
          window.client.height - shadow.top - shadow.bottom};
}

/// Toolkits report a top-level object with or without its decorations and shadows.
double resemblance(const Toplevel& toplevel, const LocatedWindow& window) {
  const std::optional<Rect> extents = plausible(toplevel.facts->extents);
  if (!extents) {
    return kTolerance;
  }
  const bool sizeOnly = toplevel.toolkit == Toolkit::gtk4;
  return std::min({distance(*extents, window.client, sizeOnly),
                   distance(*extents, window.bounds, sizeOnly),
                   distance(*extents, withoutShadow(window), sizeOnly)});
}

}  // namespace

void matchWindows(std::vector<Toplevel>& toplevels, const std::vector<LocatedWindow>& windows) {
  std::vector<Pair> pairs;
  for (std::size_t t = 0; t < toplevels.size(); ++t) {
    for (std::size_t w = 0; w < windows.size(); ++w) {
      const std::string& name = toplevels[t].facts->name;
      // Popups bear the program's name, as may a window.
      const bool titled = !name.empty() && name == windows[w].title && !windows[w].overrideRedirect;
      const double apart = resemblance(toplevels[t], windows[w]);
      // An object without a title is a window only where it lies exactly: toolkits keep unused
      // ones.
      if (titled || apart <= kTolerance) {
        pairs.push_back({t, w, titled, apart});
      }
    }
  }
  std::ranges::stable_sort(pairs, [](const Pair& a, const Pair& b) {
    return a.titled != b.titled ? a.titled : a.distance < b.distance;
  });
  std::vector<bool> taken(windows.size());
  for (const Pair& pair : pairs) {
    if (!toplevels[pair.toplevel].window && !taken[pair.window]) {
      toplevels[pair.toplevel].window = windows[pair.window];
      taken[pair.window] = true;
    }
  }
}

void pairWithWindows(std::vector<Toplevel>& toplevels, const std::vector<LocatedWindow>& windows) {
  const auto others = std::stable_partition(
      toplevels.begin(), toplevels.end(),
      [](const Toplevel& toplevel) { return isWindowRole(toplevel.facts->role); });
  std::vector<Toplevel> plain(others, toplevels.end());
  toplevels.erase(others, toplevels.end());
  matchWindows(toplevels, windows);
  std::vector<LocatedWindow> left;
  std::ranges::copy_if(windows, std::back_inserter(left), [&](const LocatedWindow& window) {
    return !window.overrideRedirect &&
           std::ranges::none_of(toplevels, [&window](const Toplevel& toplevel) {
             return toplevel.window && toplevel.window->number == window.number;
           });
  });
  matchWindows(plain, left);
  std::ranges::copy_if(plain, std::back_inserter(toplevels),
                       [](const Toplevel& toplevel) { return toplevel.window.has_value(); });
}

const LocatedWindow* popupOfSize(const ApplicationWindows& windows, const Rect& extents) {
  for (const LocatedWindow& popup : windows.popups) {
    if (distance(extents, popup.client, true) < 1) {
      return &popup;
    }
  }
  return nullptr;
}

Point screenOffset(const Toplevel& toplevel) {
  // GTK 4 does not know where its windows are and tells places inside them.
  if (toplevel.toolkit != Toolkit::gtk4 || !toplevel.window) {
    return {};
  }
  const LocatedWindow& window = *toplevel.window;
  if (window.shadow) {
    return {window.client.x + window.shadow->left, window.client.y + window.shadow->top};
  }
  // Without the property a shadow shows by the window being larger than its content, evenly.
  Point offset{window.client.x, window.client.y};
  if (const std::optional<Rect> extents = plausible(toplevel.facts->extents)) {
    offset.x += std::max(0.0, (window.client.width - extents->width) / 2);
    offset.y += std::max(0.0, (window.client.height - extents->height) / 2);
  }
  return offset;
}

}  // namespace tarqo::lnx
