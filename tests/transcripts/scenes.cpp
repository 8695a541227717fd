#include "tests/transcripts/scenes.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tarqo::transcripts {
namespace {

using namespace std::chrono_literals;

// Started by "Terminal"; "Notes" in front with a window, and "Draw" installed.
void notes(sim::Desktop& desktop) {
  sim::App& app = desktop.app("com.example.Notes");
  desktop.hostedBy("com.example.Terminal", "Terminal");
  desktop.installed("com.example.Notes").info = {{"CFBundleShortVersionString", "4.11"},
                                                 {"CFBundleVersion", "2187"}};
  desktop.installed("com.example.Draw").onLaunch = [](sim::App& draw) {
    draw.window({300, 200, 640, 480}, "Untitled");
  };
  sim::Window& window = app.window({100, 80, 800, 600}, "Shopping");
  window.button("Save").at({200, 200, 80, 24}).action("AXPress").announces("AXValueChanged", 5ms);
  window.button("Export").at({300, 200, 80, 24}).enabled(false);
  window.textField("milk").at({200, 240, 200, 24}).identifier("item");
  window.secureField().at({200, 280, 200, 24}).title("Password");
  window.label("3 items").at({200, 320, 200, 20});
  window.link("Help/Support").at({200, 360, 120, 20}).withoutAction("AXPress");
  sim::Node& file = app.menu("File");
  file.menuItem("Open");
  file.submenu("Export As").menuItem("PDF");
}

void empty(sim::Desktop& /*desktop*/) {}

void untrusted(sim::Desktop& desktop) {
  notes(desktop);
  desktop.permissions().trusted = false;
}

void withoutCapture(sim::Desktop& desktop) {
  notes(desktop);
  desktop.permissions().captureGranted = false;
}

void locked(sim::Desktop& desktop) {
  notes(desktop);
  desktop.windowServer().session.locked = true;
}

// A window of "Chat" lies over the one of "Notes", which does not come forward.
void covered(sim::Desktop& desktop) {
  notes(desktop);
  sim::App& chat = desktop.app("com.example.Chat");
  chat.window({150, 150, 400, 300}, "Chat");
  chat.bringToFront();
  desktop.app("com.example.Notes").facts.comesToFront.reset();
}

// "Notes" ends by itself after a second.
void quitting(sim::Desktop& desktop) {
  notes(desktop);
  desktop.after(1s, [&desktop] { desktop.app("com.example.Notes").kill(); });
}

// A browser that shows one site and opens others on demand, except "refused.example".
void browser(sim::Desktop& desktop) {
  desktop.app("com.example.Browser")
      .window({100, 80, 800, 600}, "News")
      .shows("https://news.example/today");
  desktop.installed("com.example.Browser").onOpenSite = [](sim::App& app, const std::string& site) {
    if (site.find("refused.example") == std::string::npos) {
      app.window({140, 120, 800, 600}, "New").shows(site);
    }
  };
}

// A game whose window holds no accessible text, only pixels that read "Start".
void game(sim::Desktop& desktop) {
  desktop.app("com.example.Game").window({100, 100, 400, 300});
  desktop.recognizer().lines = {{"Start", {0.25, 0.5, 0.5, 0.1}, 1}};
}

struct Row {
  std::string_view name;
  void (*build)(sim::Desktop&);
};
constexpr std::array kScenes{
    Row{"notes", notes},     Row{"empty", empty},       Row{"untrusted", untrusted},
    Row{"locked", locked},   Row{"covered", covered},   Row{"without capture", withoutCapture},
    Row{"browser", browser}, Row{"quitting", quitting}, Row{"game", game}};

}  // namespace

bool buildScene(const std::string& name, sim::Desktop& desktop) {
  const auto* row = std::find_if(kScenes.begin(), kScenes.end(),
                                 [&](const Row& each) { return each.name == name; });
  if (row == kScenes.end()) {
    return false;
  }
  row->build(desktop);
  return true;
}

std::vector<std::string> sceneNames() {
  std::vector<std::string> names;
  for (const Row& row : kScenes) {
    names.emplace_back(row.name);
  }
  return names;
}

}  // namespace tarqo::transcripts
