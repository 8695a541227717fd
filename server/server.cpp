#include "server/server.h"

#include <array>
#include <cmath>
#include <new>

#include "base/failure.h"
#include "host/list_targets.h"
#include "platform/unicode.h"

namespace tarqo {
namespace {

constexpr std::string_view kClose = "close";

Json nativeError(std::string_view message) {
  return {{"code", "native_error"}, {"message", message}};
}

// The 32-bit value of a "pid": fractions are cut off, booleans count as 0 and 1.
std::optional<Pid> pidMember(const Json& args) {
  const auto found = args.find("pid");
  if (found == args.end()) {
    return std::nullopt;
  }
  if (found->is_boolean()) {
    return found->get<bool>() ? 1 : 0;
  }
  if (!found->is_number()) {
    return std::nullopt;
  }
  const double number = std::trunc(found->get<double>());
  // No process has an id outside 32 bits; 0 ends the search for a host at once.
  return number >= INT32_MIN && number <= INT32_MAX ? static_cast<Pid>(number) : 0;
}

}  // namespace

Json errorObject(const std::exception& error) {
  if (const auto* failure = dynamic_cast<const Failure*>(&error)) {
    Json object = failure->detail();
    object["code"] = failure->code();
    object["message"] = failure->message();
    return object;
  }
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    return nativeError("The request needs more memory than the system has.");
  }
  return nativeError(error.what());
}

Server::Server(const Platform& platform)
    : platform_(platform),
      hosts_(platform_),
      grants_(platform_, hosts_),
      session_(platform_, hosts_, grants_) {}

Json Server::hostResult(const Json& args) {
  if (const auto host = hosts_.responsibleHost(pidMember(args))) {
    return {{"host", host->json()}, {"known", true}};
  }
  return {{"host", {{"name", HOST_FALLBACK}}}, {"known", false}};
}

Json Server::result(const std::string& method, const Json& args) {
  struct Row {
    std::string_view name;
    Json (*call)(Server&, const Json&);
  };
  static constexpr std::array kMethods{
      Row{"listTargets", [](Server& s, const Json&) { return listTargets(s.platform_); }},
      Row{"preflight", [](Server& s, const Json&) { return s.grants_.preflight(); }},
      Row{"host", [](Server& s, const Json& a) { return s.hostResult(a); }},
      Row{"connect", [](Server& s, const Json& a) { return s.session_.connect(a); }},
      Row{"observe", [](Server& s, const Json& a) { return s.session_.observe(a); }},
      Row{"geometry", [](Server& s, const Json&) { return s.session_.geometry(); }},
      Row{"settle", [](Server& s, const Json& a) { return s.session_.settle(a); }},
      Row{"click", [](Server& s, const Json& a) { return s.session_.click(a); }},
      Row{"showMenu", [](Server& s, const Json& a) { return s.session_.showMenu(a); }},
      Row{"hover", [](Server& s, const Json& a) { return s.session_.hover(a); }},
      Row{"input", [](Server& s, const Json& a) { return s.session_.input(a); }},
  };
  for (const Row& row : kMethods) {
    if (row.name == method) {
      return row.call(*this, args);
    }
  }
  fail(failures::kUnknownMethod);
}

// Leaves the request's id in `id` as soon as it is known.
Served Server::answer(std::string_view line, Json& id) {
  const Json request = parseJson(unicode::repaired(line));
  if (!request.is_object()) {
    fail(failures::kNotARequest);
  }
  if (const auto found = request.find("id"); found != request.end()) {
    id = *found;
  }
  const auto method = textMember(request, "method");
  if (!method) {
    fail(failures::kUnknownMethod);
  }
  if (*method == kClose) {
    return {.response = std::nullopt, .close = true};
  }
  const auto args = request.find("args");
  const Json none = Json::object();
  return {serializeJson(
      {{"id", id},
       {"result", result(*method, args != request.end() && args->is_object() ? *args : none)}})};
}

Served Server::serve(std::string_view line) noexcept {
  try {
    Json id;
    Json error;
    try {
      return answer(line, id);
    } catch (const std::exception& thrown) {
      error = errorObject(thrown);
    } catch (...) {
      error = nativeError("Something failed that has no name.");
    }
    return {serializeJson({{"error", std::move(error)}, {"id", std::move(id)}})};
  } catch (...) {
    return {.response = std::nullopt, .outOfMemory = true};
  }
}

}  // namespace tarqo
