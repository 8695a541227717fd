#include "platform/sim/sim_capture.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <utility>

namespace tarqo::sim {
namespace {

// Larger images would only cost memory; nothing real is that large.
constexpr double kLargestSidePx = 16384;

int pixelsFor(double points, double scale) {
  const double pixels = points * scale;
  return std::isfinite(pixels) ? static_cast<int>(std::clamp(pixels, 1.0, kLargestSidePx)) : 1;
}

Rect scaled(const Rect& area, double scale) {
  return {area.minX() * scale, area.minY() * scale, area.extentX() * scale, area.extentY() * scale};
}

std::string areaText(const Rect& area) {
  return numberText(area.x) + "," + numberText(area.y) + " " + numberText(area.width) + "x" +
         numberText(area.height);
}

}  // namespace

std::optional<Image> ScreenCaptureService::render(const ServerWindow& window, double scale) const {
  if (!window.info.bounds) {
    return std::nullopt;
  }
  const Rect& bounds = *window.info.bounds;
  png::Bgrx pixels =
      filled(pixelsFor(bounds.extentX(), scale), pixelsFor(bounds.extentY(), scale), window.fill);
  for (const auto& [area, colour] : window.drawings) {
    paint(pixels, scaled(area, scale), colour);
  }
  return imageOf(std::move(pixels));
}

Image ScreenCaptureService::renderArea(const Rect& area, double scale) const {
  png::Bgrx pixels =
      filled(pixelsFor(area.extentX(), scale), pixelsFor(area.extentY(), scale), Colour{});
  const std::vector<ServerWindow*> windows = world_.windows.shown();
  for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
    const WindowInfo& info = (*window)->info;
    if (!info.bounds || info.alpha.value_or(1) <= 0) {
      continue;
    }
    const auto inArea = [&](const Rect& rect) {
      return scaled(
          {rect.minX() - area.minX(), rect.minY() - area.minY(), rect.extentX(), rect.extentY()},
          scale);
    };
    paint(pixels, inArea(*info.bounds), (*window)->fill);
    for (const auto& [drawing, colour] : (*window)->drawings) {
      const Rect onScreen{info.bounds->minX() + drawing.x, info.bounds->minY() + drawing.y,
                          drawing.width, drawing.height};
      paint(pixels, inArea(onScreen.intersection(*info.bounds)), colour);
    }
  }
  return imageOf(std::move(pixels));
}

std::optional<Image> ScreenCaptureService::windowImage(WindowNumber window,
                                                       WindowImageResolution resolution) {
  world_.eventLog.note(Topic::capture,
                       "window image " + std::to_string(window) +
                           (resolution == WindowImageResolution::best ? " best" : " nominal"));
  const auto scripted = windowImagesOf.find(window);
  const Reply reply = scripted == windowImagesOf.end() ? windowImages : scripted->second;
  if (reply.isNever()) {
    world_.clock.waitForever();
    return std::nullopt;
  }
  if (reply.delay() > Duration::zero()) {
    world_.clock.advance(reply.delay());
  }
  const ServerWindow* found = world_.windows.find(window);
  if (!reply.hasContent() || found == nullptr || !found->info.bounds || world_.clock.stopped()) {
    return std::nullopt;
  }
  const double scale =
      resolution == WindowImageResolution::best ? world_.windows.scaleAt(*found->info.bounds) : 1;
  return render(*found, scale);
}

std::vector<ShareableWindow> ScreenCaptureService::listShareable() const {
  std::vector<ShareableWindow> result;
  for (const ServerWindow* window : world_.windows.shown()) {
    const WindowInfo& info = window->info;
    result.push_back({info.ownerPid, info.bounds.value_or(Rect{}),
                      shareableTitles ? info.title.value_or("") : ""});
  }
  return result;
}

void ScreenCaptureService::shareableWindows(ShareableWindowsCompletion completion) {
  world_.eventLog.note(Topic::capture, "shareable windows");
  if (shareable.isNever()) {
    return;
  }
  world_.clock.after(shareable.delay(), [this, completion = std::move(completion)] {
    completion(shareable.hasContent() ? std::optional(listShareable()) : std::nullopt);
  });
}

void ScreenCaptureService::displayRegion(const Screen& screen, const Rect& region,
                                         ImageCompletion completion) {
  world_.eventLog.note(Topic::capture, "display region " + areaText(region));
  if (displayRegions.isNever()) {
    return;
  }
  world_.clock.after(displayRegions.delay(),
                     [this, scale = screen.scale, region, completion = std::move(completion)] {
                       if (displayRegions.hasContent()) {
                         completion(renderArea(region, scale));
                         return;
                       }
                       const std::string line = "tarqo-ax capture: the display gave no image";
                       world_.eventLog.note(Topic::standardError, line);
                       std::cerr << line + "\n";
                       completion(std::nullopt);
                     });
}

}  // namespace tarqo::sim
