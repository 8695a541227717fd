#include "platform/linux/x11/window_reader.h"

#include <algorithm>
#include <array>
#include <span>
#include <unordered_map>
#include <utility>

#include "platform/linux/x11/clients.h"
#include "platform/linux/x11/focus.h"
#include "platform/linux/x11/properties.h"

namespace tarqo::lnx::x11 {
namespace {

/// Window managers seldom put more than one frame around a client; deeper clients are not found.
constexpr int kMaxFrameDepth = 4;

struct TypeRow {
  Atom atom;
  WindowType type;
};
constexpr std::array kTypes = {
    TypeRow{Atom::netWmWindowTypeNormal, WindowType::normal},
    TypeRow{Atom::netWmWindowTypeDialog, WindowType::dialog},
    TypeRow{Atom::netWmWindowTypeUtility, WindowType::utility},
    TypeRow{Atom::netWmWindowTypeSplash, WindowType::splash},
    TypeRow{Atom::netWmWindowTypeToolbar, WindowType::toolbar},
    TypeRow{Atom::netWmWindowTypeMenu, WindowType::menu},
    TypeRow{Atom::netWmWindowTypeDropdownMenu, WindowType::dropdownMenu},
    TypeRow{Atom::netWmWindowTypePopupMenu, WindowType::popupMenu},
    TypeRow{Atom::netWmWindowTypeCombo, WindowType::combo},
    TypeRow{Atom::netWmWindowTypeTooltip, WindowType::tooltip},
    TypeRow{Atom::netWmWindowTypeNotification, WindowType::notification},
    TypeRow{Atom::netWmWindowTypeDnd, WindowType::dnd},
    TypeRow{Atom::netWmWindowTypeDock, WindowType::dock},
    TypeRow{Atom::netWmWindowTypeDesktop, WindowType::desktop},
};

/// The requests about a child of the root window.
struct OutermostQuery {
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_geometry_cookie_t geometry;
};

/// Their replies.
struct Outermost {
  xcb_window_t window = XCB_NONE;
  bool viewable = false;
  bool overrideRedirect = false;
  xcb_visualid_t visual = 0;
  Rect area;
  std::vector<xcb_window_t> clients;
};

/// The requests about one window; sent for all windows before any reply is read.
struct WindowQuery {
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_geometry_cookie_t geometry;
  xcb_translate_coordinates_cookie_t origin;
  xcb_get_property_cookie_t netName, name, windowClass, pid, type, transientFor, netState, opacity;
  xcb_get_property_cookie_t decoration, shadow, gtkApplicationId;
};

WindowQuery requestsAbout(Server& server, xcb_window_t window) {
  xcb_connection_t* c = server.raw();
  const auto property = [&](Atom name, std::uint32_t length) {
    return requestProperty(server, window, server.atom(name), length);
  };
  return {
      .attributes = xcb_get_window_attributes(c, window),
      .geometry = xcb_get_geometry(c, window),
      .origin = xcb_translate_coordinates(c, window, server.root(), 0, 0),
      .netName = property(Atom::netWmName, kTextLength),
      .name = requestProperty(server, window, XCB_ATOM_WM_NAME, kTextLength),
      .windowClass = requestProperty(server, window, XCB_ATOM_WM_CLASS, kTextLength),
      .pid = property(Atom::netWmPid, 1),
      .type = property(Atom::netWmWindowType, 16),
      .transientFor = requestProperty(server, window, XCB_ATOM_WM_TRANSIENT_FOR, 1),
      .netState = property(Atom::netWmState, 64),
      .opacity = property(Atom::netWmWindowOpacity, 1),
      .decoration = property(Atom::netFrameExtents, 4),
      .shadow = property(Atom::gtkFrameExtents, 4),
      .gtkApplicationId = property(Atom::gtkApplicationId, kTextLength),
  };
}

WindowType typeOf(const Server& server, const Property& property) {
  for (const std::uint32_t atom : numbersOf(property)) {
    for (const TypeRow& row : kTypes) {
      if (server.atom(row.atom) == atom) {
        return row.type;
      }
    }
  }
  return WindowType::none;
}

/// The two texts of WM_CLASS, each ended by a NUL.
void readClass(const Property& property, Window& window) {
  const std::string bytes = bytesOf(property);
  const std::size_t middle = std::min(bytes.find('\0'), bytes.size());
  window.instanceName = bytes.substr(0, middle);
  if (middle < bytes.size()) {
    const std::size_t end = std::min(bytes.find('\0', middle + 1), bytes.size());
    window.className = bytes.substr(middle + 1, end - middle - 1);
  }
}

bool isMinimised(const Server& server, const Property& netState) {
  // WM_STATE will not do: window managers call windows of other desktops iconic too. A window
  // rolled up into its title bar is hidden as well, but not minimised.
  const auto states = numbersOf(netState);
  const auto has = [&](Atom name) {
    return std::find(states.begin(), states.end(), server.atom(name)) != states.end();
  };
  return has(Atom::netWmStateHidden) && !has(Atom::netWmStateShaded);
}

double opacityOf(const Property& property) {
  const auto numbers = numbersOf(property);
  return numbers.empty() ? 1.0 : static_cast<double>(numbers[0]) / 0xffffffff;
}

/// Reads the replies about a window; false when it is gone or shows nothing. Every reply is taken,
/// needed or not, because the library keeps those that are not taken.
bool readReplies(Server& server, const WindowQuery& query, const Outermost& outermost,
                 Window& window) {
  const auto attributes = server.take<xcb_get_window_attributes_reply_t>(query.attributes);
  const auto geometry = server.take<xcb_get_geometry_reply_t>(query.geometry);
  const auto origin = server.take<xcb_translate_coordinates_reply_t>(query.origin);
  const auto property = [&server](xcb_get_property_cookie_t cookie) {
    return server.take<xcb_get_property_reply_t>(cookie);
  };
  const Property netName = property(query.netName);
  const Property name = property(query.name);
  window.title = textOf(netName);
  if (window.title.empty()) {
    window.title = textOf(name);
  }
  readClass(property(query.windowClass), window);
  const Property pid = property(query.pid);
  if (const auto numbers = numbersOf(pid); !numbers.empty()) {
    window.pid = static_cast<Pid>(numbers[0]);
  }
  window.type = typeOf(server, property(query.type));
  const Property transientFor = property(query.transientFor);
  if (const auto numbers = numbersOf(transientFor); !numbers.empty()) {
    window.transientFor = numbers[0];
  }
  window.minimised = isMinimised(server, property(query.netState));
  window.opacity = opacityOf(property(query.opacity));
  const std::optional<Insets> decoration = insetsOf(property(query.decoration));
  window.shadow = insetsOf(property(query.shadow));
  window.gtkApplicationId = textOf(property(query.gtkApplicationId));
  if (!attributes || !geometry || !origin || attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) {
    return false;
  }
  window.viewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  window.overrideRedirect = attributes->override_redirect != 0;
  window.clientArea = {static_cast<double>(origin->dst_x), static_cast<double>(origin->dst_y),
                       static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
  window.outermostArea = outermost.area;
  window.frame = visibleFrame({window.clientArea, outermost.area, decoration, window.shadow});
  return true;
}

class WindowReader {
 public:
  explicit WindowReader(Server& server) : server_(server) {}

  Windows read() {
    if (!readRoot()) {
      return {};
    }
    readOutermost();
    if (result_.hasManager) {
      placeClients();
    } else {
      adoptClients();
    }
    readAll();
    return std::move(result_);
  }

 private:
  bool readRoot() {
    xcb_connection_t* c = server_.raw();
    const xcb_window_t root = server_.root();
    const auto treeCookie = xcb_query_tree(c, root);
    const auto geometryCookie = xcb_get_geometry(c, root);
    const auto property = [&](Atom name, std::uint32_t length) {
      return requestProperty(server_, root, server_.atom(name), length);
    };
    const auto listCookie = property(Atom::netClientList, kListLength);
    const FocusQuery focus = requestFocus(server_);
    const auto showingCookie = property(Atom::netShowingDesktop, 1);
    const auto managerCookie = property(Atom::netSupportingWmCheck, 1);
    const auto tree = server_.take<xcb_query_tree_reply_t>(treeCookie);
    const auto geometry = server_.take<xcb_get_geometry_reply_t>(geometryCookie);
    const auto list = server_.take<xcb_get_property_reply_t>(listCookie);
    const auto showing = server_.take<xcb_get_property_reply_t>(showingCookie);
    const auto manager = server_.take<xcb_get_property_reply_t>(managerCookie);
    const auto clients = numbersOf(list);
    clients_.assign(clients.begin(), clients.end());
    result_.focused = takeFocus(server_, focus, clients_);
    if (!tree || !geometry) {
      return false;
    }
    result_.screen = {0, 0, static_cast<double>(geometry->width),
                      static_cast<double>(geometry->height)};
    const std::span<const xcb_window_t> children(
        xcb_query_tree_children(tree.get()),
        static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      outermost_.push_back({.window = *child, .area = {}, .clients = {}});
    }
    // A manager that died leaves its properties behind, but not the window that they name.
    if (const auto numbers = numbersOf(manager); !numbers.empty()) {
      managerWindow_ = numbers[0];
    }
    const auto shown = numbersOf(showing);
    result_.showingDesktop = !shown.empty() && shown[0] != 0;
    return true;
  }

  void readOutermost() {
    xcb_connection_t* c = server_.raw();
    const auto check =
        requestProperty(server_, managerWindow_, server_.atom(Atom::netSupportingWmCheck), 1);
    std::vector<OutermostQuery> queries;
    for (const Outermost& each : outermost_) {
      queries.push_back(
          {xcb_get_window_attributes(c, each.window), xcb_get_geometry(c, each.window)});
    }
    const auto manager = server_.take<xcb_get_property_reply_t>(check);
    const auto named = numbersOf(manager);
    result_.hasManager = managerWindow_ != XCB_NONE && !named.empty() && named[0] == managerWindow_;
    if (!result_.hasManager) {
      result_.showingDesktop = false;
    }
    for (std::size_t i = 0; i < outermost_.size(); ++i) {
      const auto attributes =
          server_.take<xcb_get_window_attributes_reply_t>(queries[i].attributes);
      const auto geometry = server_.take<xcb_get_geometry_reply_t>(queries[i].geometry);
      if (!attributes || !geometry) {
        continue;
      }
      Outermost& each = outermost_[i];
      each.viewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
                      attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
      each.overrideRedirect = attributes->override_redirect != 0;
      each.visual = attributes->visual;
      const int border = 2 * geometry->border_width;
      each.area = {static_cast<double>(geometry->x), static_cast<double>(geometry->y),
                   static_cast<double>(geometry->width + border),
                   static_cast<double>(geometry->height + border)};
    }
  }

  /// Finds the child of the root in which each managed window lies.
  void placeClients() {
    std::unordered_map<xcb_window_t, Outermost*> byWindow;
    for (Outermost& each : outermost_) {
      byWindow[each.window] = &each;
    }
    std::vector<std::pair<xcb_window_t, xcb_window_t>> climbing;  // A client and an ancestor of it.
    for (const xcb_window_t client : clients_) {
      climbing.emplace_back(client, client);
    }
    for (int depth = 0; depth < kMaxFrameDepth && !climbing.empty(); ++depth) {
      std::vector<std::pair<xcb_window_t, xcb_window_t>> above;
      std::vector<xcb_query_tree_cookie_t> cookies;
      for (const auto& [client, ancestor] : climbing) {
        if (const auto found = byWindow.find(ancestor); found != byWindow.end()) {
          found->second->clients.push_back(client);
        } else {
          above.emplace_back(client, ancestor);
          cookies.push_back(xcb_query_tree(server_.raw(), ancestor));
        }
      }
      climbing.clear();
      for (std::size_t i = 0; i < above.size(); ++i) {
        if (const auto tree = server_.take<xcb_query_tree_reply_t>(cookies[i])) {
          climbing.emplace_back(above[i].first, tree->parent);
        }
      }
    }
  }

  /// Without a window manager, what an application shows on the root is its window.
  void adoptClients() {
    for (Outermost& each : outermost_) {
      if (each.viewable && !each.overrideRedirect) {
        each.clients.push_back(each.window);
      }
    }
  }

  void readAll() {
    struct Asked {
      const Outermost* outermost;
      Window window;
      WindowQuery query;
    };
    std::vector<Asked> asked;
    std::vector<xcb_window_t> numbers;
    const auto add = [&](const Outermost& each, xcb_window_t client, bool managed) {
      Window window;
      window.client = client;
      window.outermost = each.window;
      window.outermostVisual = each.visual;
      window.managed = managed;
      asked.push_back({&each, std::move(window), requestsAbout(server_, client)});
      numbers.push_back(client);
    };
    for (const Outermost& each : outermost_) {
      for (const xcb_window_t client : each.clients) {
        add(each, client, true);
      }
      if (each.clients.empty() && each.viewable && each.overrideRedirect) {
        add(each, each.window, false);
      }
    }
    const auto pids = clientPids(server_, numbers);
    for (Asked& each : asked) {
      if (!readReplies(server_, each.query, *each.outermost, each.window)) {
        continue;
      }
      if (const auto pid = pids.find(clientOf(server_, each.window.client)); pid != pids.end()) {
        each.window.pid = pid->second;
      }
      // Some window managers make icons of all windows in order to show the desktop.
      each.window.minimised = each.window.minimised && !result_.showingDesktop;
      result_.frontToBack.push_back(std::move(each.window));
    }
  }

  Server& server_;
  Windows result_;
  xcb_window_t managerWindow_ = XCB_NONE;
  /// Unordered; the stacking order comes from the window tree. The list that claims to be in
  /// stacking order lacks the first window of all in xfwm4, until something is restacked.
  std::vector<xcb_window_t> clients_;
  std::vector<Outermost> outermost_;  // Front to back.
};

}  // namespace

Windows readWindows(Server& server) { return WindowReader(server).read(); }

Windows readWindows(Display& display) {
  Server* server = display.server();
  return server != nullptr ? readWindows(*server) : Windows();
}

xcb_window_t outermostAt(Server& server, std::optional<Point> point) {
  if (!point) {
    const auto pointer =
        server.take<xcb_query_pointer_reply_t>(xcb_query_pointer(server.raw(), server.root()));
    return pointer ? pointer->child : static_cast<xcb_window_t>(XCB_NONE);
  }
  const auto reply = server.take<xcb_translate_coordinates_reply_t>(xcb_translate_coordinates(
      server.raw(), server.root(), server.root(), pixelOf(point->x), pixelOf(point->y)));
  return reply ? reply->child : static_cast<xcb_window_t>(XCB_NONE);
}

const Window* windowAt(Server& server, const Windows& windows, Point point) {
  const xcb_window_t outermost = outermostAt(server, point);
  const auto found =
      std::find_if(windows.frontToBack.begin(), windows.frontToBack.end(),
                   [outermost](const Window& window) { return window.outermost == outermost; });
  return outermost != XCB_NONE && found != windows.frontToBack.end() ? &*found : nullptr;
}

}  // namespace tarqo::lnx::x11
