// Windows that look alike: which accessible object is which X window, and when nothing shows it.
#include "platform/linux/atspi/translate/window_matching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tarqo::lnx::atspi {
namespace {

constexpr Rect kHere{200, 150, 420, 260};
constexpr Rect kThere{700, 300, 420, 260};

Ref refOf(const std::string& path) { return {":1.1", path}; }

Toplevel object(const std::string& path, const std::string& name, std::optional<Rect> extents,
                Toolkit toolkit = Toolkit::gtk3, Role role = Role::frame) {
  auto properties = std::make_shared<Properties>();
  properties->alive = true;
  properties->role = static_cast<std::uint32_t>(role);
  properties->name = name;
  properties->extents = extents;
  return {refOf(path), toolkit, std::move(properties), std::nullopt};
}

x11::LocatedWindow xWindow(WindowNumber number, const std::string& title, const Rect& place) {
  x11::LocatedWindow window;
  window.number = number;
  window.title = title;
  window.client = place;
  window.bounds = place;
  return window;
}

/// The window of each object, in their order; 0 for an object without a window.
std::vector<WindowNumber> numbersOf(const std::vector<Toplevel>& toplevels) {
  std::vector<WindowNumber> numbers;
  for (const Toplevel& toplevel : toplevels) {
    numbers.push_back(toplevel.window ? toplevel.window->number : 0);
  }
  return numbers;
}

using Numbers = std::vector<WindowNumber>;

TEST(AtspiTwins, TwinsGetNoWindow) {
  std::vector<Toplevel> objects{object("/1", "Same", kHere), object("/2", "Same", kHere)};
  const std::vector<Twins> twins =
      matchWindows(objects, {xWindow(20, "Same", kHere), xWindow(10, "Same", kHere)});
  EXPECT_EQ(numbersOf(objects), (Numbers{0, 0}));
  ASSERT_EQ(twins.size(), 1U);
  EXPECT_EQ(twins[0].objects, (std::vector<Ref>{refOf("/1"), refOf("/2")}));
  EXPECT_EQ(twins[0].windows, (Numbers{20, 10}));
}

TEST(AtspiTwins, TwinsAreThoseWhosePlacesDifferByLessThanTheTolerance) {
  const auto at = [](double x) { return Rect{x, 150, 420, 260}; };
  std::vector<Toplevel> near{object("/1", "Same", at(200)), object("/2", "Same", at(202))};
  EXPECT_EQ(matchWindows(near, {xWindow(10, "Same", at(200)), xWindow(20, "Same", at(202))}).size(),
            1U);
  std::vector<Toplevel> far{object("/1", "Same", at(200)), object("/2", "Same", at(206))};
  EXPECT_TRUE(
      matchWindows(far, {xWindow(10, "Same", at(200)), xWindow(20, "Same", at(206))}).empty());
  EXPECT_EQ(numbersOf(far), (Numbers{10, 20}));
}

TEST(AtspiTwins, WhereAToolkitReportsNoPlaceWindowsOfOneSizeAreTwins) {
  std::vector<Toplevel> objects{object("/1", "Same", Rect{0, 0, 420, 260}, Toolkit::gtk4),
                                object("/2", "Same", Rect{0, 0, 420, 260}, Toolkit::gtk4)};
  EXPECT_EQ(matchWindows(objects, {xWindow(10, "Same", kHere), xWindow(20, "Same", kThere)}).size(),
            1U);
  EXPECT_EQ(numbersOf(objects), (Numbers{0, 0}));
}

TEST(AtspiWindows, OfGtk4AreKnownByAnEvenFrameAroundTheirContent) {
  const Rect client{205, 105, 870, 690};
  std::vector<Toplevel> objects{object("/1", "ClocksWindow", Rect{0, 0, 860, 680}, Toolkit::gtk4)};
  (void)matchWindows(objects, {xWindow(10, "Clocks", client)});
  EXPECT_EQ(numbersOf(objects), Numbers{10});
  for (const Rect& other : {Rect{0, 0, 860, 660}, Rect{0, 0, 780, 600}, Rect{0, 0, 880, 700}}) {
    std::vector<Toplevel> others{object("/1", "ClocksWindow", other, Toolkit::gtk4)};
    (void)matchWindows(others, {xWindow(10, "Clocks", client)});
    EXPECT_EQ(numbersOf(others), Numbers{0}) << other.width;
  }
}

TEST(AtspiTwins, AProofOfOneTwinSettlesTheOther) {
  for (const auto& [proven, expected] : {std::pair(ProvenPair{refOf("/1"), 10}, Numbers{10, 20}),
                                         std::pair(ProvenPair{refOf("/2"), 10}, Numbers{20, 10})}) {
    std::vector<Toplevel> objects{object("/1", "Same", kHere), object("/2", "Same", kHere)};
    EXPECT_TRUE(
        matchWindows(objects, {xWindow(20, "Same", kHere), xWindow(10, "Same", kHere)}, {proven})
            .empty());
    EXPECT_EQ(numbersOf(objects), expected);
  }
}

TEST(AtspiTwins, AProofOfOneOfThreeLeavesTheOthersOpen) {
  std::vector<Toplevel> objects{object("/1", "Same", kHere), object("/2", "Same", kHere),
                                object("/3", "Same", kHere)};
  const std::vector<x11::LocatedWindow> windows{
      xWindow(30, "Same", kHere), xWindow(20, "Same", kHere), xWindow(10, "Same", kHere)};
  EXPECT_EQ(matchWindows(objects, windows, {{refOf("/2"), 30}}).size(), 1U);
  EXPECT_EQ(numbersOf(objects), (Numbers{0, 30, 0}));
}

TEST(AtspiTwins, AProofHoldsAgainstTitleAndPlace) {
  std::vector<Toplevel> objects{object("/1", "One", kHere), object("/2", "Two", kThere)};
  EXPECT_TRUE(matchWindows(objects, {xWindow(10, "Two", kThere), xWindow(20, "Two", kThere)},
                           {{refOf("/1"), 10}})
                  .empty());
  EXPECT_EQ(numbersOf(objects), (Numbers{10, 20}));
}

TEST(AtspiTwins, AProofOfWhatIsGoneIsNone) {
  std::vector<Toplevel> objects{object("/1", "Same", kHere)};
  EXPECT_TRUE(
      matchWindows(objects, {xWindow(10, "Same", kHere)}, {{refOf("/2"), 10}, {refOf("/1"), 20}})
          .empty());
  EXPECT_EQ(numbersOf(objects), (Numbers{10}));
}

TEST(AtspiTwins, AWindowWhoseObjectIsNotThereYetLeavesTheOtherOpen) {
  std::vector<Toplevel> objects{object("/1", "Same", kHere)};
  const std::vector<Twins> twins =
      matchWindows(objects, {xWindow(20, "Same", kHere), xWindow(10, "Same", kHere)});
  EXPECT_EQ(numbersOf(objects), (Numbers{0}));
  ASSERT_EQ(twins.size(), 1U);
  EXPECT_EQ(twins[0].windows.size(), 2U);
}

TEST(AtspiTwins, TwinsDoNotHideTheirNeighbours) {
  std::vector<Toplevel> objects{object("/1", "Same", kHere), object("/2", "Same", kHere),
                                object("/3", "Other", kHere)};
  const std::vector<Twins> twins = matchWindows(
      objects,
      {xWindow(20, "Same", kHere), xWindow(30, "Other", kHere), xWindow(10, "Same", kHere)});
  EXPECT_EQ(numbersOf(objects), (Numbers{0, 0, 30}));
  ASSERT_EQ(twins.size(), 1U);
  EXPECT_EQ(twins[0].objects.size(), 2U);
}

TEST(AtspiTwins, AnUnusedObjectWithoutAPlaceIsNoTwin) {
  std::vector<Toplevel> objects{object("/unused", "", std::nullopt), object("/1", "Title", kHere)};
  EXPECT_TRUE(matchWindows(objects, {xWindow(10, "Another title", kHere)}).empty());
  EXPECT_EQ(numbersOf(objects), (Numbers{0, 10}));
}

TEST(AtspiTwins, APlainObjectIsNoWindowOfATwin) {
  std::vector<Toplevel> objects{object("/1", "Same", kHere), object("/2", "Same", kHere),
                                object("/tip", "Same", kHere, Toolkit::qt, Role::label)};
  EXPECT_EQ(
      pairWithWindows(objects, {xWindow(20, "Same", kHere), xWindow(10, "Same", kHere)}).size(),
      1U);
  EXPECT_EQ(numbersOf(objects), (Numbers{0, 0}));
}

x11::LocatedWindow ordinary(WindowNumber number, const Rect& place = kHere) {
  x11::LocatedWindow window = xWindow(number, "Any", place);
  window.ordinary = true;
  return window;
}

Numbers bareAmong(const std::vector<Toplevel>& objects, const std::vector<Twins>& twins,
                  const std::vector<x11::LocatedWindow>& windows) {
  Numbers numbers;
  for (const x11::LocatedWindow& window : windowsWithoutObject(objects, twins, windows)) {
    numbers.push_back(window.number);
  }
  return numbers;
}

TEST(WindowsWithoutObject, AreThoseThatNoObjectAndNoTwinShows) {
  std::vector<Toplevel> objects{object("/1", "One", kHere)};
  objects[0].window = ordinary(1);
  const std::vector<Twins> twins{{{refOf("/2"), refOf("/3")}, {2, 3}}};
  EXPECT_EQ(bareAmong(objects, twins, {ordinary(1), ordinary(2), ordinary(3), ordinary(4)}),
            (Numbers{4}));
}

TEST(WindowsWithoutObject, PopupsAndWindowsOfAFewPixelsAreNone) {
  x11::LocatedWindow popup = ordinary(1);
  popup.ordinary = false;
  EXPECT_EQ(bareAmong({}, {}, {popup, ordinary(2, {0, 0, 31, 400}), ordinary(3)}), (Numbers{3}));
}

TEST(WindowsWithoutObject, ASplashScreenIsOneOnlyWhenItIsAlone) {
  x11::LocatedWindow splash = ordinary(1);
  splash.splash = true;
  EXPECT_EQ(bareAmong({}, {}, {splash}), (Numbers{1}));
  EXPECT_EQ(bareAmong({}, {}, {splash, ordinary(2)}), (Numbers{2}));
  std::vector<Toplevel> objects{object("/1", "One", kHere)};
  objects[0].window = ordinary(3);
  EXPECT_EQ(bareAmong(objects, {}, {splash, ordinary(3)}), Numbers{});
}

}  // namespace
}  // namespace tarqo::lnx::atspi
