// Which accessible object is which X window by title and place, and where the object's places lie.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/linux/atspi/translate/window_matching.h"
#include "tests/platform/linux/atspi/translate/properties_of.h"

namespace tarqo::lnx::atspi {
namespace {

Toplevel toplevelOf(const char* name, Rect extents, Toolkit toolkit = Toolkit::gtk3) {
  auto properties = std::make_shared<Properties>(propertiesOf(Role::frame));
  properties->name = name;
  properties->extents = extents;
  return {{":1.1", name}, toolkit, properties, std::nullopt};
}

x11::LocatedWindow located(WindowNumber number, const char* title, Rect client) {
  x11::LocatedWindow window;
  window.number = number;
  window.title = title;
  window.client = client;
  window.bounds = client;
  return window;
}

TEST(AtspiWindows, AreMatchedByTitleBeforePlace) {
  std::vector<Toplevel> objects{toplevelOf("A", {0, 0, 500, 400}),
                                toplevelOf("B", {100, 100, 500, 400})};
  const x11::LocatedWindow b = located(2, "B", {0, 0, 500, 400});
  const x11::LocatedWindow a = located(1, "A", {100, 100, 500, 400});
  matchWindows(objects, {b, a});
  EXPECT_EQ(objects[0].window->number, 1U);
  EXPECT_EQ(objects[1].window->number, 2U);
}

TEST(AtspiWindows, OfOneTitleAreMatchedByPlace) {
  std::vector<Toplevel> objects{toplevelOf("A", {0, 0, 500, 400}),
                                toplevelOf("A", {100, 100, 500, 400})};
  const x11::LocatedWindow front = located(2, "A", {100, 100, 500, 400});
  const x11::LocatedWindow back = located(1, "A", {0, 0, 500, 400});
  matchWindows(objects, {front, back});
  EXPECT_EQ(objects[0].window->number, 1U);
  EXPECT_EQ(objects[1].window->number, 2U);
}

TEST(AtspiWindows, ThatNoObjectResemblesAreLeftAlone) {
  std::vector<Toplevel> objects{toplevelOf("", {113, 35, 630, 88}, Toolkit::chromium)};
  const x11::LocatedWindow page = located(1, "Page", {10, 10, 800, 600});
  matchWindows(objects, {page});
  EXPECT_FALSE(objects[0].window.has_value());
}

TEST(AtspiWindows, OfPlainWidgetsAreThoseThatAManagedWindowShows) {
  const auto plain = [](const char* name, Rect extents) {
    Toplevel object = toplevelOf(name, extents, Toolkit::qt);
    auto properties = std::make_shared<Properties>(*object.properties);
    properties->role = 20;  // A filler.
    object.properties = properties;
    return object;
  };
  std::vector<Toplevel> objects{plain("Tip", {5, 5, 80, 20}), plain("A", {0, 0, 500, 400}),
                                plain("B", {9, 9, 300, 200}), toplevelOf("A", {0, 0, 500, 400}),
                                toplevelOf("Unused", {0, 0, 10, 10})};
  const x11::LocatedWindow a = located(1, "A", {0, 0, 500, 400});
  const x11::LocatedWindow b = located(2, "B", {9, 9, 300, 200});
  x11::LocatedWindow tip = located(3, "Tip", {5, 5, 80, 20});
  tip.overrideRedirect = true;
  pairWithWindows(objects, {tip, a, b});
  ASSERT_EQ(objects.size(), 3U);
  EXPECT_EQ(objects[0].window->number, 1U);  // The frame, before the widget of the same title.
  EXPECT_FALSE(objects[1].window.has_value());
  EXPECT_EQ(objects[2].properties->name, "B");
  EXPECT_EQ(objects[2].window->number, 2U);
}

TEST(AtspiWindows, OfGtk4AddTheShadowToTheirPlaces) {
  Toplevel object = toplevelOf("A", {0, 0, 500, 400}, Toolkit::gtk4);
  object.window = located(1, "A", {100, 50, 528, 429});
  object.window->shadow = x11::Insets{14, 14, 12, 17};
  EXPECT_EQ(screenOffset(object), (Point{114, 62}));
  object.window->shadow.reset();
  EXPECT_EQ(screenOffset(object), (Point{114, 64.5}));
}

TEST(AtspiWindows, OfOtherToolkitsReportPlacesOnTheScreen) {
  Toplevel object = toplevelOf("A", {100, 50, 500, 400}, Toolkit::gtk3);
  object.window = located(1, "A", {100, 50, 528, 429});
  object.window->shadow = x11::Insets{14, 14, 12, 17};
  EXPECT_EQ(screenOffset(object), (Point{0, 0}));
}

}  // namespace
}  // namespace tarqo::lnx::atspi
