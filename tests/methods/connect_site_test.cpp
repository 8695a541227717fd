// Binding the session to one web site.

#include "tests/support/scene.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;
using sim::Lines;
using sim::Topic;

class ConnectToSite : public Scene {
 protected:
  Json args(const Json& site, bool launch = true) {
    return {{"bundleId", "com.example.Browser"}, {"site", site}, {"launch", launch}};
  }

  Lines opened() { return desktop.eventLog().lines(Topic::bundles); }

  sim::Window& windowShowing(const std::string& address) {
    return browser.window({100, 80, 800, 600}, "Page").shows(address);
  }

  /// What the failure to find a window of the site has seen instead.
  Json seen() {
    const Json refused = error("connect", args("https://a.example", false));
    EXPECT_EQ(refused["code"], "no_window");
    return refused.value("seen", Json());
  }

  sim::App& browser = desktop.app("com.example.Browser");
};

TEST_F(ConnectToSite, ChoosesAWindowThatShowsIt) {
  browser.window({100, 80, 800, 600}, "Other").shows("https://b.example/");
  browser.window({200, 80, 800, 600}, "This").shows("https://a.example/page?q#f");
  (void)result("connect", args("https://a.example"));
  EXPECT_EQ(result("geometry")["bounds"]["x"], 200);
  EXPECT_EQ(opened(), Lines{});
}

TEST_F(ConnectToSite, BindsTheOriginOfTheAddressAsItIsWritten) {
  windowShowing("https://Example.COM:8443/elsewhere");
  EXPECT_TRUE(
      result("connect", args("https://Example.COM:8443/path?query", false)).contains("pid"));
  EXPECT_EQ(error("connect", args("https://example.com:8443/path", false))["code"], "no_window")
      << "the case of the host counts";
}

TEST_F(ConnectToSite, ADefaultPortIsAnotherSite) {
  windowShowing("https://a.example/");
  EXPECT_EQ(failure("connect", args("https://a.example:443", false)),
            "no_window: No window of com.example.Browser shows https://a.example:443.");
}

// The observer of the application before would hear nothing of this one.
TEST_F(ConnectToSite, AFailureLeavesNoObserverOfTheApplicationBefore) {
  sim::App& notes = desktop.app("com.example.Notes");
  notes.window({300, 200, 800, 600}, "Notes");
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  sim::Window& page = windowShowing("https://b.example/");
  sim::Node& send = page.button("Send").at({200, 200, 80, 24});
  send.action("AXPress").announces("AXValueChanged", 100ms);
  EXPECT_EQ(error("connect", args("https://a.example", false))["code"], "no_window");

  page.shows("https://a.example/");
  desktop.run(5s);
  browser.announce("AXTitleChanged");
  const Json settled = result("settle");
  EXPECT_EQ(settled["listening"], true);

  const Json observation = result("observe", {{"image", false}});
  const Json clicked = result("click", {{"nodeId", nodeNamed(observation, "Send").at("id")}});
  EXPECT_EQ(clicked.at("method"), "accessibility");
  EXPECT_EQ(send.activations(), 1);
}

TEST_F(ConnectToSite, ATextThatNamesNoSiteBindsNone) {
  windowShowing("https://b.example/");
  for (const Json& site :
       {Json("a.example"), Json(""), Json(5), Json(nullptr), Json("about:blank")}) {
    EXPECT_EQ(millisecondsOf([&] { (void)result("connect", args(site, false)); }), 0) << site;
    EXPECT_EQ(result("geometry")["bounds"]["x"], 100) << "any window counts";
  }
}

TEST_F(ConnectToSite, ALaterConnectWithoutSiteBindsNone) {
  windowShowing("https://a.example/");
  (void)result("connect", args("https://a.example"));
  browser.windows().front()->shows("https://b.example/");
  EXPECT_EQ(error("geometry")["code"], "no_window");
  (void)result("connect", {{"bundleId", "com.example.Browser"}});
  EXPECT_EQ(result("geometry")["bounds"]["x"], 100);
}

TEST_F(ConnectToSite, OpensItInANewWindowWhenNoneShowsIt) {
  desktop.installed("com.example.Browser").onOpenSite = [](sim::App& app, const std::string& site) {
    app.window({300, 80, 800, 600}, "New").shows(site);
  };
  (void)result("connect", args("https://a.example/start?x=1"));
  EXPECT_EQ(opened(), Lines{"open site com.example.Browser https://a.example/start?x=1"});
  EXPECT_EQ(result("geometry")["bounds"]["x"], 300);
}

TEST_F(ConnectToSite, LooksAgainEvery200Milliseconds) {
  desktop.installed("com.example.Browser").opensSiteAfter = 301ms;
  desktop.installed("com.example.Browser").onOpenSite = [](sim::App& app, const std::string& site) {
    app.window({300, 80, 800, 600}, "New").shows(site);
  };
  constexpr double kActivation = 120;
  EXPECT_EQ(millisecondsOf([&] { (void)result("connect", args("https://a.example")); }),
            400 + kActivation);
}

TEST_F(ConnectToSite, SaysThatOneCouldNotBeOpened) {
  windowShowing("https://b.example/");
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(failure("connect", args("https://a.example/start")),
                        "no_window: No window of com.example.Browser shows https://a.example, and "
                        "one could not be opened.");
            }),
            8000);
  EXPECT_EQ(opened(), Lines{"open site com.example.Browser https://a.example/start"});
}

TEST_F(ConnectToSite, WaitsButOpensNothingWithoutLaunch) {
  windowShowing("https://b.example/");
  EXPECT_EQ(millisecondsOf([&] {
              EXPECT_EQ(failure("connect", args("https://a.example", false)),
                        "no_window: No window of com.example.Browser shows https://a.example.");
            }),
            8000);
  EXPECT_EQ(opened(), Lines{});
}

TEST_F(ConnectToSite, TakesAWindowThatArrivesInTheEighthSecond) {
  windowShowing("https://b.example/");
  desktop.after(7900ms, [&] { windowShowing("https://a.example/"); });
  EXPECT_TRUE(result("connect", args("https://a.example", false)).contains("pid"));
}

TEST_F(ConnectToSite, AWindowWithoutFrameShowsNothing) {
  windowShowing("https://a.example/").withoutFrame();
  EXPECT_EQ(error("connect", args("https://a.example", false))["code"], "no_window");
}

TEST_F(ConnectToSite, TellsTheKindOfEveryWindowButNoAddress) {
  windowShowing("https://secret.example/private");
  windowShowing("http://secret.example/private");
  windowShowing("ftp://secret.example/private");
  windowShowing("file://server/private");
  windowShowing("file:///home/private.txt");
  windowShowing("about:blank");
  browser.window({0, 0, 800, 600}, "Plain");
  EXPECT_EQ(seen(), (Json{{{"page", "another site"}},
                          {{"page", "another site"}},
                          {{"page", "ftp"}},
                          {{"page", "file"}},
                          {{"page", "file"}},
                          {{"page", "none"}},
                          {{"page", "none"}}}));
}

TEST_F(ConnectToSite, TellsWhatKeepsAWindowOfTheSiteFromBeingUsed) {
  sim::Window& window = windowShowing("https://a.example/private");
  window.minimize();
  window.withoutFrame();
  EXPECT_EQ(seen(),
            (Json{{{"page", "https://a.example"}, {"minimized", true}, {"framed", false}}}));
}

TEST_F(ConnectToSite, CallsAWindowMinimizedOnlyWhenItSaysSo) {
  windowShowing("https://b.example").with("AXMinimized", Value{1.0});
  windowShowing("https://b.example").without("AXMinimized");
  EXPECT_EQ(seen(), (Json{{{"page", "another site"}}, {{"page", "another site"}}}));
}

TEST_F(ConnectToSite, HasSeenNothingWhereThereIsNoWindow) { EXPECT_EQ(seen(), Json::array()); }

TEST_F(ConnectToSite, AFailureKeepsTheNewTargetAndItsSite) {
  desktop.app("com.example.Notes").window({700, 80, 800, 600}, "Notes");
  (void)result("connect", {{"bundleId", "com.example.Notes"}});
  sim::Window& window = windowShowing("https://b.example/");
  (void)error("connect", args("https://a.example", false));
  EXPECT_EQ(error("geometry")["code"], "no_window");
  window.shows("https://a.example/");
  EXPECT_EQ(result("geometry")["bounds"]["x"], 100) << "the new target, bound to the site";
}

TEST_F(ConnectToSite, AFailureForgetsTheNodes) {
  sim::Window& window = windowShowing("https://b.example/");
  window.button("Save");
  (void)result("connect", {{"bundleId", "com.example.Browser"}});
  const Json node = nodeNamed(result("observe", {{"image", false}}), "Save");
  (void)error("connect", args("https://a.example", false));
  EXPECT_EQ(error("click", {{"nodeId", node["id"]}})["code"], "stale_snapshot");
}

TEST_F(ConnectToSite, AFailureBringsNothingForward) {
  windowShowing("https://b.example/");
  desktop.app("com.example.Notes").bringToFront();
  (void)error("connect", args("https://a.example"));
  EXPECT_EQ(desktop.frontmost(), &desktop.app("com.example.Notes"));
}

}  // namespace
}  // namespace tarqo
