// A stranger on the desktop: comes over other applications' windows at a moment that it is given,
// and logs every button, key and turn of the wheel that it gets.
//
// Reads commands from standard input, one a line, and answers each with "done COMMAND":
//
//   backdrop X Y WIDTH HEIGHT     shows its ordinary window there, below all others
//   popup X Y WIDTH HEIGHT        where its popup, which no window manager knows, will show
//   now DEED                      does it at once
//   after EVENT COUNT MS DEED     does it MS milliseconds after the COUNTth EVENT from now, whoever
//                                 gets it: motion, press, release, wheel, key, or now
//   away WINDOW                   forgets what it shall do, hides the popup, lowers its window and
//                                 has the manager bring WINDOW to the front
//   park X Y                      puts the pointer there
//   sync                          nothing; all that has arrived before has been logged
//
// Deeds: popup; keys (the popup, which takes the keyboard); window (raises the ordinary window);
// above (the same, and it stays above all others); focus (the same, and it takes the keyboard);
// move WINDOW X Y and close WINDOW (of anybody).
//
// Prints "came" after a deed, and "got press 1", "got wheel 5", "got key 38" for what it received.

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XInput2.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Words = std::vector<std::string>;

constexpr long kFromPager = 2;
constexpr long kReceived = ButtonPressMask | ButtonReleaseMask | KeyPressMask;

int number(const std::string& word) {
  return static_cast<int>(std::strtol(word.c_str(), nullptr, 0));
}

/// What is to be done, and when.
struct Plan {
  std::string event;  ///< Empty once it has come.
  int left = 0;
  std::chrono::milliseconds delay{};
  Words deed;
  std::optional<Clock::time_point> due;
};

class Intruder {
 public:
  Intruder() : display_(XOpenDisplay(nullptr)) {
    if (display_ == nullptr) {
      std::exit(1);
    }
    root_ = DefaultRootWindow(display_);
    window_ = makeWindow(False);
    popup_ = makeWindow(True);
    XStoreName(display_, window_, "Intruder");
    hearEverything();
    std::cout << "ready" << std::endl;
  }

  void run() {
    while (true) {
      std::array<pollfd, 2> inputs{
          {{STDIN_FILENO, POLLIN, 0}, {ConnectionNumber(display_), POLLIN, 0}}};
      poll(inputs.data(), inputs.size(), waitMs());
      takeEvents();
      if (plan_.due && Clock::now() >= *plan_.due) {
        plan_.due.reset();
        perform(plan_.deed);
        std::cout << "came" << std::endl;
      }
      if (inputs[0].revents != 0 && !readCommands()) {
        return;
      }
    }
  }

 private:
  Window makeWindow(Bool isPopup) {
    XSetWindowAttributes attributes{};
    attributes.override_redirect = isPopup;
    attributes.background_pixel = isPopup != False ? 0xcc4444 : 0x4444cc;
    attributes.event_mask = kReceived;
    return XCreateWindow(display_, root_, 0, 0, 10, 10, 0, CopyFromParent, InputOutput, nullptr,
                         CWOverrideRedirect | CWBackPixel | CWEventMask, &attributes);
  }

  /// Raw events report what any device does, whoever gets it.
  void hearEverything() {
    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 2;
    if (XQueryExtension(display_, "XInputExtension", &inputOpcode_, &event, &error) == False ||
        XIQueryVersion(display_, &major, &minor) != Success) {
      std::exit(1);
    }
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    for (const int kind : {XI_RawMotion, XI_RawButtonPress, XI_RawButtonRelease, XI_RawKeyPress}) {
      XISetMask(bits.data(), kind);
    }
    XIEventMask mask{XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    XISelectEvents(display_, root_, &mask, 1);
    XSync(display_, False);
  }

  [[nodiscard]] int waitMs() const {
    if (!plan_.due) {
      return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*plan_.due - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
  }

  void takeEvents() {
    while (XPending(display_) > 0) {
      XEvent event;
      XNextEvent(display_, &event);
      if (event.type == GenericEvent && event.xcookie.extension == inputOpcode_) {
        if (XGetEventData(display_, &event.xcookie) != False) {
          noteRaw(*static_cast<const XIRawEvent*>(event.xcookie.data));
          XFreeEventData(display_, &event.xcookie);
        }
      } else {
        logReceived(event);
      }
    }
  }

  static bool isWheel(int button) { return button >= 4 && button <= 7; }

  static std::string nameOf(const XIRawEvent& event) {
    switch (event.evtype) {
      case XI_RawMotion:
        return "motion";
      case XI_RawButtonPress:
        return isWheel(event.detail) ? "wheel" : "press";
      case XI_RawButtonRelease:
        return isWheel(event.detail) ? "" : "release";
      default:
        return "key";
    }
  }

  void noteRaw(const XIRawEvent& event) {
    if (plan_.event.empty() || plan_.event != nameOf(event) || --plan_.left > 0) {
      return;
    }
    plan_.event.clear();
    plan_.due = Clock::now() + plan_.delay;
  }

  static void logReceived(const XEvent& event) {
    if (event.type == KeyPress) {
      std::cout << "got key " << event.xkey.keycode << std::endl;
    } else if (event.type == ButtonPress || event.type == ButtonRelease) {
      const int button = static_cast<int>(event.xbutton.button);
      if (!isWheel(button)) {
        std::cout << (event.type == ButtonPress ? "got press " : "got release ") << button
                  << std::endl;
      } else if (event.type == ButtonPress) {
        std::cout << "got wheel " << button << std::endl;
      }
    }
  }

  void askManager(Window window, const char* what, long first, long second) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display_, what, False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = first;
    event.xclient.data.l[1] = second;
    XSendEvent(display_, root_, False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
  }

  void keepAbove(bool isKept) {
    const Atom above = XInternAtom(display_, "_NET_WM_STATE_ABOVE", False);
    askManager(window_, "_NET_WM_STATE", isKept ? 1 : 0, static_cast<long>(above));
  }

  void perform(const Words& deed) {
    if (deed[0] == "popup" || deed[0] == "keys") {
      XMapRaised(display_, popup_);
      if (deed[0] == "keys") {
        XSetInputFocus(display_, popup_, RevertToPointerRoot, CurrentTime);
      }
    } else if (deed[0] == "window") {
      XRaiseWindow(display_, window_);
    } else if (deed[0] == "above") {
      keepAbove(true);
    } else if (deed[0] == "focus") {
      askManager(window_, "_NET_ACTIVE_WINDOW", kFromPager, CurrentTime);
    } else if (deed[0] == "move" && deed.size() == 4) {
      XMoveWindow(display_, static_cast<Window>(number(deed[1])), number(deed[2]), number(deed[3]));
    } else if (deed[0] == "close" && deed.size() == 2) {
      askManager(static_cast<Window>(number(deed[1])), "_NET_CLOSE_WINDOW", CurrentTime,
                 kFromPager);
    }
    XFlush(display_);
  }

  void place(Window window, const Words& words) {
    XMoveResizeWindow(display_, window, number(words[1]), number(words[2]),
                      static_cast<unsigned>(number(words[3])),
                      static_cast<unsigned>(number(words[4])));
  }

  /// The manager is to leave it where it is, and not to give it the focus when it comes.
  void showBackdrop(const Words& words) {
    XSizeHints size{};
    size.flags = USPosition | USSize;
    XSetWMNormalHints(display_, window_, &size);
    const unsigned long never = 0;
    XChangeProperty(display_, window_, XInternAtom(display_, "_NET_WM_USER_TIME", False), 6, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&never), 1);
    place(window_, words);
    XMapWindow(display_, window_);
    XLowerWindow(display_, window_);
  }

  void obey(const Words& words) {
    if (words[0] == "backdrop" && words.size() == 5) {
      showBackdrop(words);
    } else if (words[0] == "popup" && words.size() == 5) {
      place(popup_, words);
    } else if (words[0] == "now" && words.size() > 1) {
      perform({words.begin() + 1, words.end()});
    } else if (words[0] == "after" && words.size() > 4) {
      plan_ = {words[1],
               number(words[2]),
               std::chrono::milliseconds(number(words[3])),
               {words.begin() + 4, words.end()},
               std::nullopt};
      if (words[1] == "now") {
        plan_.event.clear();
        plan_.due = Clock::now() + plan_.delay;
      }
    } else if (words[0] == "away" && words.size() == 2) {
      plan_ = {};
      XUnmapWindow(display_, popup_);
      keepAbove(false);
      XLowerWindow(display_, window_);
      askManager(static_cast<Window>(number(words[1])), "_NET_ACTIVE_WINDOW", kFromPager,
                 CurrentTime);
    } else if (words[0] == "park" && words.size() == 3) {
      XWarpPointer(display_, None, root_, 0, 0, 0, 0, number(words[1]), number(words[2]));
    }
    XSync(display_, False);
    takeEvents();
    std::cout << "done " << words[0] << std::endl;
  }

  bool readCommands() {
    std::array<char, 512> bytes{};
    const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count <= 0) {
      return false;
    }
    unread_.append(bytes.data(), static_cast<std::size_t>(count));
    for (std::size_t end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
      std::istringstream line(unread_.substr(0, end));
      unread_.erase(0, end + 1);
      const Words words{std::istream_iterator<std::string>(line), {}};
      if (!words.empty()) {
        obey(words);
      }
    }
    return true;
  }

  Display* display_;
  Window root_ = None;
  Window window_ = None;
  Window popup_ = None;
  int inputOpcode_ = 0;
  Plan plan_;
  std::string unread_;
};

}  // namespace

int main() {
  // A window that closes by itself must not end this program.
  XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
  Intruder().run();
}
