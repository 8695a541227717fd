// The "input" method: text, keys and scrolling to one node of the last observation.

#include <algorithm>
#include <array>

#include "base/failure.h"
#include "input/bounded_text.h"
#include "input/nodes_spent.h"
#include "session/session.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr Duration kBeforeReturn = 120ms;
constexpr std::uint16_t kReturn = 36;

// Text goes into these by setting their value.
constexpr std::array<std::string_view, 3> kTextFieldRoles{"AXTextField", "AXTextArea",
                                                          "AXSearchField"};

bool isTextField(std::string_view role) {
  return std::find(kTextFieldRoles.begin(), kTextFieldRoles.end(), role) != kTextFieldRoles.end();
}

}  // namespace

Json Session::input(const Json& args) {
  actedAt_ = platform_.clock.now();
  const NodesSpent spent(nodes_);
  const Element app = requireApp();
  const auto kind = textMember(args, "kind");
  if (!kind) {
    fail(failures::kExpiredInput);
  }
  const auto nodeId = textMember(args, "nodeId");
  const Stored stored = requireFreshNode(nodeId.value_or(""), failures::kExpiredInput);
  Json result = stored.box ? inputToRecognizedText(*kind, stored, app, args)
                           : inputToElement(*kind, stored, app, args);
  result["nodeId"] = *nodeId;
  result["at"] = timestampNow();
  return result;
}

Json Session::inputToRecognizedText(const std::string& kind, const Stored& stored,
                                    const Element& app, const Json& args) {
  activate(app);
  const Point point = stored.box->center();
  // Keys go to whatever holds the focus, and scrolling proves the foreground itself.
  if (kind == "key" || kind == "type" || kind == "scroll") {
    requireFrontmost();
  } else {
    verifyPointer(point, stored.element);
  }
  if (kind == "type") {
    const std::string typed = boundedText(args);
    typeUnicode(typed);
    return {{"method", "keyboard"}, {"via", "ocr"}, {"sent", typed}};
  }
  return keyOrScroll(kind, stored, point, args);
}

Json Session::inputToElement(const std::string& kind, const Stored& stored, const Element& app,
                             const Json& args) {
  requireInputTarget(stored);
  activate(app);
  requireInputTarget(stored);
  const auto bounds = frame(platform_.accessibility, stored.element);
  if (!bounds) {
    fail(failures::kInputNotVisible);
  }
  const Point point = bounds->center();
  if (kind == "key") {
    requireFrontmost();
    requireKeysHarmless();
    (void)platform_.accessibility.set(stored.element, "AXFocused", Value{true});
    requireInputTarget(stored);
  } else {
    verifyPointer(point, stored.element);
  }
  return kind == "type" ? typeInto(stored, args) : keyOrScroll(kind, stored, point, args);
}

Json Session::keyOrScroll(const std::string& kind, const Stored& stored, Point point,
                          const Json& args) {
  if (kind == "key") {
    pressNamedKey(args);
    return {{"method", "keyboard"}};
  }
  if (kind == "scroll") {
    scroll(stored, point, args);
    return {{"method", "pointer"}};
  }
  fail(failures::kUnknownInput);
}

// Return goes to whatever has the focus: a field whose value was set has yet to be given it.
void Session::pressReturnIn(const Stored& stored, bool focusFirst) {
  if (focusFirst) {
    requireFrontmost();
    requireKeysHarmless();
    (void)platform_.accessibility.set(stored.element, "AXFocused", Value{true});
  }
  platform_.clock.turn(kBeforeReturn);
  requireStillFrontmost();
  postKey(kReturn, 0);
}

Json Session::typeInto(const Stored& stored, const Json& args) {
  Accessibility& ax = platform_.accessibility;
  const std::string typed = boundedText(args);
  const bool submit = booleanMember(args, "submit").value_or(false);
  const bool byValue = isTextField(stored.role);
  if (byValue) {
    if (!ax.isSettable(stored.element, "AXValue")) {
      fail(failures::kInputUnsupported);
    }
    if (!ax.set(stored.element, "AXValue", Value{typed})) {
      fail(failures::kInputRefused);
    }
  } else {
    requireFrontmost();
    typeUnicode(typed);
  }
  if (submit) {
    try {
      pressReturnIn(stored, byValue);
    } catch (Failure& failure) {
      failure.addDetail("sent", typed);  // The text has arrived, and only Return has not.
      throw;
    }
  }
  return {
      {"method", byValue ? "accessibility" : "keyboard"}, {"sent", typed}, {"submitted", submit}};
}

}  // namespace tarqo
