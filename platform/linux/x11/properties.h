// Properties of X windows: requesting one, and reading the reply.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/window_locator.h"

namespace tarqo::lnx::x11 {

/// The most that is read of a property, in 32-bit units: enough for any sensible text or list.
inline constexpr std::uint32_t kTextLength = 1024;
inline constexpr std::uint32_t kListLength = 16384;

/// Null when the window is gone; its type is XCB_NONE when the window lacks the property.
using Property = Reply<xcb_get_property_reply_t>;

/// Sends the request; its reply is taken from the server later.
[[nodiscard]] xcb_get_property_cookie_t requestProperty(Server& server, xcb_window_t window,
                                                        xcb_atom_t property, std::uint32_t length);

/// The values of a property of 32-bit values; empty for any other. Valid as long as the property.
[[nodiscard]] std::span<const std::uint32_t> numbersOf(const Property& property);

/// The bytes of a property of bytes; empty for any other.
[[nodiscard]] std::string bytesOf(const Property& property);

/// The first text of a property, in UTF-8.
[[nodiscard]] std::string textOf(const Property& property);

/// Four distances; nullopt when the property holds anything else.
[[nodiscard]] std::optional<Insets> insetsOf(const Property& property);

}  // namespace tarqo::lnx::x11
