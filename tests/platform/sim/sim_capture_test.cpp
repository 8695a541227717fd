#include "platform/sim/sim_capture.h"

#include <gtest/gtest.h>

#include "platform/sim/sim_desktop.h"

namespace tarqo::sim {
namespace {

using namespace std::chrono_literals;

class SimCapture : public testing::Test {
 protected:
  std::optional<Image> captured(Window& which,
                                WindowImageResolution resolution = WindowImageResolution::best) {
    return capture.windowImage(*which.server().info.number, resolution);
  }

  Desktop desktop;
  ScreenCaptureService& capture = desktop.capture();
  Window& window = desktop.app("com.example.Notes").window({100, 80, 400, 300}, "Notes");
  Window& other = desktop.app("com.example.Mail").window({300, 100, 400, 300}, "Mail");
};

TEST_F(SimCapture, GivesTheWindowsOwnPixels) {
  window.server().drawings.push_back({{10, 20, 30, 40}, Colour{255, 0, 0}});

  const std::optional<Image> image = captured(window);

  ASSERT_TRUE(image);
  EXPECT_EQ(image->widthPx, 400);
  EXPECT_EQ(image->heightPx, 300);
  EXPECT_EQ(pixelAt(*image, 0, 0), window.server().fill);
  EXPECT_EQ(pixelAt(*image, 10, 20), (Colour{255, 0, 0}));
  EXPECT_EQ(pixelAt(*image, 39, 59), (Colour{255, 0, 0}));
  EXPECT_EQ(pixelAt(*image, 40, 60), window.server().fill);
  EXPECT_FALSE(pixelAt(*image, 400, 0));
  EXPECT_NE(window.server().fill, other.server().fill);
}

TEST_F(SimCapture, DoublesThePixelsOnADenseDisplay) {
  desktop.windowServer().displays[0].scale = 2;

  EXPECT_EQ(captured(window)->widthPx, 800);
  EXPECT_EQ(captured(window)->heightPx, 600);
  EXPECT_EQ(captured(window, WindowImageResolution::nominal)->widthPx, 400);
}

TEST_F(SimCapture, MayGiveNothing) {
  EXPECT_FALSE(capture.windowImage(9999, WindowImageResolution::best));
  capture.windowImagesOf.insert_or_assign(*window.server().info.number, Reply::nothing());
  EXPECT_FALSE(captured(window));
  EXPECT_TRUE(captured(other));
  capture.windowImages = Reply::nothing();
  EXPECT_FALSE(captured(other));
}

TEST_F(SimCapture, BlocksWhoeverAsks) {
  capture.windowImages = Reply::after(700ms);
  EXPECT_TRUE(captured(window));
  EXPECT_EQ(desktop.clock().elapsed(), 700ms);
}

TEST_F(SimCapture, LeavesABackgroundBodyHanging) {
  capture.windowImages = Reply::never();
  auto done = std::make_shared<bool>(false);
  desktop.clock().background([this, done] {
    (void)captured(window);
    *done = !desktop.clock().stopped();
  });

  desktop.clock().runLoopFor(10s);

  EXPECT_FALSE(*done);
  EXPECT_EQ(desktop.clock().elapsed(), 10s);
}

TEST_F(SimCapture, CompletesABackgroundBodyAtItsTime) {
  capture.windowImages = Reply::after(1900ms);
  Duration doneAt{};
  desktop.clock().background([&] {
    EXPECT_TRUE(captured(window));
    doneAt = desktop.clock().elapsed();
  });

  desktop.clock().runLoopFor(1s);
  EXPECT_EQ(doneAt, 0s);
  desktop.clock().runLoopFor(1s);
  EXPECT_EQ(doneAt, 1900ms);
}

TEST_F(SimCapture, ListsShareableWindows) {
  std::optional<std::vector<ShareableWindow>> list;
  int completions = 0;
  const auto complete = [&](std::optional<std::vector<ShareableWindow>> windows) {
    ++completions;
    list = std::move(windows);
  };

  capture.shareableWindows(complete);
  EXPECT_EQ(completions, 0);
  desktop.run(0ms);
  ASSERT_TRUE(list);
  ASSERT_EQ(list->size(), 2U);
  EXPECT_EQ(list->front().title, "Notes");
  EXPECT_EQ(list->front().frame, window.frame());

  capture.shareableTitles = false;
  capture.shareable = Reply::after(4s);
  capture.shareableWindows(complete);
  desktop.run(4s);
  EXPECT_EQ(list->front().title, "");

  capture.shareable = Reply::nothing();
  capture.shareableWindows(complete);
  desktop.run(0ms);
  EXPECT_EQ(completions, 3);
  EXPECT_FALSE(list);

  capture.shareable = Reply::never();
  capture.shareableWindows(complete);
  desktop.run(1h);
  EXPECT_EQ(completions, 3);
}

TEST_F(SimCapture, GivesARegionWithEverythingInIt) {
  std::optional<Image> image;
  const Screen screen{1, {0, 0, 1920, 1080}, 2};
  capture.displayRegion(screen, {290, 90, 100, 50}, [&](auto result) { image = result; });
  desktop.run(0ms);

  ASSERT_TRUE(image);
  EXPECT_EQ(image->widthPx, 200);
  EXPECT_EQ(image->heightPx, 100);
  EXPECT_EQ(pixelAt(*image, 0, 0), window.server().fill);
  EXPECT_EQ(pixelAt(*image, 199, 99), window.server().fill) << "which lies over the other";
  other.toFront();
  capture.displayRegion(screen, {290, 90, 100, 50}, [&](auto result) { image = result; });
  desktop.run(0ms);
  EXPECT_EQ(pixelAt(*image, 199, 99), other.server().fill);
  EXPECT_EQ(pixelAt(*image, 0, 0), window.server().fill);
}

TEST_F(SimCapture, ReportsAFailedRegionOnStandardErrorInOneLine) {
  int completions = 0;
  bool content = true;
  capture.displayRegions = Reply::nothing();
  testing::internal::CaptureStderr();
  capture.displayRegion({}, {0, 0, 10, 10}, [&](auto image) {
    ++completions;
    content = image.has_value();
  });
  desktop.run(0ms);
  const std::string written = testing::internal::GetCapturedStderr();

  EXPECT_EQ(completions, 1);
  EXPECT_FALSE(content);
  EXPECT_EQ(written, "tarqo-ax capture: the display gave no image\n");
  EXPECT_EQ(desktop.eventLog().lines(Topic::standardError).size(), 1U);

  capture.displayRegions = Reply::never();
  capture.displayRegion({}, {0, 0, 10, 10}, [&](auto) { ++completions; });
  desktop.run(1h);
  EXPECT_EQ(completions, 1);
}

TEST_F(SimCapture, OffersTheTechniquesOfTheScene) {
  EXPECT_EQ(capture.techniques().front(), CaptureTechnique::windowImage);
  EXPECT_FALSE(capture.listsShareableWindows());
  capture.offered = {CaptureTechnique::commandLine};
  EXPECT_EQ(capture.techniques(), std::vector{CaptureTechnique::commandLine});
}

TEST_F(SimCapture, HasATool) {
  desktop.captureTool();
  const std::string number = std::to_string(*other.server().info.number);
  const auto child = desktop.processes().start(
      "/usr/sbin/screencapture", {"-x", "-o", "-l" + number, "-t", "png", "/tmp/a.png"});
  desktop.run(0ms);

  EXPECT_EQ(child->exitStatus(), 0);
  const auto file = desktop.processes().readFile("/tmp/a.png");
  ASSERT_TRUE(file);
  const auto image = desktop.images().decodePng(*file);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->widthPx, 400);
  EXPECT_EQ(pixelAt(*image, 5, 5), other.server().fill);
  EXPECT_EQ(capture.techniques().front(), CaptureTechnique::commandLine);
}

TEST_F(SimCapture, EncodesItsImages) {
  ImagesService& images = desktop.images();
  const Image image = *captured(window);

  const auto encoded = images.encodePng(image);

  ASSERT_TRUE(std::holds_alternative<std::string>(encoded));
  const auto decoded = images.decodePng(std::get<std::string>(encoded));
  ASSERT_TRUE(decoded);
  EXPECT_EQ(pixelAt(*decoded, 1, 1), window.server().fill);
  images.encodingFails = PngError::noEncoder;
  EXPECT_EQ(std::get<PngError>(images.encodePng(image)), PngError::noEncoder);
  images.encodingFails = PngError::failed;
  EXPECT_EQ(std::get<PngError>(images.encodePng(image)), PngError::failed);
  EXPECT_FALSE(images.decodePng("no image"));
}

TEST_F(SimCapture, RecognizesWhatTheSceneSays) {
  TextRecognizerService& recognizer = desktop.recognizer();
  const Image image = *captured(window);
  recognizer.lines.push_back({"안녕", {0.1, 0.8, 0.2, 0.1}, 0.9F});
  recognizer.takes = 900ms;

  const auto lines = recognizer.recognize(image);

  ASSERT_TRUE(std::holds_alternative<std::vector<RecognizedLine>>(lines));
  EXPECT_EQ(std::get<0>(lines).front().text, "안녕");
  EXPECT_EQ(desktop.clock().elapsed(), 900ms);
  recognizer.error = "no languages";
  EXPECT_EQ(std::get<std::string>(recognizer.recognize(image)), "no languages");
  EXPECT_EQ(recognizer.recognitions(), 2);
}

}  // namespace
}  // namespace tarqo::sim
