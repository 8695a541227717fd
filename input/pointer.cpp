#include "input/pointer.h"

#include "base/failure.h"
#include "input/events.h"

namespace tarqo {
namespace {

using namespace std::chrono_literals;

constexpr int kGlideSteps = 6;
constexpr Duration kGlideSlice = 30ms;
constexpr double kGlideFromAbove = 40;
constexpr Duration kRestBeforePress = 250ms;
constexpr Duration kBeforeRightPress = 50ms;
constexpr Duration kBetweenButtonEvents = 40ms;
constexpr Duration kMenuOpens = 250ms;

// Both events exist before the first goes out, so that no button is ever left held down: without an
// up there is no down. The proof is the last thing before the down. The waits sleep: nothing may be
// delivered inside a click.
void pressOnce(Session& session, EventSource* source, const MouseEvent& down, const MouseEvent& up,
               const Proof& proof) {
  InputEvents& events = session.platform.inputEvents;
  const auto first = events.create(source, down);
  const auto spare = events.create(source, up);
  proof();
  if (first && spare) {
    postToTarget(session, *first, failures::kPointCovered);
  }
  session.platform.clock.sleep(kBetweenButtonEvents);
  if (spare) {
    release(session, source, up, *spare);
  }
  session.platform.clock.sleep(kBetweenButtonEvents);
}

}  // namespace

// The waits around a click turn the loop, so that its effects can be heard. A first click may do
// all there is to do, close its dialog for one: what cannot be proven then gets no second.
int press(Session& session, Point point, int count, const Proof& proof) {
  const auto source = session.platform.inputEvents.makeSource("");
  glide(session, point, source.get(), kRestBeforePress);
  int click = 0;
  try {
    while (click < count) {
      pressOnce(session, source.get(), {MouseEventType::leftDown, point, click + 1},
                {MouseEventType::leftUp, point, click + 1}, proof);
      ++click;
    }
  } catch (const Failure&) {
    if (click == 0) {
      throw;
    }
  }
  return click;
}

void rightPress(Session& session, Point point, const Proof& proof) {
  const auto source = session.platform.inputEvents.makeSource("");
  post(session, source.get(), MouseEvent{MouseEventType::moved, point});
  session.platform.clock.sleep(kBeforeRightPress);
  pressOnce(session, source.get(), {MouseEventType::rightDown, point, 1},
            {MouseEventType::rightUp, point, 1}, proof);
  session.platform.clock.runLoopFor(kMenuOpens);
}

// Interfaces that react to the pointer see a real approach, not a jump. On its way the pointer
// crosses whatever lies there; where it stays must be the target.
void glide(Session& session, Point point, EventSource* source, Duration rest) {
  const Point start = session.platform.inputEvents.pointerLocation().value_or(
      Point{point.x, point.y - kGlideFromAbove});
  for (int step = 1; step < kGlideSteps; ++step) {
    const double part = static_cast<double>(step) / kGlideSteps;
    post(session, source,
         MouseEvent{MouseEventType::moved,
                    {start.x + (point.x - start.x) * part, start.y + (point.y - start.y) * part}});
    session.platform.clock.runLoopFor(kGlideSlice);
  }
  const MouseEvent arrival{MouseEventType::moved, point};
  if (const auto created = session.platform.inputEvents.create(source, arrival)) {
    postToTarget(session, *created, failures::kPointCovered);
  }
  session.platform.clock.runLoopFor(kGlideSlice);
  session.platform.clock.runLoopFor(rest);
}

}  // namespace tarqo
