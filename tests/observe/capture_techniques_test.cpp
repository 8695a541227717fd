// The ways in which a window's pixels are had: each with its time, in the order the system offers.

#include "tests/support/observation.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

using sim::Lines;
using sim::Reply;
using sim::Topic;

constexpr const char* kFailed =
    "window_capture_failed: macOS could not capture the target window's screen area. Check Screen "
    "Recording permission and desktop lock state.";

class Technique : public ConnectedScene {
 protected:
  void SetUp() override {
    ConnectedScene::SetUp();
    (void)observe({});  // Proves once that captures work.
    desktop.eventLog().clear();
    imageLine = "window image " + std::to_string(*window.server().info.number) + " best";
  }

  void windowImage(Reply reply) {
    desktop.capture().windowImagesOf.emplace(*window.server().info.number, reply);
  }

  Lines captured() { return desktop.eventLog().lines(Topic::capture); }

  std::string imageLine;
  const std::string regionLine = "display region 100,80 800x600";
};

TEST_F(Technique, TheFirstThatGivesAnImageIsTheLast) {
  (void)observe({});
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(Technique, TheNextIsTriedWhenOneGivesNothing) {
  windowImage(Reply::nothing());
  EXPECT_EQ(observe({}).at("image").at("width"), 800);
  EXPECT_EQ(captured(), (Lines{imageLine, regionLine}));
}

TEST_F(Technique, TheyAreTriedInTheOrderOfTheSystem) {
  desktop.capture().offered = {CaptureTechnique::displayRegion, CaptureTechnique::windowImage};
  desktop.capture().displayRegions = Reply::nothing();
  (void)observe({});
  EXPECT_EQ(captured(), (Lines{regionLine, imageLine}));
}

TEST_F(Technique, WithoutAnyTheCaptureFails) {
  desktop.capture().offered.clear();
  EXPECT_EQ(failure("observe"), kFailed);
}

TEST_F(Technique, WhenAllGiveNothingTheCaptureFails) {
  windowImage(Reply::nothing());
  desktop.capture().displayRegions = Reply::nothing();
  EXPECT_EQ(error("observe"), Json({{"code", "window_capture_failed"},
                                    {"message", std::string(kFailed).substr(23)}}));
  EXPECT_EQ(desktop.eventLog().lines(Topic::standardError).size(), 1U);
}

// The window server's image.

TEST_F(Technique, TheWindowImageMayTakeThreeSeconds) {
  windowImage(Reply::after(3s));
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 3000);
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(Technique, AWindowImageThatNeverComesIsGivenUpAfterThreeSeconds) {
  windowImage(Reply::never());
  desktop.capture().displayRegions = Reply::after(100ms);
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 3000 + 100);
  EXPECT_EQ(captured(), (Lines{imageLine, regionLine}));
}

TEST_F(Technique, AWindowImageThatComesTooLateIsNotWaitedFor) {
  windowImage(Reply::after(3001ms));
  (void)observe({});
  EXPECT_EQ(captured(), (Lines{imageLine, regionLine}));
}

// The display's region.

TEST_F(Technique, TheDisplaysRegionMayTakeFiveSeconds) {
  desktop.capture().offered = {CaptureTechnique::displayRegion};
  desktop.capture().displayRegions = Reply::after(5s);
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 5000);
}

TEST_F(Technique, TheDisplaysRegionIsLookedForEveryTenMilliseconds) {
  desktop.capture().offered = {CaptureTechnique::displayRegion};
  desktop.capture().displayRegions = Reply::after(123ms);
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 130);
}

TEST_F(Technique, ADisplaysRegionThatNeverComesIsGivenUpAfterFiveSeconds) {
  desktop.capture().offered = {CaptureTechnique::displayRegion};
  desktop.capture().displayRegions = Reply::never();
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(failure("observe"), kFailed); }), 5000);
}

TEST_F(Technique, ADisplaysRegionThatComesTooLateHarmsNothing) {
  desktop.capture().offered = {CaptureTechnique::displayRegion};
  desktop.capture().displayRegions = Reply::after(5010ms);
  EXPECT_EQ(failure("observe"), kFailed);
  desktop.run(1s);
  desktop.capture().displayRegions = Reply::now();
  EXPECT_EQ(observe({}).at("image").at("width"), 800);
}

TEST_F(Technique, TheDisplayIsTheOneWithTheMiddleOfTheWindow) {
  desktop.capture().offered = {CaptureTechnique::displayRegion};
  desktop.windowServer().addDisplay({1920, -200, 1600, 1200}, 2);
  window.moveTo({1600, 80});  // Its middle is at 2000,380.
  EXPECT_EQ(observe({}).at("image").at("width"), 1600);
  window.moveTo({1500, 80});
  EXPECT_EQ(observe({}).at("image").at("width"), 800);
}

TEST_F(Technique, AWindowWhoseMiddleIsOnNoDisplayHasNoRegion) {
  desktop.capture().offered = {CaptureTechnique::displayRegion};
  window.moveTo({-500, 80});
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(failure("observe"), kFailed); }), 0);
  EXPECT_EQ(captured(), Lines{});
}

// The system's tool.

class CaptureTool : public Technique {
 protected:
  void SetUp() override {
    Technique::SetUp();
    (void)tool;
  }

  Lines processes() { return desktop.eventLog().lines(Topic::processes); }

  // The file that the tool was asked to write.
  std::string file() { return processes().at(0).substr(processes().at(0).rfind(' ') + 1); }

  sim::Program& tool = desktop.captureTool();
};

TEST_F(CaptureTool, IsRunForTheWindowAloneWithoutSoundOrShadow) {
  EXPECT_EQ(observe({}).at("image").at("width"), 800);
  const std::string number = std::to_string(*window.server().info.number);
  EXPECT_EQ(processes(),
            (Lines{"start /usr/sbin/screencapture -x -o -l" + number + " -t png " + file(),
                   "remove " + file()}));
  const std::string start = "/tmp/tarqo-ax-400-" + number + "-";
  ASSERT_TRUE(file().starts_with(start)) << file();
  const std::string random = file().substr(start.size());
  EXPECT_EQ(random.substr(random.find_first_not_of("0123456789")), ".png");
  EXPECT_LE(std::stoull(random), UINT32_MAX);
  EXPECT_EQ(captured(), Lines{});
}

TEST_F(CaptureTool, WritesIntoAFileOfAnotherNameEachTime) {
  (void)observe({});
  const std::string first = file();
  desktop.eventLog().clear();
  (void)observe({});
  EXPECT_NE(file(), first);
}

TEST_F(CaptureTool, IsLookedAtEveryTenMilliseconds) {
  tool.exits = Reply::after(123ms);
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 130);
}

TEST_F(CaptureTool, MayTakeFiveSeconds) {
  tool.exits = Reply::after(5s);
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 5000);
  EXPECT_EQ(captured(), Lines{});
}

TEST_F(CaptureTool, ThatHangsIsTerminatedAfterFiveSecondsAndItsFileRemoved) {
  tool.exits = Reply::never();
  desktop.after(1s, [&] { desktop.processes().files[file()] = "half a picture"; });
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 5000 + 20);
  EXPECT_EQ(processes().at(1), "terminate /usr/sbin/screencapture");
  EXPECT_EQ(processes().at(2), "remove " + file());
  EXPECT_EQ(desktop.processes().files.size(), 0U);
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(CaptureTool, ThatWritesItsFileWhileItIsBeingTerminatedLeavesNone) {
  tool.exits = Reply::after(5060ms);
  tool.terminates = Reply::after(100ms);
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 5060 + 20);
  desktop.run(1s);
  EXPECT_EQ(processes().at(1), "terminate /usr/sbin/screencapture");
  EXPECT_EQ(desktop.processes().files.size(), 0U);
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(CaptureTool, ThatDoesNotEndIsWaitedForNoLongerThanAFifthOfASecond) {
  tool.exits = Reply::never();
  tool.terminates = Reply::never();
  EXPECT_EQ(millisecondsOf([&] { (void)observe({}); }), 5200 + 20);
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(CaptureTool, ThatFailsIsFollowedByTheNextTechniqueAndItsFileRemoved) {
  tool.status = 1;
  (void)observe({});
  EXPECT_EQ(processes().at(1), "remove " + file());
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(CaptureTool, ThatFailsIsFollowedByTheDisplaysRegionWhereThatComesNext) {
  desktop.capture().offered = {CaptureTechnique::windowImage, CaptureTechnique::commandLine,
                               CaptureTechnique::displayRegion};
  windowImage(Reply::nothing());
  tool.status = 1;
  EXPECT_EQ(observe({}).at("image").at("width"), 800);
  EXPECT_EQ(captured(), (Lines{imageLine, regionLine}));
  EXPECT_EQ(processes().size(), 2U) << "started once, its file removed once";
}

TEST_F(CaptureTool, ThatIsEndedByASignalIsFollowedByTheNextTechnique) {
  tool.exits = Reply::nothing();
  (void)observe({});
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(CaptureTool, ThatCannotBeStartedIsFollowedByTheNextTechnique) {
  tool.starts = false;
  (void)observe({});
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(CaptureTool, ThatWritesNothingIsFollowedByTheNextTechnique) {
  tool.effect = nullptr;
  (void)observe({});
  EXPECT_EQ(captured(), Lines{imageLine});
}

TEST_F(CaptureTool, ThatWritesNoPictureIsFollowedByTheNextTechniqueAndItsFileRemoved) {
  tool.effect = [&](const sim::Arguments& arguments) {
    desktop.processes().files[arguments.back()] = "no picture";
  };
  (void)observe({});
  EXPECT_EQ(captured(), Lines{imageLine});
  EXPECT_EQ(desktop.processes().files.size(), 0U);
}

TEST_F(CaptureTool, ThatHangsOnASystemThatHangsToTheEndCostsTheSumOfAllLimits) {
  tool.exits = Reply::never();
  windowImage(Reply::never());
  desktop.capture().displayRegions = Reply::never();
  EXPECT_EQ(millisecondsOf([&] { EXPECT_EQ(failure("observe"), kFailed); }), 5000 + 3000 + 5000);
}

}  // namespace
}  // namespace tarqo
