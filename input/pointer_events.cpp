// The pointer's events, and the pace at which they go out.

#include "base/failure.h"
#include "session/session.h"

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

}  // namespace

void Session::post(EventSource* source, const InputEvent& event) {
  if (const auto created = platform_.inputEvents.create(source, event)) {
    platform_.inputEvents.post(*created);
  }
}

void Session::postToTarget(const CreatedEvent& event, const FailureText& elsewhere) {
  if (!platform_.inputEvents.postTo(running_->id.pid, event)) {
    fail(elsewhere);
  }
}

// An event may carry the time of its making, and applications read the speed of a drag from those
// times: the up is made when it is due. The one made beforehand is for when that fails.
void Session::release(EventSource* source, const MouseEvent& up, const CreatedEvent& spare) {
  const auto created = platform_.inputEvents.create(source, up);
  platform_.inputEvents.post(created ? *created : spare);
}

// Both events exist before the first goes out, so that no button is ever left held down: without an
// up there is no down. The proof is the last thing before the down. The waits sleep: nothing may be
// delivered inside a click.
void Session::pressOnce(EventSource* source, const MouseEvent& down, const MouseEvent& up,
                        const Proof& proof) {
  InputEvents& events = platform_.inputEvents;
  const auto first = events.create(source, down);
  const auto spare = events.create(source, up);
  proof();
  if (first && spare) {
    postToTarget(*first, failures::kPointCovered);
  }
  platform_.clock.sleep(kBetweenButtonEvents);
  if (spare) {
    release(source, up, *spare);
  }
  platform_.clock.sleep(kBetweenButtonEvents);
}

// The waits around a click turn the loop, so that its effects can be heard. A first click may do
// all there is to do, close its dialog for one: what cannot be proven then gets no second.
int Session::press(Point point, int count, const Proof& proof) {
  const auto source = platform_.inputEvents.makeSource("");
  glide(point, source.get(), kRestBeforePress);
  int click = 0;
  try {
    while (click < count) {
      pressOnce(source.get(), {MouseEventType::leftDown, point, click + 1},
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

void Session::rightPress(Point point, const Proof& proof) {
  const auto source = platform_.inputEvents.makeSource("");
  post(source.get(), MouseEvent{MouseEventType::moved, point});
  platform_.clock.sleep(kBeforeRightPress);
  pressOnce(source.get(), {MouseEventType::rightDown, point, 1},
            {MouseEventType::rightUp, point, 1}, proof);
  platform_.clock.turn(kMenuOpens);
}

// Interfaces that react to the pointer see a real approach, not a jump. On its way the pointer
// crosses whatever lies there; where it stays must be the target.
void Session::glide(Point point, EventSource* source, Duration settle) {
  const Point start =
      platform_.inputEvents.pointerLocation().value_or(Point{point.x, point.y - kGlideFromAbove});
  for (int step = 1; step < kGlideSteps; ++step) {
    const double part = static_cast<double>(step) / kGlideSteps;
    post(source,
         MouseEvent{MouseEventType::moved,
                    {start.x + (point.x - start.x) * part, start.y + (point.y - start.y) * part}});
    platform_.clock.turn(kGlideSlice);
  }
  const MouseEvent arrival{MouseEventType::moved, point};
  if (const auto created = platform_.inputEvents.create(source, arrival)) {
    postToTarget(*created, failures::kPointCovered);
  }
  platform_.clock.turn(kGlideSlice);
  platform_.clock.turn(settle);
}

}  // namespace tarqo
