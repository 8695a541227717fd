// Posts input events as the helper does, on demand: what they do to a real application can be seen
// without the checks that come before an action.
//
// Reads lines, answers each with "ok", with "refused" when an event could not be created, or with
// "elsewhere" when one would not have reached the receiver:
//   to PID                    what acts from now on goes to that process only; 0 for no matter
//   which time N                    posts N moves to where the pointer is, and answers with the
//                             milliseconds that one took: the median and the 99th percentile
//   type PACE TEXT            every grapheme cluster: down, a third of PACE ms, up, the rest of it
//   key CODE MODIFIERS        a virtual key code and a modifier mask in hexadecimal digits
//   hold CODE MODIFIERS MS    the same, down for so long
//   move X Y | drag X Y | down X Y | up X Y | rightDown X Y | rightUp X Y
//   scroll PIXELS
// Ends at the end of its input.

#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/input/linux_input_events.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/x11/connection.h"
#include "platform/unicode.h"

namespace tarqo {
namespace {

using std::chrono::milliseconds;

enum class Outcome { ok, refused, elsewhere };

class Driver {
 public:
  Outcome obey(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    words >> verb;
    if (verb == "to") {
      words >> receiver_;
      return Outcome::ok;
    }
    if (verb == "type") {
      return type(words);
    }
    if (verb == "key" || verb == "hold") {
      return press(words, verb == "hold");
    }
    if (verb == "scroll") {
      std::int32_t pixels = 0;
      words >> pixels;
      return post(ScrollEvent{pixels}, true);
    }
    return point(verb, words);
  }

  /// How long an event takes that is judged and posted, in milliseconds.
  std::string time(std::istringstream& words) {
    std::string kind;
    std::size_t count = 0;
    words >> kind >> count;
    const auto source = events_.makeSource("");
    const Point at = events_.pointerLocation().value_or(Point{});
    const InputEvent event = kind == "text" ? InputEvent(TextEvent{"a", true})
                                            : MouseEvent{MouseEventType::moved, at, 0};
    std::vector<double> taken;
    for (std::size_t i = 0; i < count; ++i) {
      const auto created = events_.create(source.get(), event);
      const auto start = std::chrono::steady_clock::now();
      if (!created || !events_.postTo(receiver_, *created)) {
        return "elsewhere";
      }
      const std::chrono::duration<double, std::milli> one =
          std::chrono::steady_clock::now() - start;
      taken.push_back(one.count());
      pause(2);
    }
    std::sort(taken.begin(), taken.end());
    std::ostringstream answer;
    answer << taken.at(count / 2) << " " << taken.at(count * 99 / 100);
    return answer.str();
  }

 private:
  static void pause(int ms) { std::this_thread::sleep_for(milliseconds(ms)); }

  /// Events that act go to the receiver only, if one was named.
  bool send(const CreatedEvent& event, bool acts) {
    if (acts && receiver_ != 0) {
      return events_.postTo(receiver_, event);
    }
    events_.post(event);
    return true;
  }

  Outcome post(const InputEvent& event, bool acts) {
    const auto created = events_.create(pointer_.get(), event);
    if (!created) {
      return Outcome::refused;
    }
    return send(*created, acts) ? Outcome::ok : Outcome::elsewhere;
  }

  Outcome postPair(EventSource* source, const InputEvent& down, const InputEvent& up, int heldMs) {
    const auto first = events_.create(source, down);
    const auto second = events_.create(source, up);
    if (!first || !second) {
      return Outcome::refused;
    }
    if (!send(*first, true)) {
      return Outcome::elsewhere;
    }
    pause(heldMs);
    events_.post(*second);
    return Outcome::ok;
  }

  Outcome type(std::istringstream& words) {
    int paceMs = 0;
    words >> paceMs;
    std::string text;
    std::getline(words.ignore(1), text);
    const auto source = events_.makeSource(text);
    Outcome outcome = Outcome::ok;
    unicode::forEachCluster(text, [&](std::string_view cluster) {
      if (outcome == Outcome::ok) {
        outcome = postPair(source.get(), TextEvent{std::string(cluster), true},
                           TextEvent{std::string(cluster), false}, paceMs / 3);
        pause(paceMs - paceMs / 3);
      }
    });
    return outcome;
  }

  Outcome press(std::istringstream& words, bool isLong) {
    std::uint16_t code = 0;
    Modifiers modifiers = 0;
    int heldMs = 30;
    words >> code >> std::hex >> modifiers >> std::dec;
    if (isLong) {
      words >> heldMs;
    }
    const auto source = events_.makeSource("");
    return postPair(source.get(), KeyEvent{code, true, modifiers}, KeyEvent{code, false, modifiers},
                    heldMs);
  }

  Outcome point(const std::string& verb, std::istringstream& words) {
    using enum MouseEventType;
    Point at;
    words >> at.x >> at.y;
    const std::pair<const char*, MouseEventType> verbs[] = {
        {"move", moved}, {"drag", leftDragged},    {"down", leftDown},
        {"up", leftUp},  {"rightDown", rightDown}, {"rightUp", rightUp}};
    for (const auto& [name, type] : verbs) {
      if (verb == name) {
        return post(MouseEvent{type, at, type == moved || type == leftDragged ? 0 : 1},
                    type == leftDown || type == rightDown);
      }
    }
    return Outcome::refused;
  }

  Pid receiver_ = 0;
  lnx::LinuxClock clock_;
  lnx::x11::Display display_{clock_};
  lnx::input::LinuxInputEvents events_{display_, clock_};
  /// Keeps a button down from one line to the next.
  std::unique_ptr<EventSource> pointer_ = events_.makeSource("");
};

}  // namespace
}  // namespace tarqo

int main() {
  tarqo::Driver driver;
  for (std::string line; std::getline(std::cin, line);) {
    if (line.starts_with("time ")) {
      std::istringstream words(line.substr(5));
      std::cout << driver.time(words) << std::endl;
      continue;
    }
    constexpr std::array kAnswers{"ok", "refused", "elsewhere"};
    std::cout << kAnswers.at(static_cast<std::size_t>(driver.obey(line))) << std::endl;
  }
}
