#include "fuzz/fuzz_scene.h"

#include <array>
#include <limits>

namespace tarqo::fuzz {
namespace {

using namespace std::chrono_literals;

constexpr const char* kTarget = "com.example.Notes";

sim::App& target(sim::Desktop& desktop) { return desktop.app(kTarget); }

/// The target's window; null once a fault has closed it.
sim::Window* window(sim::Desktop& desktop) {
  const auto& windows = target(desktop).windows();
  return windows.empty() ? nullptr : windows.front();
}

template <typename Deed>
void onWindow(sim::Desktop& desktop, Deed deed) {
  if (sim::Window* const found = window(desktop)) {
    deed(*found);
  }
}

template <typename Deed>
void onEveryNode(sim::Desktop& desktop, Deed deed) {
  onWindow(desktop, [&](sim::Window& found) {
    for (sim::Node* node : found.children()) {
      deed(*node);
    }
  });
}

void nestDeeply(sim::Desktop& desktop) {
  onWindow(desktop, [](sim::Window& found) {
    sim::Node* node = &found;
    for (int i = 0; i < 300; ++i) {
      node = &node->group();
    }
  });
}

// Toolkits have been seen to list a parent among its own children.
void nestInCircles(sim::Desktop& desktop) {
  onWindow(desktop, [](sim::Window& found) {
    sim::Node& group = found.group("circle");
    group.with("AXChildren", Value{Values{Value{found.element()}, Value{group.element()}}});
  });
}

void oddFrames(sim::Desktop& desktop) {
  constexpr double kHuge = std::numeric_limits<double>::max();
  onEveryNode(desktop, [](sim::Node& node) {
    node.with("AXPosition", Value{Point{-kHuge, kHuge}}).with("AXSize", Value{Size{kHuge, 1e-300}});
  });
}

void oddTexts(sim::Desktop& desktop) {
  onEveryNode(desktop, [](sim::Node& node) {
    node.title("a\xFF\xC0/\"\\\n").identifier(std::string(5000, 'i'));
  });
}

void oddRecognition(sim::Desktop& desktop) {
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  desktop.recognizer().lines = {{"nan", {kNan, kNan, kNan, kNan}, kNan},
                                {"far", {-1e300, 1e300, 1e300, -1e300}, -1},
                                {"\xFF", {0, 0, 1, 1}, 2}};
}

void withoutText(sim::Desktop& desktop) {
  onEveryNode(desktop, [](sim::Node& node) { node.without("AXTitle").without("AXValue"); });
  desktop.recognizer().lines = {{"Start", {0.25, 0.25, 0.5, 0.1}, 0.5F}};
}

struct Fault {
  char letter;
  void (*build)(sim::Desktop&);
};

constexpr std::array kFaults{
    // The target.
    Fault{'h', [](sim::Desktop& d) { target(d).facts.hung = true; }},
    Fault{'s', [](sim::Desktop& d) { target(d).facts.eachCallTakes = 50ms; }},
    Fault{'o', [](sim::Desktop& d) { target(d).facts.refusesObservers = true; }},
    Fault{'f', [](sim::Desktop& d) { target(d).facts.comesToFront.reset(); }},
    Fault{'H', [](sim::Desktop& d) { target(d).facts.hidden = true; }},
    Fault{'k', [](sim::Desktop& d) { target(d).afterCalls(40, [&d] { target(d).kill(); }); }},
    Fault{'K', [](sim::Desktop& d) { d.after(200ms, [&d] { target(d).kill(true); }); }},
    Fault{'n',
          [](sim::Desktop& d) {
            d.every(30ms, 100, [&d] { target(d).announce("AXValueChanged"); });
          }},
    // Its window.
    Fault{'q', [](sim::Desktop& d) { onWindow(d, [](sim::Window& w) { w.close(); }); }},
    Fault{'Q',
          [](sim::Desktop& d) {
            d.after(100ms, [&d] { onWindow(d, [](sim::Window& w) { w.close(); }); });
          }},
    Fault{'m',
          [](sim::Desktop& d) {
            d.after(100ms, [&d] { onWindow(d, [](sim::Window& w) { w.moveTo({7, 9}); }); });
          }},
    Fault{'M', [](sim::Desktop& d) { onWindow(d, [](sim::Window& w) { w.minimize(); }); }},
    Fault{'w', [](sim::Desktop& d) { onWindow(d, [](sim::Window& w) { w.withoutFrame(); }); }},
    Fault{'C',
          [](sim::Desktop& d) {
            d.windowServer().bareWindow(77, "Other", {0, 0, 300, 300});
          }},
    Fault{'b',
          [](sim::Desktop& d) {
            onWindow(d, [](sim::Window& w) { w.server().info.bounds.reset(); });
          }},
    // Its elements.
    Fault{'d', nestDeeply},
    Fault{'y', nestInCircles},
    Fault{'x', oddFrames},
    Fault{'u', oddTexts},
    Fault{'t', withoutText},
    Fault{'r',
          [](sim::Desktop& d) {
            target(d).afterCalls(
                30, [&d] { onEveryNode(d, [](sim::Node& node) { node.recreate(); }); });
          }},
    Fault{'v',
          [](sim::Desktop& d) {
            target(d).afterCalls(
                10, [&d] { onWindow(d, [](sim::Window& w) { w.children().front()->remove(); }); });
          }},
    Fault{'B',
          [](sim::Desktop& d) { onEveryNode(d, [](sim::Node& node) { node.failingBatch(); }); }},
    Fault{'a', [](sim::Desktop& d) { d.accessibility().readsAhead = true; }},
    Fault{'A', [](sim::Desktop& d) { d.accessibility().hitTestFails = true; }},
    // The desktop.
    Fault{'L', [](sim::Desktop& d) { d.windowServer().session.locked = true; }},
    Fault{'T', [](sim::Desktop& d) { d.permissions().trusted = false; }},
    Fault{'S', [](sim::Desktop& d) { d.permissions().captureGranted = false; }},
    Fault{'W', [](sim::Desktop& d) { d.windowServer().answers = false; }},
    Fault{'z', [](sim::Desktop& d) { d.windowServer().displays.clear(); }},
    Fault{'i', [](sim::Desktop& d) { d.capture().windowImages = sim::Reply::nothing(); }},
    Fault{'I', [](sim::Desktop& d) { d.capture().windowImages = sim::Reply::never(); }},
    Fault{'j', [](sim::Desktop& d) { d.capture().shareableWindowsExist = true; }},
    Fault{'J', [](sim::Desktop& d) { d.capture().displayRegions = sim::Reply::never(); }},
    Fault{'e', [](sim::Desktop& d) { d.images().encodingFails = PngError::failed; }},
    Fault{'g', [](sim::Desktop& d) { d.recognizer().error = "no text"; }},
    Fault{'G', oddRecognition},
    Fault{'c', [](sim::Desktop& d) { (void)d.captureTool(); }},
    Fault{'E', [](sim::Desktop& d) { d.input().refusesMouse = true; }},
    Fault{'F', [](sim::Desktop& d) { d.input().refusesKeys = true; }},
    Fault{'P', [](sim::Desktop& d) { d.input().pointer.location.reset(); }},
};

}  // namespace

void buildScene(sim::Desktop& desktop, std::string_view faults) {
  sim::App& app = target(desktop);
  desktop.hostedBy("com.example.Terminal", "Terminal");
  desktop.installed("com.example.Draw").onLaunch = [](sim::App& draw) {
    draw.window({10, 10, 150, 130}, "Draw").shows("https://a.example/");
  };
  sim::Window& made = app.window({20, 20, 200, 180}, "Notes");
  made.shows("https://a.example/page");
  made.button("Save").action("AXPress").announces("AXValueChanged");
  made.textField("milk").identifier("item");
  made.secureField();
  made.label("3 items");
  app.menu("File").menuItem("Open");
  for (const char letter : faults) {
    for (const Fault& fault : kFaults) {
      if (fault.letter == letter) {
        fault.build(desktop);
      }
    }
  }
}

}  // namespace tarqo::fuzz
