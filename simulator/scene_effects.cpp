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

Effect onNode(const Field& value, NodeDeed effect) {
  return [id = value.name({Named::node}), effect](SceneState& state) {
    if (Node* node = present(state.nodes, id)) {
      effect(*node);
    }
  };
}

Effect onWindow(const Field& value, WindowDeed effect) {
  return [id = value.name({Named::window}), effect](SceneState& state) {
    if (Window* window = present(state.windows, id)) {
      effect(*window);
    }
  };
}

void requireOnly(const Field& object, std::initializer_list<std::string_view> members) {
  (void)readSetters(object, std::array<Member<Node>, 0>{}, members);
}

Effect readSet(const Field& object) {
  return [id = object.require("node").name({Named::node, Named::window}),
          setters = readNodeSetters(object, {"node"})](SceneState& state) {
    if (Node* node = present(state.nodes, id)) {
      apply(setters, state, *node);
    }
  };
}

Effect readAdd(const Field& object) {
  requireOnly(object, {"to", "nodes"});
  return [id = object.require("to").name({Named::node, Named::window}),
          nodes = readNodes(object.require("nodes"))](SceneState& state) {
    if (Node* parent = present(state.nodes, id)) {
      nodes(state, *parent);
    }
  };
}

Effect readMove(const Field& object) {
  requireOnly(object, {"window", "to"});
  return [id = object.require("window").name({Named::window}),
          to = object.require("to").point()](SceneState& state) {
    if (Window* window = present(state.windows, id)) {
      window->moveTo(to);
    }
  };
}

Effect readResize(const Field& object) {
  requireOnly(object, {"window", "to"});
  return [id = object.require("window").name({Named::window}),
          to = object.require("to").size()](SceneState& state) {
    if (Window* window = present(state.windows, id)) {
      window->resize(to);
    }
  };
}

Effect readOpen(const Field& object) {
  requireOnly(object, {"in", "window"});
  return [bundleId = object.require("in").name({Named::application}),
          window = readWindow(object.require("window"))](SceneState& state) {
    if (App* app = runningApp(state, bundleId)) {
      window(state, *app);
      app->focusWindow(app->windows().back());
      app->announce("AXWindowCreated");
    }
  };
}

// In front of everything, without its application coming to the front.
Effect readRaise(const Field& value) {
  return [id = value.name({Named::window, Named::otherWindow})](SceneState& state) {
    if (Window* window = present(state.windows, id)) {
      window->toFront();
    } else if (const auto other = state.otherWindows.find(id); other != state.otherWindows.end()) {
      state.desktop.windowServer().toFront(*other->second);
    }
  };
}

Effect onApplication(const Field& value, void (*effect)(App&)) {
  return [bundleId = value.name({Named::application}), effect](SceneState& state) {
    if (App* app = runningApp(state, bundleId)) {
      effect(*app);
    }
  };
}

Effect readApplicationChange(const Field& object) {
  return [bundleId = object.require("bundleId").name({Named::application}),
          setters = readAppSetters(object, {"bundleId"})](SceneState& state) {
    if (App* app = runningApp(state, bundleId)) {
      apply(setters, state, *app);
    }
  };
}

Effect readDesktopChange(const Field& object) {
  return [setters = readDesktopSetters(object, {})](SceneState& state) {
    apply(setters, state, state.desktop);
  };
}

Effect readPass(const Field& value) {
  return [passes = value.milliseconds()](SceneState& state) { state.desktop.run(passes); };
}

struct Verb {
  std::string_view name;
  Effect (*read)(const Field& value);
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

Effect readEffect(const Field& object) {
  std::optional<Duration> delay;
  Effect effect;
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
    if (effect) {
      object.fail("must be one effect");
    }
    effect = verb->read(value);
  }
  if (!effect) {
    object.fail("must be one effect");
  }
  if (!delay) {
    return effect;
  }
  return [effect, delay](SceneState& state) {
    state.desktop.after(*delay, [effect, &state] { effect(state); });
  };
}

}  // namespace

Effects readEffects(const Field& list) {
  Effects effects;
  for (const Field& item : list.items()) {
    effects.push_back(readEffect(item));
  }
  return effects;
}

}  // namespace tarqo::sim
