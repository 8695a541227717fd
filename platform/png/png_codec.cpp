#include "platform/png/png_codec.h"

#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <utility>

namespace tarqo::png {
namespace {

// Level 3 without a filter is the knee for screen content: a third of the time of the default
// settings, and smaller files.
constexpr int kCompressionLevel = 3;
constexpr std::size_t kBytesPerPixel = 4;

// No deflate stream holds more than this many bytes in one of its own, so a header that claims more
// is a lie, found out before memory is taken for it.
constexpr double kLargestRatio = 1032;

// libpng reports errors by longjmp, which skips destructors. So every function that calls setjmp
// below owns nothing and changes no local variable after it; what it needs, it gets by reference,
// and its callers own it.

void onError(png_structp png, png_const_charp /*message*/) { png_longjmp(png, 1); }

void onWarning(png_structp /*png*/, png_const_charp /*message*/) {}

struct Output {
  std::string& bytes;
  bool outOfMemory = false;
};

// An exception must not pass through libpng's frames, so it becomes libpng's kind of error here.
bool append(Output& output, const png_byte* data, std::size_t length) noexcept {
  try {
    output.bytes.append(reinterpret_cast<const char*>(data), length);
    return true;
  } catch (...) {
    output.outOfMemory = true;
    return false;
  }
}

void onWrite(png_structp png, png_bytep data, std::size_t length) {
  if (!append(*static_cast<Output*>(png_get_io_ptr(png)), data, length)) {
    png_longjmp(png, 1);
  }
}

void onFlush(png_structp /*png*/) {}

struct Input {
  const std::string& bytes;
  std::size_t position = 0;
};

void onRead(png_structp png, png_bytep data, std::size_t length) {
  auto& input = *static_cast<Input*>(png_get_io_ptr(png));
  if (length > input.bytes.size() - input.position) {
    png_longjmp(png, 1);
  }
  std::memcpy(data, input.bytes.data() + input.position, length);
  input.position += length;
}

class Writer {
 public:
  Writer() : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning)) {
    info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { png_destroy_write_struct(&png_, &info_); }

  [[nodiscard]] bool ready() const { return info_ != nullptr; }
  [[nodiscard]] png_structp png() const { return png_; }
  [[nodiscard]] png_infop info() const { return info_; }

 private:
  png_structp png_;
  png_infop info_;
};

class Reader {
 public:
  Reader() : png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning)) {
    info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { png_destroy_read_struct(&png_, &info_, nullptr); }

  [[nodiscard]] bool ready() const { return info_ != nullptr; }
  [[nodiscard]] png_structp png() const { return png_; }
  [[nodiscard]] png_infop info() const { return info_; }

 private:
  png_structp png_;
  png_infop info_;
};

bool writeImage(const Writer& writer, const BgrxView& image, Output& output) {
  const png_structp png = writer.png();
  if (setjmp(png_jmpbuf(png)) != 0) {
    return false;
  }
  png_set_write_fn(png, &output, onWrite, onFlush);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_IHDR(png, writer.info(), static_cast<png_uint_32>(image.widthPx),
               static_cast<png_uint_32>(image.heightPx), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_set_compression_level(png, kCompressionLevel);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
  png_write_info(png, writer.info());
  png_set_bgr(png);
  png_set_filler(png, 0, PNG_FILLER_AFTER);
  for (std::size_t y = 0; y < static_cast<std::size_t>(image.heightPx); ++y) {
    png_write_row(png, image.bytes.data() + y * image.strideBytes);
  }
  png_write_end(png, writer.info());
  return true;
}

// `rawBytes` becomes the size of the pixels as the file keeps them, before compression.
bool readHeader(const Reader& reader, Input& input, double& rawBytes) {
  const png_structp png = reader.png();
  if (setjmp(png_jmpbuf(png)) != 0) {
    return false;
  }
  png_set_read_fn(png, &input, onRead);
  png_read_info(png, reader.info());
  rawBytes = static_cast<double>(png_get_rowbytes(png, reader.info())) *
             static_cast<double>(png_get_image_height(png, reader.info()));
  // Whatever the file holds becomes 8 bits of blue, green, red and a filler.
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_set_strip_alpha(png);
  png_set_bgr(png);
  png_set_filler(png, 0, PNG_FILLER_AFTER);
  (void)png_set_interlace_handling(png);
  png_read_update_info(png, reader.info());
  return true;
}

bool readRows(const Reader& reader, std::vector<png_bytep>& rows) {
  const png_structp png = reader.png();
  if (setjmp(png_jmpbuf(png)) != 0) {
    return false;
  }
  png_read_image(png, rows.data());
  png_read_end(png, nullptr);
  return true;
}

bool isEncodable(const BgrxView& image) {
  if (image.widthPx < 1 || image.heightPx < 1) {
    return false;
  }
  const std::size_t row = static_cast<std::size_t>(image.widthPx) * kBytesPerPixel;
  const auto above = static_cast<std::size_t>(image.heightPx - 1);
  return image.strideBytes >= row && image.bytes.size() >= row &&
         (image.bytes.size() - row) / image.strideBytes >= above;
}

}  // namespace

Encoded encode(const BgrxView& image) {
  const Writer writer;
  if (!isEncodable(image) || !writer.ready()) {
    return {{}, EncodeError::noEncoder};
  }
  Encoded encoded;
  // Screens compress at least tenfold; an eighth makes growth rare and wastes little.
  encoded.bytes.reserve(static_cast<std::size_t>(image.widthPx) *
                            static_cast<std::size_t>(image.heightPx) / 2 +
                        1024);
  Output output{encoded.bytes};
  if (!writeImage(writer, image, output)) {
    return {{}, EncodeError::failed};
  }
  return encoded;
}

std::optional<Bgrx> decode(const std::string& bytes) {
  const Reader reader;
  Input input{bytes};
  double rawBytes = 0;
  if (!reader.ready() || !readHeader(reader, input, rawBytes) ||
      rawBytes > kLargestRatio * static_cast<double>(bytes.size())) {
    return std::nullopt;
  }
  const auto width = static_cast<std::size_t>(png_get_image_width(reader.png(), reader.info()));
  const auto height = static_cast<std::size_t>(png_get_image_height(reader.png(), reader.info()));
  if (png_get_rowbytes(reader.png(), reader.info()) != width * kBytesPerPixel) {
    return std::nullopt;
  }
  Bgrx image{static_cast<int>(width), static_cast<int>(height), {}};
  image.bytes.resize(width * height * kBytesPerPixel);
  std::vector<png_bytep> rows(height);
  for (std::size_t y = 0; y < height; ++y) {
    rows[y] = image.bytes.data() + y * width * kBytesPerPixel;
  }
  if (!readRows(reader, rows)) {
    return std::nullopt;
  }
  return image;
}

}  // namespace tarqo::png
