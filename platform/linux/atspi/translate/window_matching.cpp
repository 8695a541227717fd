#include "platform/linux/atspi/translate/window_matching.h"

#include <algorithm>
#include <cmath>

#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

/// Objects and windows whose titles differ must agree to this much in every coordinate.
constexpr double kTolerance = 3;

/// The distance to every window of an object that does not report its place.
constexpr double kPlaceUnknown = 1e6;

/// The widest frame that GTK 4 draws around a window's content, on one side.
constexpr double kWidestFrame = 32;

/// Programs keep windows of a few pixels that only receive messages.
constexpr double kLeastSide = 32;

struct Pair {
  std::size_t toplevel = 0;
  std::size_t window = 0;
  bool titled = false;
  double distance = 0;
};

/// Whether neither is the likelier one.
bool areAlike(const Pair& a, const Pair& b) {
  return a.titled == b.titled && std::abs(a.distance - b.distance) <= kTolerance;
}

double distance(const Rect& a, const Rect& b, bool sizeOnly) {
  const double size = std::max(std::abs(a.width - b.width), std::abs(a.height - b.height));
  if (sizeOnly) {
    return size;
  }
  return std::max({size, std::abs(a.x - b.x), std::abs(a.y - b.y)});
}

Rect withoutShadow(const x11::LocatedWindow& window) {
  if (!window.shadow) {
    return window.client;
  }
  const x11::Insets& shadow = *window.shadow;
  return {window.client.x + shadow.left, window.client.y + shadow.top,
          window.client.width - shadow.left - shadow.right,
          window.client.height - shadow.top - shadow.bottom};
}

/// How much less even than a frame the difference between a GTK 4 window and its content is. GTK 4
/// tells nobody of the frame that it draws where there are no shadows.
double framedDistance(const Rect& content, const x11::LocatedWindow& window) {
  const double sideways = window.client.width - content.width;
  const double upright = window.client.height - content.height;
  const bool fits = std::min(sideways, upright) >= 0 &&
                    std::max(sideways, upright) <= 2 * kWidestFrame && !window.shadow;
  return fits ? std::abs(sideways - upright) : kPlaceUnknown - 1;
}

/// Toolkits report a top-level object with or without its decorations and shadows.
double resemblance(const Toplevel& toplevel, const x11::LocatedWindow& window) {
  const std::optional<Rect> extents = plausible(toplevel.properties->extents);
  if (!extents) {
    return kPlaceUnknown;
  }
  const bool sizeOnly = toplevel.toolkit == Toolkit::gtk4;
  return std::min({sizeOnly ? framedDistance(*extents, window) : kPlaceUnknown - 1,
                   distance(*extents, window.client, sizeOnly),
                   distance(*extents, window.bounds, sizeOnly),
                   distance(*extents, withoutShadow(window), sizeOnly)});
}

/// All pairs that may be, the likeliest first.
std::vector<Pair> possiblePairs(const std::vector<Toplevel>& toplevels,
                                const std::vector<x11::LocatedWindow>& windows) {
  std::vector<Pair> pairs;
  for (std::size_t t = 0; t < toplevels.size(); ++t) {
    for (std::size_t w = 0; w < windows.size(); ++w) {
      const std::string& name = toplevels[t].properties->name;
      // Popups bear the program's name, as may a window.
      const bool titled = !name.empty() && name == windows[w].title && !windows[w].overrideRedirect;
      const double apart = resemblance(toplevels[t], windows[w]);
      // An object without a title is a window only where it lies exactly: toolkits keep unused
      // ones.
      if (titled || apart <= kTolerance || apart == kPlaceUnknown) {
        pairs.push_back({t, w, titled, apart});
      }
    }
  }
  std::ranges::stable_sort(pairs, [](const Pair& a, const Pair& b) {
    return a.titled != b.titled ? a.titled : a.distance < b.distance;
  });
  return pairs;
}

/// Gives windows to objects, the likeliest pair first.
class Matching {
 public:
  Matching(std::vector<Toplevel>& toplevels, const std::vector<x11::LocatedWindow>& windows)
      : toplevels_(toplevels),
        windows_(windows),
        pairs_(possiblePairs(toplevels, windows)),
        settledToplevels_(toplevels.size()),
        settledWindows_(windows.size()) {}

  void take(const ProvenPair& proven) {
    const auto toplevel = std::ranges::find(toplevels_, proven.ref, &Toplevel::ref);
    const auto window = std::ranges::find(windows_, proven.window, &x11::LocatedWindow::number);
    if (toplevel != toplevels_.end() && window != windows_.end()) {
      assign(static_cast<std::size_t>(toplevel - toplevels_.begin()),
             static_cast<std::size_t>(window - windows_.begin()));
    }
  }

  [[nodiscard]] std::vector<Twins> run() {
    std::vector<Twins> result;
    for (const Pair& pair : pairs_) {
      if (!isOpen(pair)) {
        continue;
      }
      const std::vector<Pair> rivals = rivalsOf(pair);
      if (rivals.size() == 1) {
        assign(pair.toplevel, pair.window);
      } else {
        result.push_back(settleAsTwins(rivals));
      }
    }
    return result;
  }

 private:
  [[nodiscard]] bool isOpen(const Pair& pair) const {
    return !settledToplevels_[pair.toplevel] && !settledWindows_[pair.window];
  }

  void assign(std::size_t toplevel, std::size_t window) {
    toplevels_[toplevel].window = windows_[window];
    settledToplevels_[toplevel] = true;
    settledWindows_[window] = true;
  }

  /// The pair itself and all that are as likely and share an object or a window with it, directly
  /// or through other such pairs.
  [[nodiscard]] std::vector<Pair> rivalsOf(const Pair& pair) const {
    std::vector<Pair> rivals{pair};
    for (bool grew = true; grew;) {
      grew = false;
      for (const Pair& other : pairs_) {
        const auto touches = [&other](const Pair& rival) {
          return (rival.toplevel == other.toplevel) != (rival.window == other.window);
        };
        const auto isOther = [&other](const Pair& rival) {
          return rival.toplevel == other.toplevel && rival.window == other.window;
        };
        if (isOpen(other) && areAlike(other, pair) && std::ranges::any_of(rivals, touches) &&
            std::ranges::none_of(rivals, isOther)) {
          rivals.push_back(other);
          grew = true;
        }
      }
    }
    return rivals;
  }

  Twins settleAsTwins(const std::vector<Pair>& rivals) {
    Twins twins;
    for (const Pair& rival : rivals) {
      if (!settledToplevels_[rival.toplevel]) {
        twins.objects.push_back(toplevels_[rival.toplevel].ref);
        settledToplevels_[rival.toplevel] = true;
      }
      if (!settledWindows_[rival.window]) {
        twins.windows.push_back(windows_[rival.window].number);
        settledWindows_[rival.window] = true;
      }
    }
    return twins;
  }

  std::vector<Toplevel>& toplevels_;
  const std::vector<x11::LocatedWindow>& windows_;
  std::vector<Pair> pairs_;
  std::vector<bool> settledToplevels_;  ///< Has its window, or is a twin.
  std::vector<bool> settledWindows_;
};

/// Whether an object shows the window, or may: of twins, one does.
bool isSpokenFor(const std::vector<Toplevel>& toplevels, const std::vector<Twins>& twins,
                 const x11::LocatedWindow& window) {
  const auto isIts = [&window](const Toplevel& toplevel) {
    return toplevel.window && toplevel.window->number == window.number;
  };
  const auto isAmong = [&window](const Twins& each) {
    return std::ranges::find(each.windows, window.number) != each.windows.end();
  };
  return std::ranges::any_of(toplevels, isIts) || std::ranges::any_of(twins, isAmong);
}

}  // namespace

std::vector<Twins> matchWindows(std::vector<Toplevel>& toplevels,
                                const std::vector<x11::LocatedWindow>& windows,
                                const std::vector<ProvenPair>& proven) {
  Matching matching(toplevels, windows);
  for (const ProvenPair& pair : proven) {
    matching.take(pair);
  }
  return matching.run();
}

std::vector<Twins> pairWithWindows(std::vector<Toplevel>& toplevels,
                                   const std::vector<x11::LocatedWindow>& windows,
                                   const std::vector<ProvenPair>& proven) {
  const auto others = std::stable_partition(
      toplevels.begin(), toplevels.end(),
      [](const Toplevel& toplevel) { return isWindowRole(toplevel.properties->role); });
  std::vector<Toplevel> plain(others, toplevels.end());
  toplevels.erase(others, toplevels.end());
  std::vector<Twins> twins = matchWindows(toplevels, windows, proven);
  std::vector<x11::LocatedWindow> left;
  std::ranges::copy_if(windows, std::back_inserter(left), [&](const x11::LocatedWindow& window) {
    return !window.overrideRedirect && !isSpokenFor(toplevels, twins, window);
  });
  std::ranges::move(matchWindows(plain, left, proven), std::back_inserter(twins));
  std::ranges::copy_if(plain, std::back_inserter(toplevels),
                       [](const Toplevel& toplevel) { return toplevel.window.has_value(); });
  return twins;
}

std::vector<x11::LocatedWindow> windowsWithoutObject(
    const std::vector<Toplevel>& toplevels, const std::vector<Twins>& twins,
    const std::vector<x11::LocatedWindow>& windows) {
  std::vector<x11::LocatedWindow> bare;
  std::ranges::copy_if(windows, std::back_inserter(bare), [&](const x11::LocatedWindow& window) {
    return window.ordinary && window.bounds.width >= kLeastSide &&
           window.bounds.height >= kLeastSide && !isSpokenFor(toplevels, twins, window);
  });
  const bool hasOther =
      std::ranges::any_of(bare, [](const auto& window) { return !window.splash; }) ||
      std::ranges::any_of(toplevels, [](const Toplevel& toplevel) {
        return toplevel.window && toplevel.window->ordinary && !toplevel.window->splash;
      });
  if (hasOther) {
    std::erase_if(bare, [](const x11::LocatedWindow& window) { return window.splash; });
  }
  return bare;
}

const x11::LocatedWindow* popupOfSize(const ApplicationWindows& windows, const Rect& extents) {
  for (const x11::LocatedWindow& popup : windows.popups) {
    if (distance(extents, popup.client, true) < 1) {
      return &popup;
    }
  }
  return nullptr;
}

Point screenOffset(const Toplevel& toplevel) {
  // GTK 4 does not know where its windows are and reports places inside them.
  if (toplevel.toolkit != Toolkit::gtk4 || !toplevel.window) {
    return {};
  }
  const x11::LocatedWindow& window = *toplevel.window;
  if (window.shadow) {
    return {window.client.x + window.shadow->left, window.client.y + window.shadow->top};
  }
  // Without the property a shadow shows by the window being larger than its content, evenly.
  Point offset{window.client.x, window.client.y};
  if (const std::optional<Rect> extents = plausible(toplevel.properties->extents)) {
    offset.x += std::max(0.0, (window.client.width - extents->width) / 2);
    offset.y += std::max(0.0, (window.client.height - extents->height) / 2);
  }
  return offset;
}

}  // namespace tarqo::lnx::atspi
