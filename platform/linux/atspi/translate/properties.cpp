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
  return Toolkit::other;
}

const std::string* Properties::attribute(std::string_view key) const {
  const auto found = std::ranges::find(
      attributes, key, [](const auto& pair) -> std::string_view { return pair.first; });
  return found == attributes.end() ? nullptr : &found->second;
}

}  // namespace tarqo::lnx::atspi
