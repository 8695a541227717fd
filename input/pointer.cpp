// Clicking: by the element's own press where it answers, else by the pointer.

#include <algorithm>

#include "main/failure.h"
#include "session/session.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr int kGlideSteps = 6;
constexpr Duration kGlideSlice = 30ms;
constexpr double kGlideFromAbove = 40;
constexpr Duration kRestBeforePress = 250ms;
constexpr Duration kBetweenButtonEvents = 40ms;
constexpr double kMinFrameSide = 1;

constexpr std::string_view kPress = "AXPress";

/// One observation allows one action, whatever becomes of it.
class NodesSpent {
 public:
  explicit NodesSpent(NodeTable& nodes) : nodes_(nodes) {}
  ~NodesSpent() { nodes_.clear(); }
  NodesSpent(const NodesSpent&) = delete;
  NodesSpent& operator=(const NodesSpent&) = delete;

 private:
  NodeTable& nodes_;
};

}  // namespace

Json Session::click(const Json& args) {
  actedAt_ = platform_.clock.now();
  const NodesSpent spent(nodes_);
  const Element app = requireApp();
  const auto nodeId = textMember(args, "nodeId");
  if (!nodeId || nodeId->empty()) {
    fail(failures::kNodeIdRequired);
  }
  const Stored stored = requireFreshNode(*nodeId, failures::kExpiredClick);
  Json result = stored.box ? clickRecognizedText(stored, app)
                           : clickElement(stored, app, integerMember(args, "count").value_or(1));
  result["nodeId"] = *nodeId;
  result["at"] = timestampNow();
  return result;
}

Session::Stored Session::requireFreshNode(const std::string& nodeId, const FailureText& expired) {
  const Stored* stored = nodes_.find(nodeId);
  if (stored == nullptr || platform_.clock.now() - snapshotAt_ >= kSnapshotLifetime) {
    fail(expired);
  }
  return *stored;
}

Json Session::clickRecognizedText(const Stored& stored, const Element& app) {
  activate(app);
  const Point point = stored.box->center();
  verifyPointer(point, stored.element);
  press(point);
  return {{"method", "pointer"}, {"via", "ocr"}};
}

Json Session::clickElement(const Stored& stored, const Element& app, std::int64_t count) {
  Accessibility& ax = platform_.accessibility;
  verifyIdentity(stored);
  activate(app);
  verifyIdentity(stored);
  if (stored.role == "AXMenuItem") {  // A closed menu's item has no place to point at.
    if (!ax.perform(stored.element, kPress)) {
      fail(failures::kMenuRefused);
    }
    return {{"method", "accessibility"}, {"via", "menubar"}};
  }
  const auto bounds = frame(ax, stored.element);
  if (!bounds || bounds->width < kMinFrameSide || bounds->height < kMinFrameSide) {
    fail(failures::kNoFrame);
  }
  Press byAccessibility = Press::refused;
  if (count < 2) {
    byAccessibility = pressByAccessibility(stored.element);
    if (byAccessibility == Press::answered) {
      return {{"method", "accessibility"}};
    }
  }
  const Point point = bounds->center();
  verifyPointer(point, stored.element);
  press(point, static_cast<int>(std::clamp<std::int64_t>(count, 1, 2)));
  Json result = {{"method", count > 1 ? "pointer-double" : "pointer"}};
  if (byAccessibility == Press::unanswered) {
    result["fallback"] = "press_unanswered";
  }
  return result;
}

Session::Press Session::pressByAccessibility(const Element& element) {
  Accessibility& ax = platform_.accessibility;
  const std::vector<std::string> actions = actionNames(ax, element);
  if (std::find(actions.begin(), actions.end(), kPress) == actions.end()) {
    return Press::refused;
  }
  if (!observer_) {
    listen(running_->id.pid);
  }
  if (window_) {
    watch(*window_);
  }
  const Instant pressedAt = platform_.clock.now();
  if (!ax.perform(element, kPress)) {
    return Press::refused;
  }
  return pressAnswered(pressedAt) ? Press::answered : Press::unanswered;
}

void Session::post(EventSource* source, const InputEvent& event) {
  if (const auto created = platform_.inputEvents.create(source, event)) {
    platform_.inputEvents.post(*created);
  }
}

// The waits between down and up sleep: nothing may be delivered inside a click. Those around it
// turn the loop, so that its effects can be heard.
void Session::press(Point point, int count) {
  const auto source = platform_.inputEvents.makeSource("");
  glide(point, source.get(), kRestBeforePress);
  for (int click = 1; click <= std::max(count, 1); ++click) {
    post(source.get(), MouseEvent{MouseEventType::leftDown, point, click});
    platform_.clock.sleep(kBetweenButtonEvents);
    post(source.get(), MouseEvent{MouseEventType::leftUp, point, click});
    platform_.clock.sleep(kBetweenButtonEvents);
  }
}

// Interfaces that react to the pointer see a real approach, not a jump.
void Session::glide(Point point, EventSource* source, Duration settle) {
  const Point start =
      platform_.inputEvents.pointerLocation().value_or(Point{point.x, point.y - kGlideFromAbove});
  for (int step = 1; step <= kGlideSteps; ++step) {
    const double part = static_cast<double>(step) / kGlideSteps;
    post(source,
         MouseEvent{MouseEventType::moved,
                    {start.x + (point.x - start.x) * part, start.y + (point.y - start.y) * part}});
    platform_.clock.turn(kGlideSlice);
  }
  platform_.clock.turn(settle);
}

}  // namespace tarqo
