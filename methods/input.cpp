// The "input" method: text, keys and scrolling to one node of the last observation.

#include <algorithm>
#include <array>

#include "ax/attribute_access.h"
#include "base/failure.h"
#include "input/gestures.h"
#include "input/keyboard.h"
#include "input/proofs.h"
#include "methods/action.h"
#include "methods/methods.h"

namespace tarqo::methods {
namespace {

using namespace std::chrono_literals;

constexpr Duration kBeforeReturn = 120ms;
constexpr Duration kFocusArrives = 300ms;
constexpr Duration kFocusPoll = 10ms;
constexpr std::uint16_t kReturn = 36;

// Text goes into these by setting their value.
constexpr std::array<std::string_view, 3> kTextFieldRoles{"AXTextField", "AXTextArea",
                                                          "AXSearchField"};

bool isTextField(std::string_view role) {
  return std::find(kTextFieldRoles.begin(), kTextFieldRoles.end(), role) != kTextFieldRoles.end();
}

struct InputArguments {
  std::optional<std::string> kind;  ///< "type", "key", "scroll"; anything else is refused late.
  std::string nodeId;
  std::optional<std::string> text;
  bool submit;
  std::string key;
  std::vector<std::string> modifiers;
  std::int64_t deltaX;
  std::int64_t deltaY;
};

InputArguments inputArguments(const Json& args) {
  return {.kind = textMember(args, "kind"),
          .nodeId = textMember(args, "nodeId").value_or(""),
          .text = textMember(args, "text"),
          .submit = booleanMember(args, "submit").value_or(false),
          .key = textMember(args, "key").value_or(""),
          .modifiers = textListMember(args, "modifiers"),
          .deltaX = integerMember(args, "deltaX").value_or(0),
          .deltaY = integerMember(args, "deltaY").value_or(0)};
}

// The wheel turns wherever the pointer is, so what it turns over is proven when it does.
void proveWheel(Session& session, Point point, const StoredNode& stored) {
  if (stored.box) {
    verifyInsideApp(session, point);
  } else {
    requireInputTarget(session, stored);
    verifyPointer(session, point, stored.element);
  }
}

Json keyOrScroll(Session& session, const StoredNode& stored, Point point,
                 const InputArguments& wanted) {
  if (wanted.kind == "key") {
    pressNamedKey(session, wanted.key, wanted.modifiers);
    return {{"method", "keyboard"}};
  }
  if (wanted.kind == "scroll") {
    const WheelPlace place{point, stored.element, [&] { proveWheel(session, point, stored); }};
    scroll(session, place, wanted.deltaX, wanted.deltaY);
    return {{"method", "pointer"}};
  }
  fail(failures::kUnknownInput);
}

Json inputToRecognizedText(Session& session, const StoredNode& stored,
                           const InputArguments& wanted) {
  session.target.activate();
  const Point point = stored.box->center();
  // Keys go to whatever holds the focus, and scrolling proves the foreground itself.
  if (wanted.kind == "key" || wanted.kind == "type" || wanted.kind == "scroll") {
    session.target.requireFrontmost();
  } else {
    verifyPointer(session, point, stored.element);
  }
  if (wanted.kind == "type") {
    const std::string typed = boundedText(wanted.text);
    typeUnicode(session, typed);
    return {{"method", "keyboard"}, {"via", "ocr"}, {"sent", typed}};
  }
  return keyOrScroll(session, stored, point, wanted);
}

void focus(Session& session, const StoredNode& stored) {
  session.target.requireFrontmost();
  session.target.requireKeysHarmless();
  (void)session.platform.accessibility.set(stored.element, "AXFocused", Value{true});
}

void setText(Session& session, const StoredNode& stored, const std::string& typed) {
  Accessibility& ax = session.platform.accessibility;
  if (!ax.isSettable(stored.element, "AXValue")) {
    fail(failures::kInputUnsupported);
  }
  if (!ax.set(stored.element, "AXValue", Value{typed})) {
    fail(failures::kInputRefused);
  }
}

// Whether the element reports the focus, which it may do a moment after it was given it.
bool awaitFocus(Session& session, const StoredNode& stored) {
  Clock& clock = session.platform.clock;
  const Instant deadline = clock.now() + kFocusArrives;
  for (;;) {
    const auto focused = attribute(session.platform.accessibility, stored.element, "AXFocused");
    if (booleanValue(focused).value_or(false)) {
      return true;
    }
    if (clock.now() >= deadline) {
      return false;
    }
    clock.runLoopFor(kFocusPoll);
  }
}

// Into an element that has no value to set: where its caret is.
void typeByKeys(Session& session, const StoredNode& stored, const std::string& typed) {
  focus(session, stored);
  requireInputTarget(session, stored);
  if (!awaitFocus(session, stored)) {
    fail(failures::kInputUnsupported);
  }
  typeUnicode(session, typed);
}

// Return goes to whatever has the focus: a field whose value was set has yet to be given it.
void pressReturnIn(Session& session, const StoredNode& stored, bool focusFirst) {
  if (focusFirst) {
    focus(session, stored);
  }
  session.platform.clock.runLoopFor(kBeforeReturn);
  session.target.requireStillFrontmost();
  postKey(session, kReturn, 0);
}

Json typeInto(Session& session, const StoredNode& stored, const InputArguments& wanted) {
  const std::string typed = boundedText(wanted.text);
  Accessibility& ax = session.platform.accessibility;
  const bool byKeys = isTextField(stored.role) && ax.takesTextByKeys(stored.element);
  const bool byValue = isTextField(stored.role) && !byKeys;
  if (byKeys) {
    typeByKeys(session, stored, typed);
  } else if (byValue) {
    setText(session, stored, typed);
  } else {
    session.target.requireFrontmost();
    typeUnicode(session, typed);
  }
  if (wanted.submit) {
    try {
      pressReturnIn(session, stored, byValue);
    } catch (Failure& failure) {
      failure.addDetail("sent", typed);  // The text has arrived, and only Return has not.
      throw;
    }
  }
  return {{"method", byValue ? "accessibility" : "keyboard"},
          {"sent", typed},
          {"submitted", wanted.submit}};
}

Json inputToElement(Session& session, const StoredNode& stored, const InputArguments& wanted) {
  requireInputTarget(session, stored);
  session.target.activate();
  requireInputTarget(session, stored);
  const auto bounds = frame(session.platform.accessibility, stored.element);
  if (!bounds) {
    fail(failures::kInputNotVisible);
  }
  const Point point = bounds->center();
  if (wanted.kind == "key") {
    focus(session, stored);
    requireInputTarget(session, stored);
  } else {
    verifyPointer(session, point, stored.element);
  }
  return wanted.kind == "type" ? typeInto(session, stored, wanted)
                               : keyOrScroll(session, stored, point, wanted);
}

}  // namespace

Json input(Session& session, const Json& args) {
  const Action action(session);
  const InputArguments wanted = inputArguments(args);
  if (!wanted.kind) {
    fail(failures::kExpiredInput);
  }
  const StoredNode stored = session.nodes.require(wanted.nodeId, failures::kExpiredInput);
  return action.done(stored.box ? inputToRecognizedText(session, stored, wanted)
                                : inputToElement(session, stored, wanted),
                     wanted.nodeId);
}

}  // namespace tarqo::methods
