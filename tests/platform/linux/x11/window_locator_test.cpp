// Which popups belong to which window of a process.
#include "platform/linux/x11/window_locator.h"

#include <gtest/gtest.h>

namespace tarqo::lnx::x11 {
namespace {

LocatedWindow popup(WindowNumber number) {
  LocatedWindow window;
  window.number = number;
  window.overrideRedirect = true;
  return window;
}

LocatedWindow ordinary(WindowNumber number) {
  LocatedWindow window;
  window.number = number;
  window.ordinary = true;
  return window;
}

std::vector<WindowNumber> numbers(const std::vector<LocatedWindow>& windows) {
  std::vector<WindowNumber> list;
  for (const LocatedWindow& window : windows) {
    list.push_back(window.number);
  }
  return list;
}

TEST(PopupsOver, AreThoseAboveTheFrontWindow) {
  const std::vector<LocatedWindow> windows{popup(4), popup(3), ordinary(2), popup(5), ordinary(1)};
  EXPECT_EQ(numbers(popupsOver(windows, 2)), (std::vector<WindowNumber>{4, 3}));
}

TEST(PopupsOver, AnyOtherWindowHasNone) {
  const std::vector<LocatedWindow> windows{popup(4), ordinary(2), popup(5), ordinary(1)};
  EXPECT_TRUE(popupsOver(windows, 1).empty());
  EXPECT_TRUE(popupsOver(windows, 9).empty());
}

TEST(PopupsOver, AProcessWithPopupsAloneHasNone) { EXPECT_TRUE(popupsOver({popup(4)}, 4).empty()); }

}  // namespace
}  // namespace tarqo::lnx::x11
