#include "tests/support/scene.h"

namespace tarqo {
namespace {

using sim::Lines;
using sim::Topic;

class Preflight : public Scene {
 protected:
  void SetUp() override { desktop.hostedBy("com.example.Terminal", "Terminal"); }

  Lines prompts() { return desktop.eventLog().lines(Topic::permissions); }

  Json host() { return result("host")["host"]; }
};

const std::string kNotTrusted =
    "Accessibility is not granted to Terminal. macOS attributes this helper's grant to the app "
    "that "
    "launched the MCP server, so enable Terminal under System Settings → Privacy & Security → "
    "Accessibility, then run again.";
const std::string kNoCapture =
    "Screen Recording is not granted to Terminal. macOS attributes this helper's grant to the app "
    "that launched the MCP server, so enable Terminal under System Settings → Privacy & Security → "
    "Screen & System Audio Recording, then run again.";

TEST_F(Preflight, ConfirmsBothGrantsAndNamesTheHost) {
  EXPECT_EQ(result("preflight"),
            (Json{{"accessibility", true}, {"screenCapture", true}, {"host", host()}}));
  EXPECT_EQ(prompts(), Lines{}) << "nothing is missing, so nothing is asked for";
}

TEST_F(Preflight, NamesTheFallbackHostWhenNoneIsKnown) {
  desktop.processes().table[desktop.processes().own].parent = 1;
  EXPECT_EQ(result("preflight")["host"], (Json{{"name", "MCP 호스트"}}));
}

TEST_F(Preflight, TellsWhomToGrantAccessibility) {
  desktop.permissions().trusted = false;
  EXPECT_EQ(error("preflight"), (Json{{"code", "ax_not_trusted"},
                                      {"message", kNotTrusted},
                                      {"permission", "accessibility"},
                                      {"host", host()}}));
}

TEST_F(Preflight, PromptsForAccessibilityOnce) {
  desktop.permissions().trusted = false;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(error("preflight")["code"], "ax_not_trusted");
    EXPECT_EQ(prompts(), Lines{"prompt accessibility"});
  }
}

TEST_F(Preflight, GoesOnWhenThePromptGrantsAccessibility) {
  desktop.permissions().trusted = false;
  desktop.permissions().promptGrantsTrust = true;
  EXPECT_EQ(result("preflight")["accessibility"], true);
}

TEST_F(Preflight, SeesAGrantThatComesLater) {
  desktop.permissions().trusted = false;
  (void)error("preflight");
  desktop.permissions().trusted = true;
  EXPECT_EQ(result("preflight")["accessibility"], true);
}

TEST_F(Preflight, SeesAGrantThatIsTakenAway) {
  (void)result("preflight");
  desktop.permissions().trusted = false;
  EXPECT_EQ(error("preflight")["code"], "ax_not_trusted");
}

TEST_F(Preflight, TellsWhomToGrantScreenRecording) {
  desktop.permissions().captureGranted = false;
  EXPECT_EQ(error("preflight"), (Json{{"code", "screen_capture_denied"},
                                      {"message", kNoCapture},
                                      {"permission", "screen"},
                                      {"host", host()}}));
}

TEST_F(Preflight, RequestsScreenRecordingOnce) {
  desktop.permissions().captureGranted = false;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(error("preflight")["code"], "screen_capture_denied");
    EXPECT_EQ(prompts(), Lines{"request capture"});
  }
}

TEST_F(Preflight, GoesOnWhenTheRequestGrantsScreenRecording) {
  desktop.permissions().captureGranted = false;
  desktop.permissions().requestGrantsCapture = true;
  EXPECT_EQ(result("preflight")["screenCapture"], true);
}

TEST_F(Preflight, AsksForAccessibilityBeforeScreenRecording) {
  desktop.permissions().trusted = false;
  desktop.permissions().captureGranted = false;
  EXPECT_EQ(error("preflight")["code"], "ax_not_trusted");
  EXPECT_EQ(prompts(), Lines{"prompt accessibility"});
  desktop.permissions().trusted = true;
  EXPECT_EQ(error("preflight")["code"], "screen_capture_denied");
  EXPECT_EQ(prompts(), (Lines{"prompt accessibility", "request capture"}));
}

TEST_F(Preflight, TellsWhatElseIsInTheWayWhereItIsNoGrant) {
  desktop.permissions().trusted = false;
  desktop.permissions().obstacle = "Switch the accessibility bus on.";
  EXPECT_EQ(error("preflight"), (Json{{"code", "ax_not_trusted"},
                                      {"message", "Switch the accessibility bus on."},
                                      {"permission", "accessibility"},
                                      {"host", host()}}));
  desktop.permissions().trusted = true;
  desktop.permissions().captureGranted = false;
  desktop.permissions().captureObstacleText = "Start an X server.";
  EXPECT_EQ(error("preflight"), (Json{{"code", "screen_capture_denied"},
                                      {"message", "Start an X server."},
                                      {"permission", "screen"},
                                      {"host", host()}}));
}

TEST_F(Preflight, SharesItsPromptsWithTheOtherMethods) {
  desktop.permissions().trusted = false;
  (void)error("connect", {{"bundleId", "com.example.Notes"}});
  (void)error("settle");
  (void)error("preflight");
  EXPECT_EQ(prompts(), Lines{"prompt accessibility"});
}

TEST_F(Preflight, NamesTheHostItFoundFirstForEver) {
  desktop.permissions().trusted = false;
  (void)error("preflight");
  desktop.processes().table[desktop.processes().own].parent = 1;
  EXPECT_EQ(error("preflight")["message"], kNotTrusted);
}

}  // namespace
}  // namespace tarqo
