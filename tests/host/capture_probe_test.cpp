// Telling a Screen Recording grant that works from one that is only listed.

#include "host/grants.h"
#include "server/server.h"
#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;
using sim::Lines;
using sim::Reply;
using sim::Topic;

class CaptureProbe : public Scene {
 protected:
  Lines asked() { return desktop.eventLog().lines(Topic::capture); }

  sim::ServerWindow& bareWindow(const Rect& bounds, Pid owner = 77) {
    return desktop.windowServer().bareWindow(owner, "Other", bounds);
  }

  HostFinder hosts{platform};
  Grants grants{platform, hosts};
};

TEST_F(CaptureProbe, TellsHowToRenewAGrantThatHasNoEffect) {
  const sim::App& terminal = desktop.hostedBy("com.example.Terminal", "Terminal");
  EXPECT_EQ(
      errorObject(grants.screenCaptureStale()),
      (Json{{"code", "screen_capture_stale"},
            {"message",
             "Screen Recording lists Terminal as allowed, but the grant does not apply to the "
             "running build. Switch Terminal off and on again in System Settings → Privacy & "
             "Security → Screen & System Audio Recording, then retry."},
            {"permission", "screen"},
            {"host",
             {{"name", "Terminal"},
              {"bundleId", "com.example.Terminal"},
              {"pid", terminal.pid()}}}}));
}

class ShareableWindows : public CaptureProbe {
 protected:
  void SetUp() override { desktop.capture().shareableWindowsExist = true; }

  sim::App& app = desktop.app("com.example.Notes");
  sim::Window& window = app.window({0, 0, 400, 300}, "Notes");
};

TEST_F(ShareableWindows, ATitleProvesTheGrant) {
  EXPECT_TRUE(grants.screenCaptureWorks());
  EXPECT_EQ(asked(), Lines{"shareable windows"});
}

TEST_F(ShareableWindows, NoTitleDisprovesTheGrant) {
  desktop.capture().shareableTitles = false;
  EXPECT_FALSE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, OneTitleAmongManyIsEnough) {
  bareWindow({0, 0, 100, 100});
  bareWindow({0, 0, 100, 100});
  EXPECT_TRUE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, TheHelpersOwnTitleProvesNothing) {
  window.close();
  bareWindow({0, 0, 100, 100}, desktop.processes().own).info.title = "Own";
  bareWindow({0, 0, 100, 100});
  EXPECT_FALSE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, ASmallWindowsTitleProvesNothing) {
  window.close();
  bareWindow({0, 0, 15.9, 100}).info.title = "Narrow";
  bareWindow({0, 0, 100, 15.9}).info.title = "Low";
  bareWindow({0, 0, 16, 16});
  EXPECT_FALSE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, AWindowOf16PointsCounts) {
  window.close();
  bareWindow({0, 0, 16, 16}).info.title = "Small";
  EXPECT_TRUE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, AWindowWithoutOwnerCounts) {
  window.close();
  sim::ServerWindow& orphan = bareWindow({0, 0, 100, 100});
  orphan.info.ownerPid.reset();
  orphan.info.title = "Orphan";
  EXPECT_TRUE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, WithNothingToLookAtTheSystemsAnswerStands) {
  window.close();
  EXPECT_TRUE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, WithNothingToLookAtTheSystemsRefusalStands) {
  window.close();
  desktop.permissions().captureGranted = false;
  EXPECT_FALSE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, WithOnlySmallWindowsToLookAtTheSystemsAnswerStands) {
  window.close();
  bareWindow({0, 0, 15.9, 100});
  bareWindow({0, 0, 100, 15.9});
  EXPECT_TRUE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, AnErrorDisprovesTheGrant) {
  desktop.capture().shareable = Reply::nothing();
  EXPECT_FALSE(grants.screenCaptureWorks());
}

TEST_F(ShareableWindows, AnAnswerWithinFourSecondsCounts) {
  desktop.capture().shareable = Reply::after(3990ms);
  bool works = false;
  EXPECT_EQ(millisecondsOf([&] { works = grants.screenCaptureWorks(); }), 3990);
  EXPECT_TRUE(works);
}

TEST_F(ShareableWindows, NoAnswerWithinFourSecondsDisprovesTheGrantForEver) {
  desktop.capture().shareable = Reply::after(4001ms);
  bool works = true;
  EXPECT_EQ(millisecondsOf([&] { works = grants.screenCaptureWorks(); }), 4000);
  EXPECT_FALSE(works);
  desktop.run(1s);
  EXPECT_EQ(millisecondsOf([&] { works = grants.screenCaptureWorks(); }), 0);
  EXPECT_FALSE(works);
  EXPECT_EQ(asked(), Lines{"shareable windows"});
}

TEST_F(ShareableWindows, ASystemThatNeverAnswersIsWaitedForFourSeconds) {
  desktop.capture().shareable = Reply::never();
  EXPECT_EQ(millisecondsOf([&] { EXPECT_FALSE(grants.screenCaptureWorks()); }), 4000);
}

TEST_F(ShareableWindows, TheAnswerIsRemembered) {
  EXPECT_TRUE(grants.screenCaptureWorks());
  desktop.capture().shareableTitles = false;
  EXPECT_TRUE(grants.screenCaptureWorks());
  EXPECT_EQ(asked(), Lines{"shareable windows"});
}

TEST_F(ShareableWindows, AlsoAnAnswerWithNothingToLookAtIsRemembered) {
  window.close();
  EXPECT_TRUE(grants.screenCaptureWorks());
  desktop.permissions().captureGranted = false;
  EXPECT_TRUE(grants.screenCaptureWorks());
}

class WindowImages : public CaptureProbe {
 protected:
  static std::string image(const sim::ServerWindow& window) {
    return "window image " + std::to_string(*window.info.number) + " nominal";
  }
};

TEST_F(WindowImages, OneImageProvesTheGrant) {
  const sim::ServerWindow& window = bareWindow({0, 0, 100, 100});
  EXPECT_TRUE(grants.screenCaptureWorks());
  EXPECT_EQ(asked(), Lines{image(window)});
}

TEST_F(WindowImages, LargeOrdinaryWindowsAreTriedFirst) {
  const sim::ServerWindow& small = bareWindow({0, 0, 20, 20});
  sim::ServerWindow& panel = bareWindow({0, 0, 900, 900});
  panel.info.layer = 25;
  const sim::ServerWindow& large = bareWindow({0, 0, 500, 500});
  desktop.capture().windowImages = Reply::nothing();
  EXPECT_FALSE(grants.screenCaptureWorks());
  EXPECT_EQ(asked(), (Lines{image(large), image(small), image(panel)}));
}

TEST_F(WindowImages, WindowsOfOneSizeAreTriedInTheirOrder) {
  const sim::ServerWindow& behind = bareWindow({0, 0, 50, 100});
  const sim::ServerWindow& front = bareWindow({0, 0, 100, 50});
  desktop.capture().windowImages = Reply::nothing();
  EXPECT_FALSE(grants.screenCaptureWorks());
  EXPECT_EQ(asked(), (Lines{image(front), image(behind)}));
}

TEST_F(WindowImages, AWindowWithoutALayerIsOrdinary) {
  bareWindow({0, 0, 900, 900}).info.layer = -1;
  sim::ServerWindow& plain = bareWindow({0, 0, 20, 20});
  plain.info.layer.reset();
  EXPECT_TRUE(grants.screenCaptureWorks());
  EXPECT_EQ(asked(), Lines{image(plain)});
}

TEST_F(WindowImages, NoMoreThanThreeWindowsAreTried) {
  for (int i = 0; i < 5; ++i) {
    bareWindow({0, 0, 100, 100});
  }
  desktop.capture().windowImages = Reply::nothing();
  EXPECT_FALSE(grants.screenCaptureWorks());
  EXPECT_EQ(asked().size(), 3);
}

TEST_F(WindowImages, EachWindowIsWaitedForTwoSeconds) {
  for (int i = 0; i < 5; ++i) {
    bareWindow({0, 0, 100, 100});
  }
  desktop.capture().windowImages = Reply::never();
  EXPECT_EQ(millisecondsOf([&] { EXPECT_FALSE(grants.screenCaptureWorks()); }), 6000);
}

TEST_F(WindowImages, TheThirdImageStillProvesTheGrant) {
  sim::ServerWindow& third = bareWindow({0, 0, 100, 100});
  bareWindow({0, 0, 200, 200});
  bareWindow({0, 0, 300, 300});
  desktop.capture().windowImages = Reply::never();
  desktop.capture().windowImagesOf.emplace(*third.info.number, Reply::now());
  EXPECT_TRUE(grants.screenCaptureWorks());
  EXPECT_EQ(asked().size(), 3);
}

TEST_F(WindowImages, WindowsThatProveNothingAreLeftOut) {
  bareWindow({0, 0, 900, 900}, desktop.processes().own);
  bareWindow({0, 0, 900, 900}).info.ownerPid.reset();
  bareWindow({0, 0, 900, 900}).info.number.reset();
  bareWindow({0, 0, 900, 900}).info.bounds.reset();
  bareWindow({0, 0, 15, 900});
  bareWindow({0, 0, 900, 15});
  EXPECT_TRUE(grants.screenCaptureWorks()) << "nothing is left to look at";
  EXPECT_EQ(asked(), Lines{});
}

TEST_F(WindowImages, WithNothingToLookAtTheSystemsAnswerStandsAndIsNotRemembered) {
  desktop.permissions().captureGranted = false;
  EXPECT_FALSE(grants.screenCaptureWorks());
  desktop.permissions().captureGranted = true;
  EXPECT_TRUE(grants.screenCaptureWorks());
  bareWindow({0, 0, 100, 100});
  desktop.capture().windowImages = Reply::nothing();
  EXPECT_FALSE(grants.screenCaptureWorks()) << "the first conclusive answer";
}

TEST_F(WindowImages, AConclusiveAnswerIsRemembered) {
  bareWindow({0, 0, 100, 100});
  desktop.capture().windowImages = Reply::nothing();
  EXPECT_FALSE(grants.screenCaptureWorks());
  desktop.capture().windowImages = Reply::now();
  EXPECT_FALSE(grants.screenCaptureWorks());
  EXPECT_EQ(asked().size(), 1);
}

// The probe decides what a capture without an image is called.
class FailingCapture : public ConnectedScene {
 protected:
  std::string codeOfObserve() { return error("observe")["code"]; }
};

TEST_F(FailingCapture, IsAStaleGrantWhenNothingCanBeSeen) {
  desktop.capture().offered = {CaptureTechnique::windowImage};
  desktop.capture().windowImages = Reply::nothing();
  EXPECT_EQ(codeOfObserve(), "screen_capture_stale");
}

TEST_F(FailingCapture, IsItsOwnFailureWhenOtherWindowsCanBeSeen) {
  desktop.capture().offered = {CaptureTechnique::windowImage};
  desktop.capture().windowImagesOf.emplace(*window.server().info.number, Reply::nothing());
  desktop.windowServer().bareWindow(77, "Other", {1000, 700, 100, 100});
  EXPECT_EQ(codeOfObserve(), "window_capture_failed");
}

}  // namespace
}  // namespace tarqo
