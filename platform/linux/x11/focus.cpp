#include "platform/linux/x11/focus.h"

#include <algorithm>
#include <iterator>

#include "platform/linux/x11/clients.h"
#include "platform/linux/x11/properties.h"

namespace tarqo::lnx::x11 {
namespace {

/// Toolkits give the focus to a window inside their own, and managers put windows into frames;
/// neither is followed deeper than this.
constexpr int kMaxFocusDepth = 8;
constexpr int kMaxFramedDepth = 4;

bool contains(const std::vector<xcb_window_t>& windows, xcb_window_t window) {
  return std::find(windows.begin(), windows.end(), window) != windows.end();
}

/// The window itself or the first window above it that is one of `clients` or a child of the root.
xcb_window_t holderOf(Server& server, xcb_window_t window,
                      const std::vector<xcb_window_t>& clients) {
  for (int depth = 0; depth < kMaxFocusDepth; ++depth) {
    if (contains(clients, window)) {
      return window;
    }
    const auto tree = server.take<xcb_query_tree_reply_t>(xcb_query_tree(server.raw(), window));
    if (!tree) {
      return XCB_NONE;
    }
    if (tree->parent == server.root()) {
      return window;
    }
    window = tree->parent;
  }
  return XCB_NONE;
}

}  // namespace

xcb_get_property_cookie_t requestClients(Server& server) {
  return requestProperty(server, server.root(), server.atom(Atom::netClientList), kListLength);
}

std::vector<xcb_window_t> takeClients(Server& server, xcb_get_property_cookie_t cookie) {
  const auto list = server.take<xcb_get_property_reply_t>(cookie);
  const auto numbers = numbersOf(list);
  return {numbers.begin(), numbers.end()};
}

FocusQuery requestFocus(Server& server) {
  return {xcb_get_input_focus(server.raw()), xcb_query_pointer(server.raw(), server.root())};
}

xcb_window_t takeFocus(Server& server, const FocusQuery& query,
                       const std::vector<xcb_window_t>& clients) {
  const auto focus = server.take<xcb_get_input_focus_reply_t>(query.focus);
  const auto pointer = server.take<xcb_query_pointer_reply_t>(query.pointer);
  if (!focus || !pointer || focus->focus == XCB_INPUT_FOCUS_NONE) {
    return XCB_NONE;
  }
  if (focus->focus != XCB_INPUT_FOCUS_POINTER_ROOT && focus->focus != server.root()) {
    return holderOf(server, focus->focus, clients);
  }
  return pointer->child == XCB_NONE ? static_cast<xcb_window_t>(XCB_NONE)
                                    : windowsIn(server, pointer->child, clients).front();
}

std::optional<Pid> focusedProcess(Server& server) {
  const auto clients = requestClients(server);
  const FocusQuery focus = requestFocus(server);
  const xcb_window_t window = takeFocus(server, focus, takeClients(server, clients));
  return window == XCB_NONE ? std::nullopt : ownerOf(server, window);
}

std::vector<xcb_window_t> windowsIn(Server& server, xcb_window_t outermost,
                                    const std::vector<xcb_window_t>& clients) {
  std::vector<xcb_window_t> level{outermost};
  for (int depth = 0; depth < kMaxFramedDepth && !level.empty(); ++depth) {
    std::vector<xcb_window_t> found;
    std::copy_if(level.begin(), level.end(), std::back_inserter(found),
                 [&](xcb_window_t window) { return contains(clients, window); });
    if (!found.empty()) {
      return found;
    }
    std::vector<xcb_query_tree_cookie_t> cookies;
    std::transform(level.begin(), level.end(), std::back_inserter(cookies),
                   [&](xcb_window_t window) { return xcb_query_tree(server.raw(), window); });
    level.clear();
    for (const xcb_query_tree_cookie_t cookie : cookies) {
      if (const auto tree = server.take<xcb_query_tree_reply_t>(cookie)) {
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        level.insert(level.end(), children, children + xcb_query_tree_children_length(tree.get()));
      }
    }
  }
  return {outermost};
}

}  // namespace tarqo::lnx::x11
