// The names of keys and modifiers.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/input_events.h"

namespace tarqo {

struct KeyCodeRow {
  std::string_view name;
  std::uint16_t code;
};

/// Key names and their virtual key codes on the ANSI layout. Names are case-sensitive.
inline constexpr std::array<KeyCodeRow, 50> KEY_CODES{{
    {"Enter", 36},    {"Escape", 53},     {"Tab", 48},        {"Backspace", 51},   {"Delete", 117},
    {"ArrowUp", 126}, {"ArrowDown", 125}, {"ArrowLeft", 123}, {"ArrowRight", 124}, {"Home", 115},
    {"End", 119},     {"PageUp", 116},    {"PageDown", 121},  {"Space", 49},       {"0", 29},
    {"1", 18},        {"2", 19},          {"3", 20},          {"4", 21},           {"5", 23},
    {"6", 22},        {"7", 26},          {"8", 28},          {"9", 25},           {"a", 0},
    {"b", 11},        {"c", 8},           {"d", 2},           {"e", 14},           {"f", 3},
    {"g", 5},         {"h", 4},           {"i", 34},          {"j", 38},           {"k", 40},
    {"l", 37},        {"m", 46},          {"n", 45},          {"o", 31},           {"p", 35},
    {"q", 12},        {"r", 15},          {"s", 1},           {"t", 17},           {"u", 32},
    {"v", 9},         {"w", 13},          {"x", 7},           {"y", 16},           {"z", 6},
}};

struct ModifierRow {
  std::string_view name;
  Modifiers mask;
};

inline constexpr std::array<ModifierRow, 4> MODIFIER_FLAGS{{
    {"Meta", kModifierCommand},
    {"Shift", kModifierShift},
    {"Alt", kModifierAlternate},
    {"Control", kModifierControl},
}};

/// Null for a name that is not in the table.
[[nodiscard]] std::optional<std::uint16_t> keyCode(std::string_view name);
[[nodiscard]] std::optional<Modifiers> modifierMask(std::string_view name);

}  // namespace tarqo
