// Simulated capture of windows and displays: every window is its colour and what is drawn on it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/screen_capture.h"
#include "platform/sim/sim_images.h"
#include "platform/sim/sim_world.h"

namespace tarqo::sim {

class ScreenCaptureService final : public ScreenCapture {
 public:
  explicit ScreenCaptureService(World& world) : world_(world) {}

  // The scene.
  std::vector<CaptureTechnique> offered{CaptureTechnique::windowImage,
                                        CaptureTechnique::displayRegion};
  bool shareableWindowsExist = false;
  Reply windowImages = Reply::now();
  std::map<WindowNumber, Reply> windowImagesOf;  ///< Overrules `windowImages` for one window.
  Reply shareable = Reply::now();                ///< Without content: the error.
  bool shareableTitles = true;                   ///< False: the grant lets no title through.
  Reply displayRegions = Reply::now();           ///< Without content: an error on standard error.

  [[nodiscard]] std::vector<CaptureTechnique> techniques() override { return offered; }
  [[nodiscard]] bool listsShareableWindows() override { return shareableWindowsExist; }
  [[nodiscard]] std::optional<Image> windowImage(WindowNumber window,
                                                 WindowImageResolution resolution) override;
  void shareableWindows(ShareableWindowsCompletion completion) override;
  void displayRegion(const Screen& screen, const Rect& region, ImageCompletion completion) override;

  /// The pixels of a window, free of faults; null for a window without bounds.
  [[nodiscard]] std::optional<Image> render(const ServerWindow& window, double scale) const;
  /// The pixels of an area of the screen, with all windows in it.
  [[nodiscard]] Image renderArea(const Rect& area, double scale) const;

 private:
  [[nodiscard]] std::vector<ShareableWindow> listShareable() const;

  World& world_;
};

}  // namespace tarqo::sim
