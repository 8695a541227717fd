#include "platform/linux/capture/window_pixels.h"

#include <sys/mman.h>
#include <unistd.h>
#include <xcb/shm.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <utility>
#include <vector>

#include "platform/png/png_images.h"

namespace tarqo::lnx::capture {
namespace {

/// The bits of a colour that count: more make no difference once they are rounded to 8.
constexpr int kUsefulBits = 12;

constexpr std::size_t kImageBytesPerPixel = 4;

bool liesSideBySide(std::uint32_t mask) {
  return mask != 0 &&
         std::has_single_bit((static_cast<std::uint64_t>(mask) >> std::countr_zero(mask)) + 1);
}

/// One colour of a pixel, in 8 bits.
class Channel {
 public:
  explicit Channel(std::uint32_t mask)
      : shift_(std::countr_zero(mask) + std::max(std::popcount(mask) - kUsefulBits, 0)),
        largest_((1U << std::min(std::popcount(mask), kUsefulBits)) - 1),
        scaled_(largest_ + 1) {
    for (std::uint32_t value = 0; value <= largest_; ++value) {
      scaled_[value] = static_cast<std::uint8_t>((value * 255 + largest_ / 2) / largest_);
    }
  }

  [[nodiscard]] std::uint8_t of(std::uint32_t pixel) const {
    return scaled_[(pixel >> shift_) & largest_];
  }

 private:
  int shift_;
  std::uint32_t largest_;
  std::vector<std::uint8_t> scaled_;
};

template <std::size_t bytesPerPixel, bool bigEndian>
std::uint32_t pixelAt(const std::uint8_t* bytes) {
  std::uint32_t pixel = 0;
  for (std::size_t i = 0; i < bytesPerPixel; ++i) {
    pixel |= static_cast<std::uint32_t>(bytes[bigEndian ? bytesPerPixel - 1 - i : i]) << (8 * i);
  }
  return pixel;
}

template <std::size_t bytesPerPixel, bool bigEndian>
void convert(const PixelFormat& format, std::span<const std::uint8_t> rows, png::Bgrx& image) {
  const Channel red(format.redMask);
  const Channel green(format.greenMask);
  const Channel blue(format.blueMask);
  const std::size_t stride = format.strideBytes(image.widthPx);
  std::uint8_t* to = image.bytes.data();
  for (int row = 0; row < image.heightPx; ++row) {
    const std::uint8_t* from = rows.data() + static_cast<std::size_t>(row) * stride;
    for (int column = 0; column < image.widthPx; ++column) {
      const std::uint32_t pixel = pixelAt<bytesPerPixel, bigEndian>(from);
      to[0] = blue.of(pixel);
      to[1] = green.of(pixel);
      to[2] = red.of(pixel);
      from += bytesPerPixel;
      to += kImageBytesPerPixel;
    }
  }
}

template <std::size_t bytesPerPixel>
void convertInOrder(const PixelFormat& format, std::span<const std::uint8_t> rows,
                    png::Bgrx& image) {
  if (format.bigEndian) {
    convert<bytesPerPixel, true>(format, rows, image);
  } else {
    convert<bytesPerPixel, false>(format, rows, image);
  }
}

constexpr std::uint32_t kAllPlanes = 0xffffffff;

struct Area {
  std::int16_t x = 0;
  std::int16_t y = 0;
  std::uint16_t width = 0;
  std::uint16_t height = 0;
  std::size_t strideBytes = 0;

  [[nodiscard]] std::size_t bytes() const { return strideBytes * height; }
};

/// The rows of an image as the server gave them.
class ServerPixels : public png::BgrxPixels {
 public:
  explicit ServerPixels(const Area& area) : area_(area) {}

  [[nodiscard]] virtual std::span<const std::uint8_t> rows() const = 0;

  /// Only of pixels that need no conversion.
  [[nodiscard]] png::BgrxView view() const final {
    return {area_.width, area_.height, area_.strideBytes, rows()};
  }

 protected:
  [[nodiscard]] const Area& area() const { return area_; }

 private:
  Area area_;
};

/// Memory that can be handed to the server as a file descriptor.
class SharedMemory {
 public:
  explicit SharedMemory(std::size_t size) : size_(size) {
    descriptor_ = ::memfd_create("tarqo-image", MFD_CLOEXEC);
    if (descriptor_ < 0 || ::ftruncate(descriptor_, static_cast<off_t>(size)) != 0) {
      return;
    }
    void* mapped = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0);
    data_ = mapped == MAP_FAILED ? nullptr : static_cast<const std::uint8_t*>(mapped);
  }
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;
  ~SharedMemory() {
    if (data_ != nullptr) {
      ::munmap(const_cast<std::uint8_t*>(data_), size_);
    }
    if (descriptor_ >= 0) {
      ::close(descriptor_);
    }
  }

  [[nodiscard]] bool valid() const { return data_ != nullptr; }
  [[nodiscard]] std::span<const std::uint8_t> bytes() const { return {data_, size_}; }

  /// The descriptor, which the caller closes from now on. The memory stays.
  [[nodiscard]] int releaseDescriptor() { return std::exchange(descriptor_, -1); }

 private:
  std::size_t size_;
  int descriptor_ = -1;
  const std::uint8_t* data_ = nullptr;
};

class SharedPixels final : public ServerPixels {
 public:
  SharedPixels(const Area& area, std::unique_ptr<SharedMemory> memory)
      : ServerPixels(area), memory_(std::move(memory)) {}
  [[nodiscard]] std::span<const std::uint8_t> rows() const override { return memory_->bytes(); }

 private:
  std::unique_ptr<SharedMemory> memory_;
};

/// Pixels in the very message in which the server sent them.
class ReplyPixels final : public ServerPixels {
 public:
  ReplyPixels(const Area& area, x11::Reply<xcb_get_image_reply_t> reply)
      : ServerPixels(area), reply_(std::move(reply)) {}
  [[nodiscard]] std::span<const std::uint8_t> rows() const override {
    return {xcb_get_image_data(reply_.get()), area().bytes()};
  }

 private:
  x11::Reply<xcb_get_image_reply_t> reply_;
};

std::shared_ptr<const ServerPixels> readShared(x11::Server& server, xcb_pixmap_t pixmap,
                                               const Area& area) {
  auto memory = std::make_unique<SharedMemory>(area.bytes());
  if (!server.extensions().shmDescriptors || !memory->valid()) {
    return nullptr;
  }
  xcb_connection_t* c = server.raw();
  const xcb_shm_seg_t segment = xcb_generate_id(c);
  xcb_shm_attach_fd(c, segment, memory->releaseDescriptor(), 0);
  const auto reply = server.take<xcb_shm_get_image_reply_t>(
      xcb_shm_get_image(c, pixmap, area.x, area.y, area.width, area.height, kAllPlanes,
                        XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0));
  xcb_shm_detach(c, segment);
  if (!reply || reply->size != area.bytes()) {
    return nullptr;
  }
  return std::make_shared<SharedPixels>(area, std::move(memory));
}

std::shared_ptr<const ServerPixels> readReply(x11::Server& server, xcb_pixmap_t pixmap,
                                              const Area& area) {
  auto reply = server.take<xcb_get_image_reply_t>(
      xcb_get_image(server.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, area.x, area.y, area.width,
                    area.height, kAllPlanes));
  if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < area.bytes()) {
    return nullptr;
  }
  return std::make_shared<ReplyPixels>(area, std::move(reply));
}

/// Fills in what the server's table of formats says about pixels of a depth.
void readLayout(const xcb_setup_t* setup, std::uint8_t depth, PixelFormat& format) {
  for (auto formats = xcb_setup_pixmap_formats_iterator(setup); formats.rem > 0;
       xcb_format_next(&formats)) {
    if (formats.data->depth == depth) {
      format.bitsPerPixel = formats.data->bits_per_pixel;
      format.scanlinePadBits = formats.data->scanline_pad;
    }
  }
  format.bigEndian = setup->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
}

}  // namespace

std::size_t PixelFormat::strideBytes(int widthPx) const {
  const auto pad = static_cast<std::size_t>(scanlinePadBits);
  const std::size_t bits =
      static_cast<std::size_t>(widthPx) * static_cast<std::size_t>(bitsPerPixel);
  return (bits + pad - 1) / pad * pad / 8;
}

bool PixelFormat::isBgrx() const {
  return bitsPerPixel == 32 && !bigEndian && redMask == 0xff0000 && greenMask == 0xff00 &&
         blueMask == 0xff;
}

bool PixelFormat::isReadable() const {
  const bool hasWholeBytes = bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32;
  return hasWholeBytes && liesSideBySide(redMask) && liesSideBySide(greenMask) &&
         liesSideBySide(blueMask);
}

png::Bgrx toBgrx(const PixelFormat& format, int widthPx, int heightPx,
                 std::span<const std::uint8_t> rows) {
  png::Bgrx image{widthPx, heightPx, {}};
  image.bytes.resize(static_cast<std::size_t>(widthPx) * static_cast<std::size_t>(heightPx) *
                     kImageBytesPerPixel);
  switch (format.bitsPerPixel) {
    case 16:
      convertInOrder<2>(format, rows, image);
      break;
    case 24:
      convertInOrder<3>(format, rows, image);
      break;
    default:
      convertInOrder<4>(format, rows, image);
      break;
  }
  return image;
}

PixelFormat pixelFormatOf(const x11::Server& server, xcb_visualid_t visual) {
  PixelFormat format;
  for (auto depths = xcb_screen_allowed_depths_iterator(&server.screen()); depths.rem > 0;
       xcb_depth_next(&depths)) {
    for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
         xcb_visualtype_next(&visuals)) {
      const xcb_visualtype_t& each = *visuals.data;
      if (each.visual_id != visual) {
        continue;
      }
      readLayout(xcb_get_setup(server.raw()), depths.data->depth, format);
      // The table of colours behind a "direct" pixel leaves all colours as they are, but for
      // programs that correct the colours of a screen.
      if (each._class == XCB_VISUAL_CLASS_TRUE_COLOR ||
          each._class == XCB_VISUAL_CLASS_DIRECT_COLOR) {
        format.redMask = each.red_mask;
        format.greenMask = each.green_mask;
        format.blueMask = each.blue_mask;
      }
      return format;
    }
  }
  return format;
}

std::optional<Image> readPixels(x11::Server& server, xcb_pixmap_t pixmap, const PixelFormat& format,
                                const Rect& part) {
  const auto geometry =
      server.take<xcb_get_geometry_reply_t>(xcb_get_geometry(server.raw(), pixmap));
  if (!geometry || !format.isReadable()) {
    return std::nullopt;
  }
  const Rect whole{0, 0, static_cast<double>(geometry->width),
                   static_cast<double>(geometry->height)};
  const Rect inside = whole.intersection(part);
  const Area area{static_cast<std::int16_t>(inside.x), static_cast<std::int16_t>(inside.y),
                  static_cast<std::uint16_t>(inside.width),
                  static_cast<std::uint16_t>(inside.height),
                  format.strideBytes(static_cast<int>(inside.width))};
  if (area.bytes() == 0) {
    return std::nullopt;
  }
  auto pixels = readShared(server, pixmap, area);
  if (!pixels) {
    pixels = readReply(server, pixmap, area);
  }
  if (!pixels) {
    return std::nullopt;
  }
  if (!format.isBgrx()) {
    return png::imageOf(toBgrx(format, area.width, area.height, pixels->rows()));
  }
  return Image{area.width, area.height, std::move(pixels)};
}

}  // namespace tarqo::lnx::capture
