// What of a window shows.
#include "platform/linux/atspi/translate/visibility.h"

#include <gtest/gtest.h>

#include "tests/platform/linux/atspi/translate/properties_of.h"

namespace tarqo::lnx::atspi {
namespace {

TEST(AtspiVisibility, FollowsTheShowingState) {
  EXPECT_TRUE(isHidden({propertiesOf(Role::label, {State::visible})}));
  EXPECT_FALSE(isHidden({propertiesOf(Role::label, {State::showing})}));
  EXPECT_FALSE(isHidden({propertiesOf(Role::label, {State::visible}), Toolkit::gtk4}));
}

TEST(AtspiVisibility, SparesWhatIsInAClosedMenu) {
  const Properties entry = propertiesOf(Role::menuItem);
  EXPECT_TRUE(isHidden({entry}));
  EXPECT_FALSE(isHidden({.properties = entry, .place = MenuPlace::menu, .inMenuBar = true}));
}

TEST(AtspiVisibility, EndsWhereAPlaceIsGarbage) {
  Properties cell = propertiesOf(Role::tableCell, {State::showing});
  cell.extents = Rect{-2147483648.0, -2147483648.0, 1, 1};
  EXPECT_TRUE(isHidden({cell, Toolkit::gtk3}));
  cell.extents = Rect{1545626248, 32764, 10, 10};
  EXPECT_TRUE(isHidden({cell, Toolkit::gtk3}));
  cell.extents = Rect{10, 20, 100, 20};
  EXPECT_FALSE(isHidden({cell, Toolkit::gtk3}));
}

TEST(AtspiVisibility, EndsWhereOneIsScrolledAwayButNotForWhatHoldsIt) {
  const Rect clip{0, 0, 100, 100};
  const auto isHiddenAt = [&](Role role, Rect extents) {
    Properties properties = propertiesOf(role, {State::visible});
    properties.extents = extents;
    return isHidden({.properties = properties, .toolkit = Toolkit::gtk4, .clip = clip});
  };
  EXPECT_FALSE(isHiddenAt(Role::label, {0, 80, 100, 30}));
  EXPECT_TRUE(isHiddenAt(Role::label, {0, 90, 100, 30}));
  EXPECT_FALSE(isHiddenAt(Role::list, {0, 90, 100, 3000}));
  EXPECT_TRUE(isHiddenAt(Role::list, {0, 110, 100, 3000}));
  EXPECT_FALSE(isHiddenAt(Role::text, {0, 0, 100, 3000}));
}

TEST(AtspiVisibility, EndsOutsideOfTheWindowWhereTheToolkitDoesNotSay) {
  Properties row = propertiesOf(Role::label, {State::visible});
  row.extents = Rect{0, 900, 100, 20};
  const Rect window{0, 0, 500, 500};
  EXPECT_TRUE(isHidden({.properties = row, .toolkit = Toolkit::gtk4, .clip = window}));
  row.extents = Rect{0, 480, 100, 20};
  EXPECT_FALSE(isHidden({.properties = row, .toolkit = Toolkit::gtk4, .clip = window}));
}

}  // namespace
}  // namespace tarqo::lnx::atspi
