#include "platform/linux/capture/overlay.h"

#include <algorithm>
#include <cstddef>

#include "platform/png/png_images.h"

namespace tarqo::lnx::capture {
namespace {

constexpr std::size_t kBytesPerPixel = 4;

/// Copies what lies inside of `to`.
void lay(const png::BgrxView& from, int x, int y, png::Bgrx& to) {
  const int left = std::max(x, 0);
  const int right = std::min(x + from.widthPx, to.widthPx);
  const int bottom = std::min(y + from.heightPx, to.heightPx);
  for (int row = std::max(y, 0); row < bottom && left < right; ++row) {
    const auto source = from.bytes.subspan(static_cast<std::size_t>(row - y) * from.strideBytes +
                                               static_cast<std::size_t>(left - x) * kBytesPerPixel,
                                           static_cast<std::size_t>(right - left) * kBytesPerPixel);
    const std::size_t target =
        (static_cast<std::size_t>(row) * static_cast<std::size_t>(to.widthPx) +
         static_cast<std::size_t>(left)) *
        kBytesPerPixel;
    std::copy(source.begin(), source.end(), to.bytes.begin() + static_cast<std::ptrdiff_t>(target));
  }
}

}  // namespace

Image withOverlays(const Image& below, std::span<const Overlay> overlays) {
  const auto base = png::bgrxOf(below);
  if (!base || overlays.empty()) {
    return below;
  }
  png::Bgrx result{base->widthPx, base->heightPx, {}};
  result.bytes.resize(static_cast<std::size_t>(result.widthPx) *
                      static_cast<std::size_t>(result.heightPx) * kBytesPerPixel);
  lay(*base, 0, 0, result);
  for (const Overlay& overlay : overlays) {
    if (const auto view = png::bgrxOf(overlay.image)) {
      lay(*view, overlay.x, overlay.y, result);
    }
  }
  return png::imageOf(std::move(result));
}

}  // namespace tarqo::lnx::capture
