#include "platform/linux/x11/clients.h"

#include <xcb/res.h>

#include <vector>

#include "platform/linux/x11/properties.h"

namespace tarqo::lnx::x11 {

std::uint32_t clientOf(Server& server, xcb_window_t window) {
  return window & ~xcb_get_setup(server.raw())->resource_id_mask;
}

std::unordered_map<std::uint32_t, Pid> clientPids(Server& server,
                                                  std::span<const xcb_window_t> windows) {
  std::unordered_map<std::uint32_t, Pid> pids;
  if (!server.extensions().resourcePids || windows.empty()) {
    return pids;
  }
  std::vector<xcb_res_client_id_spec_t> questions;
  for (const xcb_window_t window : windows) {
    questions.push_back({window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID});
  }
  const auto reply = server.take<xcb_res_query_client_ids_reply_t>(xcb_res_query_client_ids(
      server.raw(), static_cast<std::uint32_t>(questions.size()), questions.data()));
  if (!reply) {
    return pids;
  }
  for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.get()); ids.rem > 0;
       xcb_res_client_id_value_next(&ids)) {
    if (xcb_res_client_id_value_value_length(ids.data) > 0) {
      pids[ids.data->spec.client] = static_cast<Pid>(*xcb_res_client_id_value_value(ids.data));
    }
  }
  return pids;
}

std::optional<Pid> ownerOf(Server& server, xcb_window_t window) {
  const auto statedCookie = requestProperty(server, window, server.atom(Atom::netWmPid), 1);
  const auto pids = clientPids(server, {&window, 1});
  const auto property = server.take<xcb_get_property_reply_t>(statedCookie);
  if (const auto known = pids.find(clientOf(server, window)); known != pids.end()) {
    return known->second;
  }
  const auto numbers = numbersOf(property);
  return numbers.empty() ? std::nullopt : std::optional(static_cast<Pid>(numbers[0]));
}

}  // namespace tarqo::lnx::x11
