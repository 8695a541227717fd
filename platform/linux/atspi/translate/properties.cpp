#include "platform/linux/atspi/translate/properties.h"

#include <algorithm>

namespace tarqo::lnx::atspi {

Toolkit toolkitNamed(std::string_view name, std::string_view version) {
  if (name == "GTK" || (name == "gtk" && version.starts_with("4"))) {
    return Toolkit::gtk4;
  }
  if (name == "gtk") {
    return Toolkit::gtk3;
  }
  if (name == "Qt") {
    return Toolkit::qt;
  }
  if (name == "Chromium" || name == "Chrome") {
    return Toolkit::chromium;
  }
  if (name == "Gecko") {
    return Toolkit::gecko;
  }
  return Toolkit::other;
}

std::string withoutMarks(std::string text) {
  for (const std::string_view mark : {"\uFFFC", "\uFEFF"}) {
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
      text.erase(at, mark.size());
    }
  }
  return text;
}

const std::string* Properties::attribute(std::string_view key) const {
  const auto found = std::ranges::find(
      attributes, key, [](const auto& pair) -> std::string_view { return pair.first; });
  return found == attributes.end() ? nullptr : &found->second;
}

}  // namespace tarqo::lnx::atspi
