// PNG files to and from rows of pixels in memory, by libpng. Any thread; waits for nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tarqo::png {

/// Pixels of 32 bits in the order blue, green, red, unused, as X servers and most display memory
/// keep them; rows from the top, `strideBytes` apart.
struct BgrxView {
  int widthPx = 0;
  int heightPx = 0;
  std::size_t strideBytes = 0;
  std::span<const std::uint8_t> bytes;
};

/// The same, owned, without padding between rows.
struct Bgrx {
  int widthPx = 0;
  int heightPx = 0;
  std::vector<std::uint8_t> bytes;

  [[nodiscard]] BgrxView view() const {
    return {widthPx, heightPx, static_cast<std::size_t>(widthPx) * 4, bytes};
  }
};

enum class EncodeError {
  noEncoder,  ///< libpng gave no encoder, or the image has no pixels.
  failed
};

/// The image as an opaque RGB file; on an error, `error` is set and the bytes are empty.
struct Encoded {
  std::string bytes;
  std::optional<EncodeError> error;
};
[[nodiscard]] Encoded encode(const BgrxView& image);

/// The image in a PNG file, its transparency dropped; none when the bytes are no PNG file.
[[nodiscard]] std::optional<Bgrx> decode(const std::string& bytes);

}  // namespace tarqo::png
