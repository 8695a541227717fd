#include "platform/linux/x11/properties.h"

#include <algorithm>

namespace tarqo::lnx::x11 {

xcb_get_property_cookie_t requestProperty(Server& server, xcb_window_t window, xcb_atom_t property,
                                          std::uint32_t length) {
  return xcb_get_property(server.raw(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, length);
}

std::span<const std::uint32_t> numbersOf(const Property& property) {
  if (!property || property->format != 32) {
    return {};
  }
  return {static_cast<const std::uint32_t*>(xcb_get_property_value(property.get())),
          property->value_len};
}

std::string bytesOf(const Property& property) {
  if (!property || property->format != 8) {
    return {};
  }
  return {static_cast<const char*>(xcb_get_property_value(property.get())), property->value_len};
}

std::string textOf(const Property& property) {
  std::string bytes = bytesOf(property);
  bytes.resize(std::min(bytes.find('\0'), bytes.size()));
  if (!property || property->type != XCB_ATOM_STRING) {
    return bytes;
  }
  // The type STRING stands for Latin-1 by the conventions.
  std::string text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x80) {
      text += byte;
    } else {
      text += static_cast<char>(0xc0 | (code >> 6));
      text += static_cast<char>(0x80 | (code & 0x3f));
    }
  }
  return text;
}

std::optional<Insets> insetsOf(const Property& property) {
  const auto numbers = numbersOf(property);
  if (numbers.size() != 4) {
    return std::nullopt;
  }
  return Insets{static_cast<double>(numbers[0]), static_cast<double>(numbers[1]),
                static_cast<double>(numbers[2]), static_cast<double>(numbers[3])};
}

}  // namespace tarqo::lnx::x11
