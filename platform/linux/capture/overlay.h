// Pictures laid over a picture. Pure functions.
#pragma once

#include <span>

#include "platform/images.h"

namespace tarqo::lnx::capture {

/// A picture and where its upper left corner lies in the picture below, in pixels.
struct Overlay {
  Image image;
  int x = 0;
  int y = 0;
};

/// The picture with the others over it, the last uppermost. What reaches beyond it is cut off. An
/// image whose pixels cannot be read is left out; when the lowest is one, it is given back as it
/// is.
[[nodiscard]] Image withOverlays(const Image& below, std::span<const Overlay> overlays);

}  // namespace tarqo::lnx::capture
