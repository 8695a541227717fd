// screen_capture.h, images.h and text_recognizer.h

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/contract/contract_fixture.h"

namespace tarqo::contract {
namespace {

using namespace std::chrono_literals;

// A white image of 32 x 32 pixels.
constexpr std::array<unsigned char, 79> kWhite = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48, 0x44, 0x52,
    0x00, 0x00, 0x00, 0x20, 0x00, 0x00, 0x00, 0x20, 0x08, 0x00, 0x00, 0x00, 0x00, 0x56, 0x11, 0x25,
    0x28, 0x00, 0x00, 0x00, 0x16, 0x49, 0x44, 0x41, 0x54, 0x78, 0xda, 0x63, 0xf8, 0x4f, 0x00, 0x30,
    0x8c, 0x2a, 0x18, 0x55, 0x30, 0xaa, 0x60, 0xa4, 0x2a, 0x00, 0x00, 0x3f, 0x68, 0xfc, 0x2e, 0xa9,
    0x44, 0xd0, 0xc8, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};

std::uint32_t bigEndian(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value = value << 8U | static_cast<unsigned char>(bytes.at(at + i));
  }
  return value;
}

class CaptureContract : public TargetContract {
 protected:
  [[nodiscard]] bool offers(CaptureTechnique technique) const {
    const std::vector<CaptureTechnique> all = capture.techniques();
    return std::count(all.begin(), all.end(), technique) > 0;
  }

  [[nodiscard]] WindowInfo shown() {
    EXPECT_TRUE(waitUntil([&] { return serverWindow(*target).has_value(); }));
    return *serverWindow(*target);
  }

  void expectSize(const Image& image, const Rect& area, double scale) {
    EXPECT_NEAR(image.widthPx, area.width * scale, 1);
    EXPECT_NEAR(image.heightPx, area.height * scale, 1);
    EXPECT_NE(image.pixels, nullptr);
  }

  ScreenCapture& capture = platform.screenCapture;
};

TEST_F(CaptureContract, OffersATechnique) { EXPECT_FALSE(capture.techniques().empty()); }

TEST_F(CaptureContract, CapturesAWindowInItsSize) {
  if (!offers(CaptureTechnique::windowImage)) {
    GTEST_SKIP() << "this system has no such technique";
  }
  const WindowInfo info = shown();
  const double scale = platform.windowServer.screens().front().scale;

  const auto image = capture.windowImage(*info.number, WindowImageResolution::best);

  ASSERT_TRUE(image);
  expectSize(*image, *info.bounds, scale);
}

TEST_F(CaptureContract, CapturesOnABackgroundThread) {
  if (!offers(CaptureTechnique::windowImage)) {
    GTEST_SKIP() << "this system has no such technique";
  }
  const auto images = std::make_shared<Arrivals<std::optional<Image>>>();
  clock.background([images, &service = capture, number = *shown().number] {
    images->add(service.windowImage(number, WindowImageResolution::nominal));
  });

  ASSERT_TRUE(waitUntil([&] { return !images->all().empty(); }));
  EXPECT_TRUE(images->all().front());
}

TEST_F(CaptureContract, CapturesNoWindowThatIsNone) {
  if (!offers(CaptureTechnique::windowImage)) {
    GTEST_SKIP() << "this system has no such technique";
  }
  EXPECT_FALSE(capture.windowImage(0x0FFFFFFF, WindowImageResolution::best));
}

TEST_F(CaptureContract, CapturesARegionOfADisplay) {
  if (!offers(CaptureTechnique::displayRegion)) {
    GTEST_SKIP() << "this system has no such technique";
  }
  const Screen screen = platform.windowServer.screens().front();
  const WindowInfo info = shown();
  const auto images = std::make_shared<Arrivals<std::optional<Image>>>();
  capture.displayRegion(screen, *info.bounds,
                        [images](std::optional<Image> image) { images->add(std::move(image)); });

  ASSERT_TRUE(waitUntil([&] { return !images->all().empty(); }));
  ASSERT_TRUE(images->all().front());
  expectSize(*images->all().front(), *info.bounds, screen.scale);
}

TEST_F(CaptureContract, ListsShareableWindowsWhereTheSystemDoes) {
  if (!capture.listsShareableWindows()) {
    GTEST_SKIP() << "this system has no such list";
  }
  const auto lists = std::make_shared<Arrivals<std::optional<std::vector<ShareableWindow>>>>();
  capture.shareableWindows([lists](std::optional<std::vector<ShareableWindow>> windows) {
    lists->add(std::move(windows));
  });

  ASSERT_TRUE(waitUntil([&] { return !lists->all().empty(); }));
  const auto list = lists->all().front();
  ASSERT_TRUE(list);
  EXPECT_TRUE(std::any_of(list->begin(), list->end(), [&](const ShareableWindow& each) {
    return each.ownerPid == target->pid() && each.title == "Contract";
  }));
}

TEST_F(CaptureContract, EncodesWhatItCaptured) {
  if (!offers(CaptureTechnique::windowImage)) {
    GTEST_SKIP() << "this system has no such technique";
  }
  const auto image = capture.windowImage(*shown().number, WindowImageResolution::best);
  ASSERT_TRUE(image);

  const auto encoded = platform.images.encodePng(*image);

  ASSERT_TRUE(std::holds_alternative<std::string>(encoded));
  const auto& bytes = std::get<std::string>(encoded);
  EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(bigEndian(bytes, 16), static_cast<std::uint32_t>(image->widthPx));
  EXPECT_EQ(bigEndian(bytes, 20), static_cast<std::uint32_t>(image->heightPx));
}

using ImagesContract = Contract;

TEST_F(ImagesContract, DecodeWhatTheyEncode) {
  const auto image = platform.images.decodePng(std::string(kWhite.begin(), kWhite.end()));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->widthPx, 32);
  EXPECT_EQ(image->heightPx, 32);

  const auto encoded = platform.images.encodePng(*image);
  ASSERT_TRUE(std::holds_alternative<std::string>(encoded));
  const auto again = platform.images.decodePng(std::get<std::string>(encoded));

  ASSERT_TRUE(again);
  EXPECT_EQ(again->widthPx, 32);
  EXPECT_EQ(again->heightPx, 32);
  EXPECT_EQ(platform.images.encodePng(*again), encoded);
}

TEST_F(ImagesContract, DecodeNothingElse) {
  EXPECT_FALSE(platform.images.decodePng(""));
  EXPECT_FALSE(platform.images.decodePng("no image at all"));
  EXPECT_FALSE(platform.images.decodePng(std::string(kWhite.begin(), kWhite.begin() + 40)));
}

using TextRecognizerContract = Contract;

TEST_F(TextRecognizerContract, FindsNoTextOnAWhiteImage) {
  const auto image = platform.images.decodePng(std::string(kWhite.begin(), kWhite.end()));
  ASSERT_TRUE(image);

  const auto result = platform.textRecognizer.recognize(*image);

  ASSERT_TRUE(std::holds_alternative<std::vector<RecognizedLine>>(result))
      << std::get<std::string>(result);
  EXPECT_TRUE(std::get<std::vector<RecognizedLine>>(result).empty());
}

}  // namespace
}  // namespace tarqo::contract
