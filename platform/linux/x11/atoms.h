// The atoms in use, and their names.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarqo::lnx::x11 {

/// The atoms in use, in the order of `kAtomNames`.
enum class Atom : std::uint8_t {
  netActiveWindow,
  netClientList,
  netFrameExtents,
  netShowingDesktop,
  netSupportingWmCheck,
  netWmName,
  netWmPid,
  netWmPing,
  netWmState,
  netWmStateHidden,
  netWmStateShaded,
  netWmWindowOpacity,
  netWmWindowType,
  netWmWindowTypeCombo,
  netWmWindowTypeDesktop,
  netWmWindowTypeDialog,
  netWmWindowTypeDnd,
  netWmWindowTypeDock,
  netWmWindowTypeDropdownMenu,
  netWmWindowTypeMenu,
  netWmWindowTypeNormal,
  netWmWindowTypeNotification,
  netWmWindowTypePopupMenu,
  netWmWindowTypeSplash,
  netWmWindowTypeToolbar,
  netWmWindowTypeTooltip,
  netWmWindowTypeUtility,
  gtkApplicationId,
  gtkFrameExtents,
  tarqoBorrowedKeys,  ///< Of ours: the note of remapped keys. Helpers of all versions share its
                      ///< name.
  wmChangeState,
  wmProtocols,
};
inline constexpr std::size_t kAtomCount = static_cast<std::size_t>(Atom::wmProtocols) + 1;

/// In the order of `Atom`.
inline constexpr std::array<std::string_view, kAtomCount> kAtomNames = {
    "_NET_ACTIVE_WINDOW",
    "_NET_CLIENT_LIST",
    "_NET_FRAME_EXTENTS",
    "_NET_SHOWING_DESKTOP",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_PING",
    "_NET_WM_STATE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_SHADED",
    "_NET_WM_WINDOW_OPACITY",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_COMBO",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_DND",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
    "_NET_WM_WINDOW_TYPE_MENU",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_WM_WINDOW_TYPE_SPLASH",
    "_NET_WM_WINDOW_TYPE_TOOLBAR",
    "_NET_WM_WINDOW_TYPE_TOOLTIP",
    "_NET_WM_WINDOW_TYPE_UTILITY",
    "_GTK_APPLICATION_ID",
    "_GTK_FRAME_EXTENTS",
    "_TARQO_BORROWED_KEYS",
    "WM_CHANGE_STATE",
    "WM_PROTOCOLS",
};

}  // namespace tarqo::lnx::x11
