#include "platform/linux/x11/extensions.h"

#include <sys/socket.h>
#include <xcb/composite.h>
#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/shm.h>
#include <xcb/xtest.h>

#include <array>
#include <cstdint>
#include <utility>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/raw_keys.h"
#include "platform/linux/x11/xkb.h"

namespace tarqo::lnx::x11 {
namespace {

bool isAtLeast(std::uint32_t major, std::uint32_t minor, std::uint32_t wantedMajor,
               std::uint32_t wantedMinor) {
  return std::pair(major, minor) >= std::pair(wantedMajor, wantedMinor);
}

/// Sending a file descriptor over any other socket ends the connection.
bool isLocalSocket(int socket) {
  int domain = 0;
  socklen_t size = sizeof(domain);
  return ::getsockopt(socket, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 && domain == AF_UNIX;
}

}  // namespace

Extensions readExtensions(Server& server) {
  Extensions extensions;
  xcb_connection_t* c = server.raw();
  const std::array<xcb_extension_t*, 6> all = {&xcb_composite_id, &xcb_randr_id, &xcb_res_id,
                                               &xcb_shm_id,       &xcb_test_id,  &xcb_xkb_id};
  for (xcb_extension_t* extension : all) {
    xcb_prefetch_extension_data(c, extension);
  }
  // A request of an extension that the server lacks would end the connection.
  const auto present = [c](xcb_extension_t* extension) {
    const xcb_query_extension_reply_t* found = xcb_get_extension_data(c, extension);
    return found != nullptr && found->present != 0;
  };
  if (present(&xcb_composite_id)) {
    const auto version =
        server.take<xcb_composite_query_version_reply_t>(xcb_composite_query_version(c, 0, 4));
    extensions.composite =
        version && isAtLeast(version->major_version, version->minor_version, 0, 2);
  }
  if (present(&xcb_randr_id)) {
    const auto version =
        server.take<xcb_randr_query_version_reply_t>(xcb_randr_query_version(c, 1, 5));
    extensions.randrMonitors =
        version && isAtLeast(version->major_version, version->minor_version, 1, 5);
  }
  if (present(&xcb_res_id)) {
    const auto version = server.take<xcb_res_query_version_reply_t>(xcb_res_query_version(c, 1, 2));
    extensions.resourcePids =
        version && isAtLeast(version->server_major, version->server_minor, 1, 2);
  }
  if (present(&xcb_shm_id)) {
    const auto version = server.take<xcb_shm_query_version_reply_t>(xcb_shm_query_version(c));
    extensions.shmDescriptors = version &&
                                isAtLeast(version->major_version, version->minor_version, 1, 2) &&
                                isLocalSocket(xcb_get_file_descriptor(c));
  }
  extensions.test = present(&xcb_test_id);
  if (present(&xcb_xkb_id)) {
    const auto use = server.take<xcb_xkb_use_extension_reply_t>(
        xcb_xkb_use_extension(c, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION));
    extensions.keyboard = use && use->supported != 0;
  }
  extensions.rawKeys = reportsRawKeys(server);
  return extensions;
}

}  // namespace tarqo::lnx::x11
