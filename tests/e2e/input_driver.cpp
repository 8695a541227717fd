// Posts input events as the helper does, on demand: what they do to a real application can be seen
// without the checks that come before an action.
//
// Reads lines, answers each with "ok" or "refused":
//   type PACE TEXT            every grapheme cluster: down, a third of PACE ms, up, the rest of it
//   key CODE MODIFIERS        a virtual key code and a modifier mask in hexadecimal digits
//   hold CODE MODIFIERS MS    the same, down for so long
//   move X Y | drag X Y | down X Y | up X Y | rightDown X Y | rightUp X Y
//   scroll PIXELS
// Ends at the end of its input.

#include <chrono>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "platform/linux/linux_input_events.h"
#include "platform/linux/linux_x_display.h"
#include "platform/unicode.h"

namespace tarqo {
namespace {

using std::chrono::milliseconds;

class Driver {
 public:
  bool obey(const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    words >> verb;
    if (verb == "type") {
      return type(words);
    }
    if (verb == "key" || verb == "hold") {
      return press(words, verb == "hold");
    }
    if (verb == "scroll") {
      std::int32_t pixels = 0;
      words >> pixels;
      return post(ScrollEvent{pixels});
    }
    return point(verb, words);
  }

 private:
  static void pause(int ms) { std::this_thread::sleep_for(milliseconds(ms)); }

  bool post(const InputEvent& event) {
    const auto created = events_.create(pointer_.get(), event);
    if (created) {
      events_.post(*created);
    }
    return created != nullptr;
  }

  bool postPair(EventSource* source, const InputEvent& down, const InputEvent& up, int heldMs) {
    const auto first = events_.create(source, down);
    const auto second = events_.create(source, up);
    if (!first || !second) {
      return false;
    }
    events_.post(*first);
    pause(heldMs);
    events_.post(*second);
    return true;
  }

  bool type(std::istringstream& words) {
    int paceMs = 0;
    words >> paceMs;
    std::string text;
    std::getline(words.ignore(1), text);
    const auto source = events_.makeSource(text);
    bool posted = true;
    unicode::forEachCluster(text, [&](std::string_view cluster) {
      posted = posted && postPair(source.get(), TextEvent{std::string(cluster), true},
                                  TextEvent{std::string(cluster), false}, paceMs / 3);
      pause(paceMs - paceMs / 3);
    });
    return posted;
  }

  bool press(std::istringstream& words, bool isLong) {
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

  bool point(const std::string& verb, std::istringstream& words) {
    using enum MouseEventType;
    Point at;
    words >> at.x >> at.y;
    const std::pair<const char*, MouseEventType> verbs[] = {
        {"move", moved}, {"drag", leftDragged},    {"down", leftDown},
        {"up", leftUp},  {"rightDown", rightDown}, {"rightUp", rightUp}};
    for (const auto& [name, type] : verbs) {
      if (verb == name) {
        return post(MouseEvent{type, at, type == moved || type == leftDragged ? 0 : 1});
      }
    }
    return false;
  }

  lnx::XDisplay display_;
  lnx::LinuxInputEvents events_{display_};
  /// Keeps a button down from one line to the next.
  std::unique_ptr<EventSource> pointer_ = events_.makeSource("");
};

}  // namespace
}  // namespace tarqo

int main() {
  tarqo::Driver driver;
  for (std::string line; std::getline(std::cin, line);) {
    std::cout << (driver.obey(line) ? "ok" : "refused") << std::endl;
  }
}
