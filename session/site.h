// The site of a web address.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarqo {

/// The origin of an address: scheme, "://", host, and ":" and the port where one is written. Null
/// when the text is no address or names no scheme or host. Nothing is lower-cased, no default port
/// dropped. Costs nothing.
[[nodiscard]] std::optional<std::string> siteOf(std::string_view address);

/// Whether an address is that of a file on this machine, which has no site: it names no host.
[[nodiscard]] bool isLocalFile(std::string_view address);

}  // namespace tarqo
