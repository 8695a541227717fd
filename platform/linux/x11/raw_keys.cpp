#include "platform/linux/x11/raw_keys.h"

#include <sys/uio.h>
#include <xcb/xcbext.h>

#include <array>
#include <cstring>

namespace tarqo::lnx::x11 {
namespace {

// Only two requests and one event of the XInput extension are needed, so they are written out here
// and no further library is linked.
xcb_extension_t extensionId{"XInputExtension", 0};

constexpr std::uint8_t kSelectEvents = 46;
constexpr std::uint8_t kQueryVersion = 47;
constexpr std::uint16_t kAllMasterDevices = 1;
constexpr std::uint16_t kRawKeyPress = 13;
constexpr std::uint16_t kRawKeyRelease = 14;

struct QueryVersion {
  std::array<std::uint8_t, 4> head{};  // The library writes the opcodes and the length.
  std::uint16_t major = 2;
  std::uint16_t minor = 2;
};

struct QueryVersionReply {
  std::array<std::uint8_t, 8> head{};
  std::uint16_t major = 0;
  std::uint16_t minor = 0;
};

struct SelectEvents {
  std::array<std::uint8_t, 4> head{};
  xcb_window_t window = XCB_NONE;
  std::uint16_t masks = 1;
  std::uint16_t padding = 0;
  std::uint16_t device = kAllMasterDevices;
  std::uint16_t words = 1;
  std::uint32_t mask = 0;
};

struct RawKeyEvent {
  std::uint8_t type;
  std::uint8_t extension;
  std::uint16_t sequence;
  std::uint32_t length;
  std::uint16_t kind;
  std::uint16_t device;
  xcb_timestamp_t time;
  std::uint32_t key;
};

struct Sequence {
  unsigned int sequence = 0;
};

template <typename Request>
Sequence send(Server& server, Request request, std::uint8_t opcode, bool isAnswered) {
  const xcb_protocol_request_t protocol{1, &extensionId, opcode,
                                        static_cast<std::uint8_t>(isAnswered ? 0 : 1)};
  std::array<iovec, 3> parts{};  // The library uses the two before the first.
  parts[2] = {&request, sizeof(request)};
  return {
      xcb_send_request(server.raw(), isAnswered ? XCB_REQUEST_CHECKED : 0, &parts[2], &protocol)};
}

void select(Server& server, std::uint32_t mask) {
  SelectEvents request;
  request.window = server.root();
  request.mask = mask;
  send(server, request, kSelectEvents, false);
}

}  // namespace

bool reportsRawKeys(Server& server) {
  const xcb_query_extension_reply_t* found = xcb_get_extension_data(server.raw(), &extensionId);
  if (found == nullptr || found->present == 0) {
    return false;
  }
  const auto version =
      server.take<QueryVersionReply>(send(server, QueryVersion{}, kQueryVersion, true));
  // Before 2.1 only the client that had grabbed the keyboard received them.
  return version && (version->major > 2 || (version->major == 2 && version->minor >= 1));
}

RawKeyWatch::RawKeyWatch(Display& display) : display_(display) {
  Server* server = display_.server();
  if (server == nullptr || !server->extensions().rawKeys) {
    return;
  }
  connection_ = server->serial();
  extension_ = xcb_get_extension_data(server->raw(), &extensionId)->major_opcode;
  server->setEventHandler([this](const xcb_generic_event_t& event) { count(event); });
  select(*server, 1U << kRawKeyPress | 1U << kRawKeyRelease);
}

RawKeyWatch::~RawKeyWatch() {
  Server* server = display_.server();
  if (server != nullptr && server->serial() == connection_) {
    select(*server, 0);
    server->setEventHandler(nullptr);
  }
}

void RawKeyWatch::count(const xcb_generic_event_t& event) {
  RawKeyEvent raw{};
  std::memcpy(&raw, &event, sizeof(raw));
  if ((raw.type & 0x7f) == XCB_GE_GENERIC && raw.extension == extension_ &&
      (raw.kind == kRawKeyPress || raw.kind == kRawKeyRelease)) {
    releases_[static_cast<xcb_keycode_t>(raw.key)] += raw.kind == kRawKeyRelease ? 1 : -1;
  }
}

std::map<xcb_keycode_t, int> RawKeyWatch::releases(Server& server) const {
  server.sync();
  server.dropEvents();
  return releases_;
}

}  // namespace tarqo::lnx::x11
