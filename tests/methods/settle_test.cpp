#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

class Settle : public ConnectedScene {
 protected:
  void SetUp() override {
    ConnectedScene::SetUp();
    desktop.run(10s);  // What connecting caused lies far behind.
  }

  Json settle(const Json& args = Json::object()) { return result("settle", args); }

  /// How long a silent application is waited for.
  Json silentWait(const Json& args) { return settle(args)["waitedMs"]; }

  /// How long an application that is never silent is waited for.
  Json noisyWait(const Json& args) {
    desktop.every(10ms, 2000, [this] { notes.announce("AXValueChanged", 0ms); });
    return settle(args)["waitedMs"];
  }

  double epochMsNow() {
    return std::chrono::duration<double, std::milli>(desktop.clock().wall().time_since_epoch())
        .count();
  }
};

TEST_F(Settle, ReturnsAfterOneQuietPeriodOfSilence) {
  EXPECT_EQ(
      settle(),
      (Json{{"heard", Json::array()}, {"quiet", true}, {"waitedMs", 180.0}, {"listening", true}}));
}

TEST_F(Settle, TellsWhatItHeardSortedAndOnce) {
  notes.announce("AXValueChanged", 10ms);
  notes.announce("AXCreated", 20ms);
  notes.announce("AXValueChanged", 30ms);
  EXPECT_EQ(settle(), (Json{{"heard", {"AXCreated", "AXValueChanged"}},
                            {"quiet", true},
                            {"waitedMs", 220.0},
                            {"listening", true}}));
}

TEST_F(Settle, GivesUpAtItsTimeoutOnAnApplicationThatIsNeverQuiet) {
  desktop.every(100ms, 50, [this] { notes.announce("AXValueChanged", 0ms); });
  const Json settled = settle({{"quietMs", 180}});
  EXPECT_EQ(settled["quiet"], false);
  EXPECT_EQ(settled["waitedMs"], 1500);
  EXPECT_EQ(settled["heard"], Json::array({"AXValueChanged"}));
}

TEST_F(Settle, MeasuresQuietFromTheLastNotification) {
  notes.announce("AXValueChanged", 0ms);
  desktop.run(100ms);
  EXPECT_EQ(settle()["waitedMs"], 80) << "100 ms of quiet had passed already";
}

TEST_F(Settle, ReturnsAtOnceWhenQuietHasLongPassed) {
  notes.announce("AXValueChanged", 0ms);
  desktop.run(500ms);
  const Json settled = settle();
  EXPECT_EQ(settled["waitedMs"], 0);
  EXPECT_EQ(settled["quiet"], true);
  EXPECT_EQ(settled["heard"], Json::array({"AXValueChanged"}));
}

TEST_F(Settle, QuietIsClampedBetween20And3000) {
  EXPECT_EQ(silentWait({{"quietMs", 5}}), 20);
  EXPECT_EQ(silentWait({{"quietMs", -5}}), 20);
  EXPECT_EQ(silentWait({{"quietMs", 20}}), 20);
  EXPECT_EQ(silentWait({{"quietMs", 3000}, {"timeoutMs", 10000}}), 3000);
  EXPECT_EQ(silentWait({{"quietMs", 60000}, {"timeoutMs", 10000}}), 3000);
}

TEST_F(Settle, QuietThatIsNoIntegerIs180) {
  for (const Json& quiet :
       {Json("500"), Json(500.5), Json(true), Json(nullptr), Json::array({500})}) {
    EXPECT_EQ(silentWait({{"quietMs", quiet}}), 180) << quiet;
  }
  EXPECT_EQ(silentWait({{"quietMs", 500.0}}), 500) << "a whole number is an integer";
}

TEST_F(Settle, TimeoutIsAtLeast50) { EXPECT_EQ(noisyWait({{"timeoutMs", 1}}), 60) << "3 slices"; }

TEST_F(Settle, TimeoutIsAtMost10000) { EXPECT_EQ(noisyWait({{"timeoutMs", 60000}}), 10000); }

TEST_F(Settle, TimeoutThatIsNoIntegerIs1500) {
  EXPECT_EQ(noisyWait({{"timeoutMs", "200"}}), 1500);
  EXPECT_EQ(noisyWait({{"timeoutMs", 200.5}}), 1500);
}

TEST_F(Settle, IsNotQuietWhenTheTimeoutComesBeforeTheQuietPeriod) {
  const Json settled = settle({{"quietMs", 500}, {"timeoutMs", 200}});
  EXPECT_EQ(settled["quiet"], false);
  EXPECT_EQ(settled["waitedMs"], 200);
}

TEST_F(Settle, LooksBackThreeSeconds) {
  notes.announce("AXCreated", 0ms);
  desktop.run(1ms);
  notes.announce("AXTitleChanged", 0ms);
  desktop.run(2999ms);
  EXPECT_EQ(settle()["heard"], Json::array({"AXTitleChanged"}));
}

TEST_F(Settle, LooksBackNoFurtherThanTheLastAction) {
  save.action("AXPress").announces("AXTitleChanged", 1ms);
  const std::string id = idOf("Save");
  notes.announce("AXCreated", 0ms);
  desktop.run(1ms);
  (void)result("click", {{"nodeId", id}});
  EXPECT_EQ(settle()["heard"], Json::array({"AXTitleChanged"}));
}

TEST_F(Settle, ARefusedActionCountsAsTheLastOne) {
  notes.announce("AXCreated", 0ms);
  desktop.run(1ms);
  (void)error("click");
  EXPECT_EQ(settle()["heard"], Json::array());
}

TEST_F(Settle, LooksBackToTheMomentTheClientNames) {
  notes.announce("AXCreated", 0ms);
  desktop.run(5s);
  const double since = epochMsNow();
  desktop.run(1ms);
  notes.announce("AXTitleChanged", 0ms);
  desktop.run(5s);
  EXPECT_EQ(settle({{"sinceMs", since}})["heard"], Json::array({"AXTitleChanged"}));
  EXPECT_EQ(settle({{"sinceMs", since - 6000.5}})["heard"], (Json{"AXCreated", "AXTitleChanged"}));
}

TEST_F(Settle, AMomentFarAwayIsBroughtNear) {
  notes.announce("AXCreated", 0ms);
  desktop.run(5s);
  for (const Json& moment : {Json(0), Json(-1e300), Json(INT64_MIN)}) {
    EXPECT_EQ(settle({{"sinceMs", moment}})["heard"], Json::array({"AXCreated"})) << moment;
  }
  for (const Json& moment : {Json(1e300), Json(UINT64_MAX)}) {
    EXPECT_EQ(settle({{"sinceMs", moment}})["heard"], Json::array()) << moment;
  }
}

TEST_F(Settle, AMomentThatIsNoNumberIsIgnored) {
  notes.announce("AXCreated", 0ms);
  desktop.run(1s);
  for (const Json& moment : {Json("0"), Json(true), Json(nullptr)}) {
    EXPECT_EQ(settle({{"sinceMs", moment}})["heard"], Json::array({"AXCreated"})) << moment;
  }
}

TEST_F(Settle, AMomentInTheFutureHearsNothing) {
  notes.announce("AXCreated", 50ms);
  const Json settled = settle({{"sinceMs", epochMsNow() + 60000}});
  EXPECT_EQ(settled["heard"], Json::array());
  EXPECT_EQ(settled["waitedMs"], 180);
}

TEST_F(Settle, HearsEveryElementOfTheTarget) {
  window.announce("AXWindowMoved", 10ms);
  field.announce("AXSelectedTextChanged", 10ms);
  EXPECT_EQ(settle()["heard"], (Json{"AXSelectedTextChanged", "AXWindowMoved"}));
}

TEST_F(Settle, HearsNothingThatItDoesNotWatch) {
  notes.announce("AXAnnouncementRequested", 10ms);
  EXPECT_EQ(settle()["heard"], Json::array());
}

TEST_F(Settle, TellsThatItCannotListen) {
  notes.facts.refusesObservers = true;
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  EXPECT_EQ(
      settle(),
      (Json{{"heard", Json::array()}, {"quiet", true}, {"waitedMs", 180.0}, {"listening", false}}));
}

TEST_F(Settle, ListensAgainWhenItCan) {
  notes.facts.refusesObservers = true;
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  notes.facts.refusesObservers = false;
  notes.announce("AXTitleChanged", 10ms);
  const Json settled = settle();
  EXPECT_EQ(settled["listening"], true);
  EXPECT_EQ(settled["heard"], Json::array({"AXTitleChanged"}));
}

TEST_F(Settle, IsOverInTimeWhenTheTargetQuitsMeanwhile) {
  desktop.every(10ms, 10, [this] { notes.announce("AXValueChanged", 0ms); });
  desktop.after(105ms, [this] { notes.kill(); });
  EXPECT_EQ(settle(), (Json{{"heard", {"AXValueChanged"}},
                            {"quiet", true},
                            {"waitedMs", 280.0},
                            {"listening", true}}))
      << "what is gone is quiet";
  EXPECT_EQ(error("settle")["code"], "app_closed");
}

TEST_F(Settle, IsOverInTimeWhenASilentTargetQuitsMeanwhile) {
  desktop.after(50ms, [this] { notes.kill(); });
  const Json settled = settle({{"quietMs", 500}, {"timeoutMs", 200}});
  EXPECT_EQ(settled["quiet"], false);
  EXPECT_EQ(settled["waitedMs"], 200);
}

TEST_F(Settle, SurvivesNotificationsThatAreNotSupported) {
  notes.facts.unsupportedNotifications = {"AXMenuOpened", "AXRowCountChanged"};
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  desktop.run(10s);
  notes.announce("AXTitleChanged", 10ms);
  EXPECT_EQ(settle()["heard"], Json::array({"AXTitleChanged"}));
}

TEST_F(Settle, AFloodIsHeardToItsLast500) {
  notes.announce("AXCreated", 0ms);
  desktop.run(1ms);
  for (int i = 0; i < 500; ++i) {
    notes.announce("AXValueChanged", 0ms);
  }
  desktop.run(1ms);
  EXPECT_EQ(settle()["heard"], Json::array({"AXValueChanged"}));
}

TEST_F(Settle, AChangedCalendarDoesNotDisturbAWait) {
  desktop.after(50ms, [this] { desktop.clock().setWall(WallTime{}); });
  EXPECT_EQ(settle()["waitedMs"], 180);
}

TEST_F(Settle, FailsAtOnceAfterTheTargetHasQuit) {
  notes.kill();
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(failure("settle"),
                        "app_closed: The application closed; reconnect before continuing.");
            }),
            0);
}

}  // namespace
}  // namespace tarqo
