#include "tests/platform/linux/x11/fake_x_server.h"

#include <sys/socket.h>
#include <unistd.h>
#include <xcb/res.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <utility>

namespace tarqo::lnx::x11 {
namespace {

constexpr std::uint32_t kClientMask = 0x1fffff;
constexpr std::uint8_t kResource = 140;  // The opcode of the extension.
constexpr std::uint8_t kErrorWindow = 3;
constexpr xcb_atom_t kFirstAtom = 1000;
constexpr xcb_timestamp_t kTime = 4711;
constexpr std::uint16_t kHeadSize = 32;

template <typename Request>
Request as(const std::vector<std::uint8_t>& bytes) {
  Request request{};
  std::memcpy(&request, bytes.data(), std::min(sizeof(request), bytes.size()));
  return request;
}

template <typename T>
void append(std::vector<std::uint8_t>& bytes, const T& value) {
  const auto* from = reinterpret_cast<const std::uint8_t*>(&value);
  bytes.insert(bytes.end(), from, from + sizeof(value));
}

/// The name in a request, behind its fixed part of 8 bytes.
std::string nameIn(const std::vector<std::uint8_t>& request, std::size_t length) {
  return {request.begin() + 8, request.begin() + 8 + static_cast<std::ptrdiff_t>(length)};
}

std::string hexadecimal(std::uint32_t number) {
  std::ostringstream out;
  out << std::hex << number;
  return out.str();
}

}  // namespace

FakeProperty numbers(const std::vector<std::uint32_t>& values) {
  FakeProperty property;
  for (const std::uint32_t value : values) {
    append(property.bytes, value);
  }
  return property;
}

FakeProperty text(std::string_view bytes) {
  return {XCB_ATOM_STRING, 8, {bytes.begin(), bytes.end()}};
}

FakeXServer::FakeXServer() {
  atoms_ = {{"WM_NAME", XCB_ATOM_WM_NAME}, {"WM_CLASS", XCB_ATOM_WM_CLASS}};
  nodes_[kRoot].window.area = kScreen;
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) {
    std::abort();
  }
  socket_ = ends[0];
  thread_ = std::thread([this] { serve(); });
  client_ = Server::over(clock_, xcb_connect_to_fd(ends[1], nullptr), 0);
}

FakeXServer::~FakeXServer() {
  client_.reset();
  thread_.join();
  ::close(socket_);
}

xcb_window_t FakeXServer::add(const FakeWindow& window, xcb_window_t parent,
                              std::optional<Pid> pid) {
  const std::lock_guard lock(mutex_);
  lastClient_ += kClientMask + 1;
  const xcb_window_t number = 0x10000000 + lastClient_ + 1;
  nodes_[number] = {window, parent, pid, {}};
  nodes_[parent].children.push_back(number);
  return number;
}

void FakeXServer::set(xcb_window_t window, const std::string& property, const FakeProperty& value) {
  const std::lock_guard lock(mutex_);
  nodes_.at(window).window.properties[property] = value;
}

void FakeXServer::manage(const std::vector<xcb_window_t>& clients) {
  const xcb_window_t check = add({.area = {-1, -1, 1, 1}, .viewable = false, .inputOnly = true});
  set(check, "_NET_SUPPORTING_WM_CHECK", numbers({check}));
  set(kRoot, "_NET_SUPPORTING_WM_CHECK", numbers({check}));
  set(kRoot, "_NET_CLIENT_LIST", numbers(clients));
}

void FakeXServer::hangUp() const { ::shutdown(socket_, SHUT_RDWR); }

xcb_atom_t FakeXServer::atom(const std::string& name) {
  const std::lock_guard lock(mutex_);
  return atomOf(name);
}

void FakeXServer::setFocus(xcb_window_t window) {
  const std::lock_guard lock(mutex_);
  focus_ = window;
}

void FakeXServer::setPointer(xcb_window_t child) {
  const std::lock_guard lock(mutex_);
  pointer_ = child;
}

std::vector<std::string> FakeXServer::requests() {
  const std::lock_guard lock(mutex_);
  return std::exchange(requests_, {});
}

xcb_atom_t FakeXServer::atomOf(const std::string& name) {
  return atoms_.try_emplace(name, kFirstAtom + static_cast<xcb_atom_t>(atoms_.size()))
      .first->second;
}

std::string FakeXServer::nameOf(xcb_atom_t atom) const {
  for (const auto& [name, number] : atoms_) {
    if (number == atom) {
      return name;
    }
  }
  return "";
}

bool FakeXServer::receive(void* data, std::size_t size) const {
  return size == 0 || ::recv(socket_, data, size, MSG_WAITALL) == static_cast<ssize_t>(size);
}

void FakeXServer::send(const Bytes& bytes) const {
  static_cast<void>(::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

void FakeXServer::serve() {
  xcb_setup_request_t hello{};
  if (!receive(&hello, sizeof(hello))) {
    return;
  }
  sendSetup();
  for (;;) {
    Bytes request(4);
    if (!receive(request.data(), request.size())) {
      return;
    }
    const std::size_t size = 4 * (request[2] + request[3] * std::size_t{256});
    request.resize(size);
    if (!receive(request.data() + 4, size - 4)) {
      return;
    }
    const std::lock_guard lock(mutex_);
    ++sequence_;
    answer(request);
  }
}

void FakeXServer::sendSetup() const {
  xcb_setup_t setup{};
  setup.status = 1;
  setup.protocol_major_version = 11;
  setup.length = (sizeof(setup) - 8 + sizeof(xcb_screen_t)) / 4;
  setup.resource_id_base = kClientMask + 1;
  setup.resource_id_mask = kClientMask;
  setup.maximum_request_length = 0xffff;
  setup.roots_len = 1;
  setup.min_keycode = 8;
  setup.max_keycode = 255;
  xcb_screen_t screen{};
  screen.root = kRoot;
  screen.width_in_pixels = static_cast<std::uint16_t>(kScreen.width);
  screen.height_in_pixels = static_cast<std::uint16_t>(kScreen.height);
  Bytes bytes;
  append(bytes, setup);
  append(bytes, screen);
  send(bytes);
}

template <typename Reply, typename Fill>
void FakeXServer::reply(const Fill& fill, const Bytes& rest) const {
  Reply head{};
  fill(head);
  head.response_type = 1;
  head.sequence = sequence_;
  Bytes bytes;
  append(bytes, head);
  bytes.insert(bytes.end(), rest.begin(), rest.end());
  bytes.resize(std::max<std::size_t>((bytes.size() + 3) / 4 * 4, kHeadSize));
  const auto words = static_cast<std::uint32_t>((bytes.size() - kHeadSize) / 4);
  std::memcpy(bytes.data() + 4, &words, sizeof(words));
  send(bytes);
}

void FakeXServer::fail(std::uint8_t code) const {
  xcb_generic_error_t error{};
  error.error_code = code;
  error.sequence = sequence_;
  Bytes bytes;
  append(bytes, error);
  bytes.resize(kHeadSize);
  send(bytes);
}

void FakeXServer::answer(const Bytes& request) {
  switch (request[0]) {
    case XCB_QUERY_EXTENSION: {
      const std::string name = nameIn(request, as<xcb_query_extension_request_t>(request).name_len);
      return reply<xcb_query_extension_reply_t>([&](auto& extension) {
        extension.present = name == "X-Resource";
        extension.major_opcode = kResource;
      });
    }
    case XCB_INTERN_ATOM: {
      const std::string name = nameIn(request, as<xcb_intern_atom_request_t>(request).name_len);
      return reply<xcb_intern_atom_reply_t>([&](auto& atom) { atom.atom = atomOf(name); });
    }
    case kResource:
      return request[1] == XCB_RES_QUERY_VERSION ? sendResourceVersion() : sendClientIds(request);
    case XCB_GET_INPUT_FOCUS:
      return reply<xcb_get_input_focus_reply_t>([&](auto& focus) { focus.focus = focus_; });
    case XCB_QUERY_POINTER:
      return reply<xcb_query_pointer_reply_t>([&](auto& pointer) { pointer.child = pointer_; });
    case XCB_GET_WINDOW_ATTRIBUTES:
    case XCB_GET_GEOMETRY:
    case XCB_QUERY_TREE:
    case XCB_TRANSLATE_COORDINATES:
    case XCB_GET_PROPERTY:
      return answerAbout(request);
    default:
      note(request);
  }
}

void FakeXServer::answerAbout(const Bytes& request) {
  const auto found = nodes_.find(as<xcb_get_geometry_request_t>(request).drawable);
  if (found == nodes_.end()) {
    return fail(kErrorWindow);
  }
  switch (request[0]) {
    case XCB_GET_WINDOW_ATTRIBUTES:
      return sendAttributes(found->second);
    case XCB_GET_GEOMETRY:
      return sendGeometry(found->second.window.area);
    case XCB_QUERY_TREE:
      return sendTree(found->second);
    case XCB_TRANSLATE_COORDINATES:
      return sendTranslation(request);
    default:
      return sendProperty(request);
  }
}

void FakeXServer::sendAttributes(const Node& node) const {
  const FakeWindow& window = node.window;
  reply<xcb_get_window_attributes_reply_t>([&](auto& attributes) {
    attributes._class =
        window.inputOnly ? XCB_WINDOW_CLASS_INPUT_ONLY : XCB_WINDOW_CLASS_INPUT_OUTPUT;
    attributes.map_state = window.viewable ? XCB_MAP_STATE_VIEWABLE : XCB_MAP_STATE_UNMAPPED;
    attributes.override_redirect = window.overrideRedirect;
  });
}

void FakeXServer::sendGeometry(const Rect& area) const {
  reply<xcb_get_geometry_reply_t>([&](auto& geometry) {
    geometry.x = static_cast<std::int16_t>(area.x);
    geometry.y = static_cast<std::int16_t>(area.y);
    geometry.width = static_cast<std::uint16_t>(area.width);
    geometry.height = static_cast<std::uint16_t>(area.height);
  });
}

void FakeXServer::sendTranslation(const Bytes& request) const {
  const auto asked = as<xcb_translate_coordinates_request_t>(request);
  const Point origin = originOf(asked.src_window);
  const Point at{origin.x + asked.src_x, origin.y + asked.src_y};
  reply<xcb_translate_coordinates_reply_t>([&](auto& translated) {
    for (const xcb_window_t child : nodes_.at(kRoot).children) {
      const FakeWindow& each = nodes_.at(child).window;
      if (each.viewable && each.area.contains(at)) {
        translated.child = child;
      }
    }
    translated.dst_x = static_cast<std::int16_t>(at.x);
    translated.dst_y = static_cast<std::int16_t>(at.y);
  });
}

void FakeXServer::sendTree(const Node& node) const {
  Bytes children;
  for (const xcb_window_t child : node.children) {
    append(children, child);
  }
  reply<xcb_query_tree_reply_t>(
      [&](auto& tree) {
        tree.root = kRoot;
        tree.parent = node.parent;
        tree.children_len = static_cast<std::uint16_t>(node.children.size());
      },
      children);
}

void FakeXServer::sendProperty(const Bytes& request) {
  const auto asked = as<xcb_get_property_request_t>(request);
  const auto& properties = nodes_.at(asked.window).window.properties;
  const auto found = properties.find(nameOf(asked.property));
  const FakeProperty property =
      found != properties.end() ? found->second : FakeProperty{XCB_ATOM_NONE, 0, {}};
  const auto size = static_cast<std::uint32_t>(property.bytes.size());
  reply<xcb_get_property_reply_t>(
      [&](auto& head) {
        head.type = property.type;
        head.format = property.format;
        head.value_len = property.format == 0 ? 0 : size * 8 / property.format;
      },
      property.bytes);
}

void FakeXServer::sendResourceVersion() const {
  reply<xcb_res_query_version_reply_t>([](auto& version) {
    version.server_major = 1;
    version.server_minor = 2;
  });
}

void FakeXServer::sendClientIds(const Bytes& request) const {
  Bytes ids;
  std::uint32_t count = 0;
  for (std::size_t at = 8; at + 8 <= request.size(); at += 8) {
    xcb_res_client_id_spec_t spec{};
    std::memcpy(&spec, request.data() + at, sizeof(spec));
    const auto node = nodes_.find(spec.client);
    if (node == nodes_.end() || !node->second.pid) {
      continue;
    }
    append(ids, spec.client & ~kClientMask);
    append(ids, spec.mask);
    append(ids, std::uint32_t{4});  // The bytes of the value.
    append(ids, static_cast<std::uint32_t>(*node->second.pid));
    ++count;
  }
  reply<xcb_res_query_client_ids_reply_t>([&](auto& head) { head.num_ids = count; }, ids);
}

Point FakeXServer::originOf(xcb_window_t window) const {
  Point origin;
  for (; window != XCB_NONE && window != kRoot; window = nodes_.at(window).parent) {
    origin.x += nodes_.at(window).window.area.x;
    origin.y += nodes_.at(window).window.area.y;
  }
  return origin;
}

void FakeXServer::note(const Bytes& request) {
  switch (request[0]) {
    case XCB_SEND_EVENT: {
      xcb_client_message_event_t event{};
      std::memcpy(&event, request.data() + 12, sizeof(event));
      std::string line = "message " + nameOf(event.type) + " to " + hexadecimal(event.window) + ":";
      for (const std::uint32_t number : event.data.data32) {
        line += " " + std::to_string(number);
      }
      requests_.push_back(line);
      return;
    }
    case XCB_CONFIGURE_WINDOW:
      requests_.push_back("raise " +
                          hexadecimal(as<xcb_configure_window_request_t>(request).window));
      return;
    case XCB_SET_INPUT_FOCUS:
      requests_.push_back("focus " + hexadecimal(as<xcb_set_input_focus_request_t>(request).focus));
      return;
    case XCB_CHANGE_PROPERTY: {
      xcb_property_notify_event_t event{};
      event.response_type = XCB_PROPERTY_NOTIFY;
      event.sequence = sequence_;
      event.window = as<xcb_change_property_request_t>(request).window;
      event.time = kTime;
      Bytes bytes;
      append(bytes, event);
      bytes.resize(kHeadSize);
      return send(bytes);
    }
    default:
      return;
  }
}

}  // namespace tarqo::lnx::x11
