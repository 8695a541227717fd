#include "tests/contract/x_witness.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <array>
#include <cstdlib>
#include <utility>

namespace tarqo::contract {
namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

XConnection connect() { return XConnection(xcb_connect(nullptr, nullptr)); }

xcb_window_t rootOf(xcb_connection_t* c) {
  return xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
}

/// Waits until the server has processed all requests sent.
void sync(xcb_connection_t* c) {
  std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
}

xcb_atom_t atom(xcb_connection_t* c, const std::string& name) {
  const Reply<xcb_intern_atom_reply_t> reply(
      xcb_intern_atom_reply(
          c, xcb_intern_atom(c, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr),
      &std::free);
  return reply->atom;
}

std::string lineOf(const xcb_generic_event_t& event) {
  const auto& button = reinterpret_cast<const xcb_button_press_event_t&>(event);
  const std::string state = " +" + std::to_string(button.state);
  switch (event.response_type & 0x7f) {
    case XCB_BUTTON_PRESS:
      return "press " + std::to_string(button.detail) + state;
    case XCB_BUTTON_RELEASE:
      return "release " + std::to_string(button.detail) + state;
    case XCB_MOTION_NOTIFY:
      return "move " + std::to_string(button.root_x) + "," + std::to_string(button.root_y) + state;
    case XCB_KEY_PRESS:
      return "key " + std::to_string(button.detail) + state;
    case XCB_KEY_RELEASE:
      return "up " + std::to_string(button.detail) + state;
    default:
      return "";
  }
}

}  // namespace

XWitness::XWitness(const Rect& place, const std::string& type) : connection_(connect()) {
  xcb_connection_t* c = raw();
  root_ = rootOf(c);
  window_ = xcb_generate_id(c);
  inside_ = xcb_generate_id(c);
  const std::array<std::uint32_t, 2> values{
      1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_BUTTON_PRESS |
             XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_BUTTON_MOTION};
  xcb_create_window(c, XCB_COPY_FROM_PARENT, window_, root_, static_cast<std::int16_t>(place.x),
                    static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
                    static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                    values.data());
  xcb_create_window(c, XCB_COPY_FROM_PARENT, inside_, window_, -2, -2, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
  if (!type.empty()) {
    const xcb_atom_t value = atom(c, type);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window_, atom(c, "_NET_WM_WINDOW_TYPE"),
                        XCB_ATOM_ATOM, 32, 1, &value);
  }
  xcb_map_window(c, inside_);
  xcb_map_window(c, window_);
  sync(c);
}

void XWitness::giveFocus(xcb_window_t window) {
  xcb_set_input_focus(raw(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
  sync(raw());
}

void XWitness::grabKeyboard() {
  std::free(xcb_grab_keyboard_reply(raw(),
                                    xcb_grab_keyboard(raw(), 0, root_, XCB_CURRENT_TIME,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                    nullptr));
}

void XWitness::grabPointer() {
  const std::uint16_t buttons = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
  std::free(xcb_grab_pointer_reply(
      raw(),
      xcb_grab_pointer(raw(), 0, root_, buttons, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE,
                       XCB_NONE, XCB_CURRENT_TIME),
      nullptr));
}

void XWitness::ungrab() {
  xcb_ungrab_keyboard(raw(), XCB_CURRENT_TIME);
  xcb_ungrab_pointer(raw(), XCB_CURRENT_TIME);
  sync(raw());
}

std::vector<std::string> XWitness::arrived() {
  sync(raw());
  while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(raw()), &std::free}) {
    if (const std::string line = lineOf(*event); !line.empty()) {
      arrived_.push_back(line);
    }
  }
  return std::exchange(arrived_, {});
}

void XWitness::wait() {
  while (const Reply<xcb_generic_event_t> event{xcb_wait_for_event(raw()), &std::free}) {
  }
}

XStranger::XStranger(const Rect& place, const std::string& type) {
  std::array<int, 2> ready{};
  if (pipe(ready.data()) != 0) {
    return;
  }
  pid_ = fork();
  if (pid_ == 0) {
    XWitness witness(place, type);
    const bool reported = write(ready[1], "r", 1) == 1;
    if (reported) {
      witness.wait();
    }
    _exit(0);
  }
  close(ready[1]);
  char byte = 0;
  static_cast<void>(read(ready[0], &byte, 1));
  close(ready[0]);
}

XStranger::~XStranger() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

XUser::XUser() : connection_(connect()) {}

bool XUser::isDown(xcb_keycode_t key) const {
  const Reply<xcb_query_keymap_reply_t> reply(
      xcb_query_keymap_reply(connection_.get(), xcb_query_keymap(connection_.get()), nullptr),
      &std::free);
  return (reply->keys[key / 8] >> (key % 8) & 1U) != 0;
}

void XUser::fake(std::uint8_t type, xcb_keycode_t key) {
  xcb_test_fake_input(connection_.get(), type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
  sync(connection_.get());
}

}  // namespace tarqo::contract
