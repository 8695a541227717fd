#include "platform/linux/x11/windows.h"

#include <gtest/gtest.h>

namespace tarqo::lnx::x11 {
namespace {

TEST(WindowLayer, IsZeroForWhatAUserSwitchesTo) {
  for (const WindowType type : {WindowType::none, WindowType::normal, WindowType::dialog,
                                WindowType::utility, WindowType::splash}) {
    EXPECT_EQ(layerOf(type, false), 0) << static_cast<int>(type);
  }
}

TEST(WindowLayer, LiesAboveForPopupsWhateverTheirType) {
  for (const WindowType type :
       {WindowType::none, WindowType::normal, WindowType::dialog, WindowType::menu,
        WindowType::dropdownMenu, WindowType::popupMenu, WindowType::combo, WindowType::tooltip,
        WindowType::notification, WindowType::dnd}) {
    EXPECT_GT(layerOf(type, true), 0) << static_cast<int>(type);
  }
}

TEST(WindowLayer, LiesAboveForDocksAndBelowForTheDesktop) {
  EXPECT_GT(layerOf(WindowType::dock, false), 0);
  EXPECT_LT(layerOf(WindowType::desktop, false), 0);
}

constexpr Rect kClient{100, 80, 640, 480};
constexpr Rect kOutermost{90, 50, 660, 520};

TEST(VisibleFrame, LeavesOutTheShadowThatTheApplicationDraws) {
  EXPECT_EQ(visibleFrame({kClient, kOutermost, Insets{1, 1, 20, 5}, Insets{26, 24, 23, 29}}),
            (Rect{126, 103, 590, 428}));
}

TEST(VisibleFrame, TakesInTheDecorationThatTheWindowManagerStates) {
  EXPECT_EQ(visibleFrame({kClient, kOutermost, Insets{1, 2, 20, 5}, std::nullopt}),
            (Rect{99, 60, 643, 505}));
}

TEST(VisibleFrame, IsTheOutermostWindowWhereNothingIsStated) {
  EXPECT_EQ(visibleFrame({kClient, kOutermost, std::nullopt, std::nullopt}), kOutermost);
}

}  // namespace
}  // namespace tarqo::lnx::x11
