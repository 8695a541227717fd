// Reads pixels of an X pixmap into memory.
#pragma once

#include <optional>

#include "platform/geometry.h"
#include "platform/images.h"
#include "platform/linux/capture/pixel_format.h"
#include "platform/linux/x11/x_display.h"

namespace tarqo::lnx {

/// How the pixels of windows of a visual lie in memory. Without masks where they are indices into a
/// table of colours, and for a visual that the screen does not have.
[[nodiscard]] PixelFormat pixelFormatOf(const XServer& server, xcb_visualid_t visual);

/// The part of a pixmap, in its own pixels, as far as the pixmap goes. None when the pixmap does
/// not exist, its format is not readable, or the part lies outside. The server writes into memory
/// that it shares with the image where it can: 1280x800 pixels take 1 ms rather than 7 ms. What
/// must be converted takes a few milliseconds more.
[[nodiscard]] std::optional<Image> readPixels(XServer& server, xcb_pixmap_t pixmap,
                                              const PixelFormat& format, const Rect& part);

}  // namespace tarqo::lnx
