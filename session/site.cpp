#include "session/site.h"

#include <algorithm>

namespace tarqo {
namespace {

bool isAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isScheme(std::string_view text) {
  return !text.empty() && isAlpha(text.front()) &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return isAlpha(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
         });
}

// Characters that an address cannot hold anywhere; text with one of them is no address.
bool isBlankOrControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= 0x20 || byte == 0x7F;
}

// Characters that browsers leave as they are in paths, queries and fragments, but that cannot stand
// before those: to a browser, a backslash there ends the host.
bool isForbiddenInAuthority(char c) {
  return std::string_view("\"<>\\^`{|}").find(c) != std::string_view::npos;
}

struct HostAndPort {
  std::string_view host;
  std::string_view port;
};

// "user@host:port" cut into its parts; a bracketed host may hold colons of its own.
std::optional<HostAndPort> splitAuthority(std::string_view authority) {
  if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos) {
    authority.remove_prefix(at + 1);
  }
  std::size_t hostEnd = authority.find(':');
  if (authority.starts_with('[')) {
    const std::size_t bracket = authority.find(']');
    if (bracket == std::string_view::npos) {
      return std::nullopt;
    }
    hostEnd = bracket + 1;
  }
  const std::string_view host = authority.substr(0, hostEnd);
  std::string_view port =
      hostEnd >= authority.size() ? std::string_view() : authority.substr(hostEnd);
  if (!port.empty()) {
    if (port.front() != ':') {
      return std::nullopt;
    }
    port.remove_prefix(1);
  }
  const bool digits = std::all_of(port.begin(), port.end(), isDigit);
  if (host.empty() || !digits) {
    return std::nullopt;
  }
  return HostAndPort{host, port};
}

// "0443" names the port 443.
std::string decimal(std::string_view digits) {
  const std::size_t first = std::min(digits.find_first_not_of('0'), digits.size() - 1);
  return std::string(digits.substr(first));
}

}  // namespace

std::optional<std::string> siteOf(std::string_view address) {
  if (std::any_of(address.begin(), address.end(), isBlankOrControl)) {
    return std::nullopt;
  }
  const std::size_t colon = address.find(':');
  if (colon == std::string_view::npos || !isScheme(address.substr(0, colon))) {
    return std::nullopt;
  }
  const std::string_view rest = address.substr(colon + 1);
  if (!rest.starts_with("//")) {
    return std::nullopt;
  }
  const std::string_view authority = rest.substr(2, rest.find_first_of("/?#", 2) - 2);
  if (std::any_of(authority.begin(), authority.end(), isForbiddenInAuthority)) {
    return std::nullopt;
  }
  const auto parts = splitAuthority(authority);
  if (!parts) {
    return std::nullopt;
  }
  std::string site(address.substr(0, colon));
  site += "://";
  site += parts->host;
  if (!parts->port.empty()) {
    site += ":" + decimal(parts->port);
  }
  return site;
}

bool isLocalFile(std::string_view address) { return address.starts_with("file:///"); }

}  // namespace tarqo
