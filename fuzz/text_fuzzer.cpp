// What is made of texts that other applications choose: names, addresses, paths.

#include <cstdint>
#include <string_view>

#include "ax/description.h"
#include "fuzz/fuzz_check.h"
#include "host/responsible_host.h"
#include "platform/unicode.h"
#include "session/site.h"

namespace {

using tarqo::fuzz::check;

void checkText(const std::string& bytes) {
  const std::string text = tarqo::text(std::optional(tarqo::Value{bytes}));
  check(tarqo::unicode::repaired(text) == text, "a text is malformed", text);
  check(tarqo::unicode::clusterCount(text, 3000) <= 2048, "a text is too long", text);
  check(text.empty() || tarqo::unicode::trimmed(text) == text || bytes.size() > 2048,
        "a text has white space at an end", text);
}

void checkSite(const std::string& bytes) {
  if (const auto site = tarqo::siteOf(bytes)) {
    check(tarqo::siteOf(*site) == site, "the site of a site is another", *site);
    check(site->find("://") != std::string::npos, "a site has no scheme", *site);
  }
}

void checkBundle(const std::string& bytes) {
  if (const auto bundle = tarqo::outermostBundle(bytes)) {
    check(bytes.starts_with(*bundle) && bundle->ends_with(".app"), "no bundle", *bundle);
    check(tarqo::outermostBundle(*bundle) == bundle, "another bundle is further out", *bundle);
  }
}

void checkRoleName(const std::string& bytes) {
  const std::string name = tarqo::roleName(tarqo::unicode::repaired(bytes));
  check(tarqo::unicode::lowered(name) == name, "a role name has capitals", name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  checkText(bytes);
  checkSite(bytes);
  checkBundle(bytes);
  checkRoleName(bytes);
  return 0;
}
