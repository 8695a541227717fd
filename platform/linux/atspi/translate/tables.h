// What AT-SPI's roles, states, actions and events are called in the protocol's vocabulary. Every
// row of the translation stands in tables.cpp; nothing here talks to the bus.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "platform/linux/atspi/wire/codec.h"

namespace tarqo::lnx::atspi {

/// The roles that the code distinguishes, by their numbers on the bus.
enum class Role : std::uint32_t {
  invalid = 0,
  alert = 2,
  checkBox = 7,
  checkMenuItem = 8,
  comboBox = 11,
  dialog = 16,
  filler = 20,
  frame = 23,
  label = 29,
  list = 31,
  listItem = 32,
  menu = 33,
  menuBar = 34,
  menuItem = 35,
  pageTab = 37,
  pageTabList = 38,
  panel = 39,
  passwordText = 40,
  popupMenu = 41,
  radioButton = 44,
  radioMenuItem = 45,
  scrollPane = 49,
  separator = 50,
  slider = 51,
  spinButton = 52,
  table = 55,
  tableCell = 56,
  terminal = 60,
  text = 61,
  toolBar = 63,
  tree = 65,
  treeTable = 66,
  window = 69,
  application = 75,
  autocomplete = 76,
  entry = 79,
  documentSpreadsheet = 92,
  documentWeb = 95,
  listBox = 98,
  staticText = 116,
};

/// Where the value of an element comes from.
enum class ValueSource {
  none,
  label,     ///< The text it shows, which AT-SPI calls its name.
  text,      ///< The content of its Text interface, or else the number of its Value interface.
  choice,    ///< The chosen entry: its text, or else its name.
  onOff,     ///< 0, 1 or 2, from its states.
  quantity,  ///< The number of its Value interface.
};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): the columns stand as they are read.
struct RoleRow {
  std::uint32_t role;
  std::string_view name;  ///< AT-SPI's own, for the reader of the table.
  std::string_view axRole;
  std::string_view axSubrole;  ///< Empty when the role has no subrole.
  ValueSource value;
};

/// The row of a role; unknown numbers have that of "AXUnknown".
[[nodiscard]] const RoleRow& roleRow(std::uint32_t role);

/// Whether an object of that role is a window when it is at the top of its application. The same
/// roles occur inside web pages, where they are no windows.
[[nodiscard]] bool isWindowRole(std::uint32_t role);

/// Whether an object of that role is an entry of a menu.
[[nodiscard]] bool isMenuEntryRole(std::uint32_t role);

/// Whether an object of that role is a cell, a row or a header of a list or a table.
[[nodiscard]] bool isCellRole(std::uint32_t role);

/// The row of a role, with what the states change in it.
[[nodiscard]] RoleRow refined(const RoleRow& row, States states);

/// The protocol's name of an action ("click" is "AXPress"), case ignored; empty for actions that it
/// has no name for. The same word means different things on different roles.
[[nodiscard]] std::optional<std::string_view> axAction(std::string_view action, std::uint32_t role);

struct EventRow {
  std::string_view interface;  ///< After "org.a11y.atspi.Event.".
  std::string_view member;
  std::string_view detail;        ///< Empty matches every detail.
  std::string_view subscription;  ///< What is requested of the registry.
  std::string_view notification;  ///< Empty when the event only shows where the focus is.
};

[[nodiscard]] std::span<const EventRow> eventRows();

/// The row that an event falls under; null when it means nothing here. Toolkits write the members
/// of window events in different cases.
[[nodiscard]] const EventRow* eventRow(std::string_view interface, std::string_view member,
                                       std::string_view detail);

inline constexpr std::string_view kMenuOpened = "AXMenuOpened";
inline constexpr std::string_view kMenuClosed = "AXMenuClosed";

/// Whether an event of that row may be about a menu that opened or closed; only the role shows
/// whether it is.
[[nodiscard]] bool mayBeOfMenu(const EventRow& row);

/// Whether an event of that row, on an object of that role, means that a menu opened; or, at the
/// end of a state, that it closed.
[[nodiscard]] bool isOfMenu(const EventRow& row, std::uint32_t role);

}  // namespace tarqo::lnx::atspi
