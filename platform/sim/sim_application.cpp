#include "platform/sim/sim_application.h"

#include <utility>

#include "platform/sim/sim_world.h"

namespace tarqo::sim {
namespace {

/// The element that stands for an application as a whole.
class ApplicationNode final : public Node {
 public:
  explicit ApplicationNode(App& app) : Node(app, "AXApplication") {
    without("AXEnabled");
    onSet("AXFrontmost", [&app](const Value& value) {
      const bool* front = value.as<bool>();
      if (front != nullptr && *front) {
        app.requestFront();
      }
    });
  }

 protected:
  [[nodiscard]] std::optional<Value> derived(const std::string& name) const override {
    if (name == "AXWindows") {
      Values windows;
      for (const Window* window : app().windows()) {
        windows.push_back(Value{window->element()});
      }
      return Value{std::move(windows)};
    }
    if (name == "AXFocusedWindow" || name == "AXMainWindow") {
      return elementOrNone(app().focusedWindow());
    }
    if (name == "AXFocusedUIElement") {
      return elementOrNone(app().focusedNode());
    }
    if (name == "AXMenuBar") {
      return elementOrNone(app().menuBarOrNull());
    }
    if (name == "AXFrontmost") {
      return Value{app().world().frontmost == &app()};
    }
    if (name == "AXHidden") {
      return Value{app().facts.hidden};
    }
    if (name == "AXTitle" && app().facts.localizedName) {
      return Value{*app().facts.localizedName};
    }
    return Node::derived(name);
  }

 private:
  static std::optional<Value> elementOrNone(const Node* node) {
    return node == nullptr ? std::nullopt : std::optional(Value{node->element()});
  }
};

}  // namespace

App::App(World& world, Pid pid, std::uint64_t instance)
    : world_(world), pid_(pid), instance_(instance) {
  node_ = &adopt(std::make_unique<ApplicationNode>(*this));
}

App::~App() {
  // Attributes may hold elements, and an effect may hold anything: end them before the nodes.
  for (const auto& node : nodes_) {
    node->attributes_.clear();
    node->actions_.clear();
  }
}

Node& App::adopt(std::unique_ptr<Node> node) {
  nodes_.push_back(std::move(node));
  return *nodes_.back();
}

Window& App::window(const Rect& frame, const std::string& title) {
  auto made = std::make_unique<Window>(*this, frame);
  Window& window = *made;
  adopt(std::move(made));
  window.title(title);
  window.server().info.title = title;
  window.parent_ = node_;
  node_->children_.push_back(&window);
  windows_.push_back(&window);
  if (world_.frontmost != nullptr && world_.frontmost != this) {
    world_.windows.ownersToFront(world_.frontmost->pid());
  }
  if (focusedWindow_ == nullptr) {
    focusedWindow_ = &window;
  }
  return window;
}

Node& App::menuBar() {
  if (menuBar_ == nullptr) {
    menuBar_ = &node_->add("AXMenuBar");
  }
  return *menuBar_;
}

Node& App::menu(const std::string& title) {
  Node& item = menuBar().add("AXMenuBarItem", title);
  item.action("AXPress");
  return item.add("AXMenu");
}

void App::focusWindow(Window* window) { focusedWindow_ = window; }

void App::focusNode(Node* node) {
  if (focusedNode_ == node) {
    return;
  }
  focusedNode_ = node;
  if (node != nullptr) {
    node->announce("AXFocusedUIElementChanged");
  }
}

void App::bringToFront() {
  if (terminated_) {
    return;
  }
  world_.windows.ownersToFront(pid_);
  if (std::exchange(world_.frontmost, this) != this) {
    announce("AXApplicationActivated");
  }
}

void App::requestFront() {
  if (!facts.comesToFront) {
    return;
  }
  if (*facts.comesToFront == Duration::zero()) {
    bringToFront();
  } else {
    world_.clock.after(*facts.comesToFront, [this] { bringToFront(); });
  }
}

void App::kill(bool stillListed) {
  terminated_ = true;
  stillListed_ = stillListed;
  if (world_.frontmost == this) {
    world_.frontmost = nullptr;
  }
}

void App::announce(const std::string& notification, Duration delay) {
  node_->announce(notification, delay);
}

void App::afterCalls(int calls, std::function<void()> deed) {
  afterCalls_.emplace(calls_ + calls, std::move(deed));
}

RunningApplication App::running() const {
  return {id(), facts.bundleId, facts.bundlePath, facts.localizedName, facts.policy};
}

Window::Window(App& app, const Rect& frame)
    : Node(app, "AXWindow"), server_(&app.world().windows.windowOf(*this, app, frame)) {
  at(frame);
  onSet("AXMinimized", [this](const Value& value) {
    const bool* wanted = value.as<bool>();
    minimize(wanted != nullptr && *wanted);
  });
  action("AXRaise").effect([this] {
    this->app().world().windows.toFrontOfOwn(*server_);
    this->app().focusWindow(this);
  });
}

void Window::moveTo(Point origin) {
  const std::optional<Rect> before = frame();
  if (!before) {
    return;
  }
  const double dx = origin.x - before->x;
  const double dy = origin.y - before->y;
  moveBy(dx, dy);
  if (server_->info.bounds) {
    server_->info.bounds->x += dx;
    server_->info.bounds->y += dy;
  }
  announce("AXWindowMoved");
}

void Window::resize(Size size) {
  const std::optional<Rect> before = frame();
  if (!before) {
    return;
  }
  at({before->x, before->y, size.width, size.height});
  if (server_->info.bounds) {
    server_->info.bounds->width += size.width - before->width;
    server_->info.bounds->height += size.height - before->height;
  }
  announce("AXWindowResized");
}

void Window::minimize(bool minimized) { minimized_ = minimized; }

void Window::close() {
  App& owner = app();
  std::erase(owner.windows_, this);
  if (owner.focusedWindow_ == this) {
    owner.focusedWindow_ = owner.windows_.empty() ? nullptr : owner.windows_.front();
  }
  announce("AXUIElementDestroyed");
  remove();
}

void Window::toFront() { app().world().windows.toFront(*server_); }

Window& Window::shows(const std::string& address) {
  with("AXDocument", Value{address});
  return *this;
}

std::optional<Value> Window::derived(const std::string& name) const {
  if (name == "AXMinimized") {
    return Value{minimized_};
  }
  if (name == "AXMain" || name == "AXFocused") {
    return Value{app().focusedWindow() == this};
  }
  return Node::derived(name);
}

std::vector<std::string> Window::derivedNames() const {
  return {"AXChildren", "AXParent", "AXFocused", "AXMinimized", "AXMain"};
}

}  // namespace tarqo::sim
