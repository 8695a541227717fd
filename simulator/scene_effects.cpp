// Effects: what an element does when it is used, and what changes by itself.

#include "simulator/scene_parts.h"

namespace tarqo::sim {
namespace {

// What a scene names may not be there yet, or not any more; then an effect on it does nothing.
template <typename Thing>
Thing* present(const std::map<std::string, Thing*>& things, const std::string& id) {
  const auto found = things.find(id);
  return found == things.end() || found->second->removed() ? nullptr : found->second;
}

using NodeDeed = void (*)(Node&);
using WindowDeed = void (*)(Window&);

Deed onNode(const Field& value, NodeDeed deed) {
  return [id = value.name({Named::node}), deed](Stage& stage) {
    if (Node* node = present(stage.nodes, id)) {
      deed(*node);
    }
  };
}

Deed onWindow(const Field& value, WindowDeed deed) {
  return [id = value.name({Named::window}), deed](Stage& stage) {
    if (Window* window = present(stage.windows, id)) {
      deed(*window);
    }
  };
}

void requireOnly(const Field& object, std::initializer_list<std::string_view> members) {
  (void)readFacts(object, std::array<Member<Node>, 0>{}, members);
}

Deed readSet(const Field& object) {
  return [id = object.require("node").name({Named::node, Named::window}),
          facts = readNodeFacts(object, {"node"})](Stage& stage) {
    if (Node* node = present(stage.nodes, id)) {
      apply(facts, stage, *node);
    }
  };
}

Deed readAdd(const Field& object) {
  requireOnly(object, {"to", "nodes"});
  return [id = object.require("to").name({Named::node, Named::window}),
          nodes = readNodes(object.require("nodes"))](Stage& stage) {
    if (Node* parent = present(stage.nodes, id)) {
      nodes(stage, *parent);
    }
  };
}

Deed readMove(const Field& object) {
  requireOnly(object, {"window", "to"});
  return [id = object.require("window").name({Named::window}),
          to = object.require("to").point()](Stage& stage) {
    if (Window* window = present(stage.windows, id)) {
      window->moveTo(to);
    }
  };
}

Deed readResize(const Field& object) {
  requireOnly(object, {"window", "to"});
  return [id = object.require("window").name({Named::window}),
          to = object.require("to").size()](Stage& stage) {
    if (Window* window = present(stage.windows, id)) {
      window->resize(to);
    }
  };
}

Deed readOpen(const Field& object) {
  requireOnly(object, {"in", "window"});
  return [bundleId = object.require("in").name({Named::application}),
          window = readWindow(object.require("window"))](Stage& stage) {
    if (App* app = runningApp(stage, bundleId)) {
      window(stage, *app);
      app->focusWindow(app->windows().back());
      app->announce("AXWindowCreated");
    }
  };
}

// In front of everything, without its application coming to the front.
Deed readRaise(const Field& value) {
  return [id = value.name({Named::window, Named::otherWindow})](Stage& stage) {
    if (Window* window = present(stage.windows, id)) {
      window->toFront();
    } else if (const auto other = stage.otherWindows.find(id); other != stage.otherWindows.end()) {
      stage.desktop.windowServer().toFront(*other->second);
    }
  };
}

Deed onApplication(const Field& value, void (*deed)(App&)) {
  return [bundleId = value.name({Named::application}), deed](Stage& stage) {
    if (App* app = runningApp(stage, bundleId)) {
      deed(*app);
    }
  };
}

Deed readApplicationChange(const Field& object) {
  return [bundleId = object.require("bundleId").name({Named::application}),
          facts = readAppFacts(object, {"bundleId"})](Stage& stage) {
    if (App* app = runningApp(stage, bundleId)) {
      apply(facts, stage, *app);
    }
  };
}

Deed readDesktopChange(const Field& object) {
  return
      [facts = readDesktopFacts(object, {})](Stage& stage) { apply(facts, stage, stage.desktop); };
}

Deed readPass(const Field& value) {
  return [passes = value.milliseconds()](Stage& stage) { stage.desktop.run(passes); };
}

struct Verb {
  std::string_view name;
  Deed (*read)(const Field& value);
};

constexpr std::array kVerbs{
    Verb{"set", readSet},
    Verb{"add", readAdd},
    Verb{"remove", [](const Field& v) { return onNode(v, [](Node& node) { node.remove(); }); }},
    Verb{"replace", [](const Field& v) { return onNode(v, [](Node& node) { node.recreate(); }); }},
    Verb{"focus", [](const Field& v) { return onNode(v, [](Node& node) { node.focus(); }); }},
    Verb{"move", readMove},
    Verb{"resize", readResize},
    Verb{"minimize",
         [](const Field& v) { return onWindow(v, [](Window& window) { window.minimize(); }); }},
    Verb{
        "restore",
        [](const Field& v) { return onWindow(v, [](Window& window) { window.minimize(false); }); }},
    Verb{"close",
         [](const Field& v) { return onWindow(v, [](Window& window) { window.close(); }); }},
    Verb{"open", readOpen},
    Verb{"raise", readRaise},
    Verb{"front",
         [](const Field& v) { return onApplication(v, [](App& app) { app.bringToFront(); }); }},
    Verb{"quit", [](const Field& v) { return onApplication(v, [](App& app) { app.kill(); }); }},
    Verb{"application", readApplicationChange},
    Verb{"desktop", readDesktopChange},
    Verb{"passMs", readPass},
};

Deed readEffect(const Field& object) {
  std::optional<Duration> delay;
  Deed deed;
  for (const auto& [key, value] : object.members()) {
    if (key == "afterMs") {
      delay = value.milliseconds();
      continue;
    }
    const auto* verb = std::find_if(
        kVerbs.begin(), kVerbs.end(),
        [name = std::string_view(key)](const Verb& each) { return each.name == name; });
    if (verb == kVerbs.end()) {
      value.fail("is not known");
    }
    if (deed) {
      object.fail("must be one effect");
    }
    deed = verb->read(value);
  }
  if (!deed) {
    object.fail("must be one effect");
  }
  if (!delay) {
    return deed;
  }
  return
      [deed, delay](Stage& stage) { stage.desktop.after(*delay, [deed, &stage] { deed(stage); }); };
}

}  // namespace

Deeds readEffects(const Field& list) {
  Deeds effects;
  for (const Field& item : list.items()) {
    effects.push_back(readEffect(item));
  }
  return effects;
}

}  // namespace tarqo::sim
