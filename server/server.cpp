#include "server/server.h"

#include <algorithm>
#include <array>
#include <new>

#include "base/failure.h"
#include "methods/methods.h"
#include "platform/unicode.h"

namespace tarqo {
namespace {

constexpr std::string_view kClose = "close";

// What an element that could not be read any more looks like.
constexpr std::array kFailuresOfAbsence{
    FailureCode::staleSnapshot, FailureCode::staleTarget,      FailureCode::hitTestFailed,
    FailureCode::notVisible,    FailureCode::notClickable,     FailureCode::noWindow,
    FailureCode::inputFailed,   FailureCode::inputUnsupported,
};

// Without the time to read what it is about, a refusal says that instead of something untrue. After
// something was sent it stays what it is.
bool comesOfSlowness(const Failure& failure) {
  return !failure.detail().contains("sent") && !failure.detail().contains("pressed") &&
         std::ranges::find(kFailuresOfAbsence, failure.code()) != kFailuresOfAbsence.end();
}

Json errorOf(const Failure& failure) {
  Json object = failure.detail();
  object["code"] = wireName(failure.code());
  object["message"] = failure.message();
  return object;
}

}  // namespace

Json errorObject(const std::exception& error) {
  if (const auto* failure = dynamic_cast<const Failure*>(&error)) {
    return errorOf(*failure);
  }
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    return errorOf(Failure(failures::kOutOfMemory));
  }
  return errorOf(Failure(failures::kNativeError, {error.what()}));
}

std::string errorLine(const FailureText& text) {
  return *serializeJson({{"error", errorOf(Failure(text))}, {"id", nullptr}});
}

Server::Server(const Platform& platform)
    : platform_(platform),
      hosts_(platform_),
      grants_(platform_, hosts_),
      session_(platform_, grants_) {}

Json Server::result(const std::string& method, const Json& args) {
  struct Row {
    std::string_view name;
    Json (*call)(Server&, const Json&);
  };
  static constexpr std::array kMethods{
      Row{"listTargets", [](Server& s, const Json&) { return methods::listTargets(s.platform_); }},
      Row{"preflight",
          [](Server& s, const Json&) { return methods::preflight(s.grants_, s.hosts_); }},
      Row{"host", [](Server& s, const Json& a) { return methods::host(s.hosts_, a); }},
      Row{"connect", [](Server& s, const Json& a) { return methods::connect(s.session_, a); }},
      Row{"observe", [](Server& s, const Json& a) { return methods::observe(s.session_, a); }},
      Row{"geometry", [](Server& s, const Json&) { return methods::geometry(s.session_); }},
      Row{"settle", [](Server& s, const Json& a) { return methods::settle(s.session_, a); }},
      Row{"click", [](Server& s, const Json& a) { return methods::click(s.session_, a); }},
      Row{"showMenu", [](Server& s, const Json& a) { return methods::showMenu(s.session_, a); }},
      Row{"hover", [](Server& s, const Json& a) { return methods::hover(s.session_, a); }},
      Row{"input", [](Server& s, const Json& a) { return methods::input(s.session_, a); }},
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
  const Json noArguments = Json::object();
  session_.targetTime.restart();
  try {
    return {serializeJson(
        {{"id", id},
         {"result",
          result(*method, args != request.end() && args->is_object() ? *args : noArguments)}})};
  } catch (const Failure& failure) {
    if (session_.targetTime.ranOut() && comesOfSlowness(failure)) {
      fail(failures::kTargetSlow);
    }
    throw;
  }
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
      error = errorOf(Failure(failures::kUnnamedError));
    }
    return {serializeJson({{"error", std::move(error)}, {"id", std::move(id)}})};
  } catch (...) {
    return {.response = std::nullopt, .outOfMemory = true};
  }
}

}  // namespace tarqo
