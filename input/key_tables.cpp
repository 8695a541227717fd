#include "input/key_tables.h"

#include <algorithm>

namespace tarqo {
namespace {

template <typename Rows>
auto rowNamed(const Rows& rows, std::string_view name) {
  return std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.name == name; });
}

}  // namespace

std::optional<std::uint16_t> keyCode(std::string_view name) {
  const auto row = rowNamed(KEY_CODES, name);
  return row == KEY_CODES.end() ? std::nullopt : std::optional(row->code);
}

std::optional<Modifiers> modifierMask(std::string_view name) {
  const auto row = rowNamed(MODIFIER_FLAGS, name);
  return row == MODIFIER_FLAGS.end() ? std::nullopt : std::optional(row->mask);
}

}  // namespace tarqo
