// The simulated window server: windows front to back, displays, the login session.
//
// Every window of a simulated application has a window here, which moves with it; a scene may make
// the two differ, drop any field, or add windows that no application element stands for.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/window_server.h"

namespace tarqo::sim {

class App;
class Window;

struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;

  bool operator==(const Colour&) const = default;
};

/// What the window server and the capture services know of one window. All of it is the scene's to
/// change; `listed` false keeps the window out of every list.
struct ServerWindow {
  WindowInfo info;
  bool listed = true;
  bool desktopElement = false;  ///< Part of the desktop itself, like its wallpaper.
  Colour fill;                  ///< Every window begins with a colour of its own.
  /// Drawn over the fill in order; rectangles relative to the window, in points.
  std::vector<std::pair<Rect, Colour>> drawings;
  Window* window = nullptr;  ///< The accessibility window that it shows; null for a bare one.
};

class WindowServerService final : public WindowServer {
 public:
  WindowServerService();

  // The scene.
  LoginSession session{.locked = false, .onConsole = true};
  std::vector<Screen> displays;  ///< At the start one of 1920 x 1080 points.
  bool answers = true;           ///< False: every list is empty.

  /// Adds a display by its frame with the origin at the top left of the first one.
  void addDisplay(const Rect& frame, double scale);

  /// A window that belongs to no simulated application, in front of all others.
  ServerWindow& bareWindow(Pid owner, const std::string& ownerName, const Rect& bounds);
  ServerWindow& windowOf(Window& window, const App& app, const Rect& bounds);

  void toFront(const ServerWindow& window);       ///< In front of all others of its layer.
  void toFrontOfOwn(const ServerWindow& window);  ///< In front of its owner's other windows.
  void ownersToFront(Pid owner);                  ///< All of an owner's, keeping their order.

  /// What is shown, front to back: higher layers first. The scene's view, free of faults.
  [[nodiscard]] std::vector<ServerWindow*> shown() const;
  [[nodiscard]] ServerWindow* find(WindowNumber number) const;
  /// Pixels per point where the middle of an area is; 1 outside every display.
  [[nodiscard]] double scaleAt(const Rect& area) const;

  [[nodiscard]] std::vector<WindowInfo> windows(WindowList which) override;
  [[nodiscard]] std::vector<Screen> screens() override;
  [[nodiscard]] LoginSession loginSession() override;

 private:
  ServerWindow& insert(ServerWindow window);
  [[nodiscard]] static bool isShown(const ServerWindow& window);

  WindowNumber next_ = 10;
  std::vector<std::unique_ptr<ServerWindow>> stack_;  ///< Front to back, whatever the layer.
};

}  // namespace tarqo::sim
