// Windows, menus and the nodes in them.

#include "simulator/scene_parts.h"

namespace tarqo::sim {
namespace {

Value readValue(const Field& value) {
  if (value.value().is_boolean()) {
    return Value{value.boolean()};
  }
  if (value.value().is_number()) {
    return Value{value.number()};
  }
  if (value.value().is_string()) {
    return Value{value.text()};
  }
  value.fail("must be a text, a number, true or false");
}

Setter<Node> attribute(std::string name, Value value) {
  return [name = std::move(name), value = std::move(value)](SceneState&, Node& node) {
    node.with(name, value);
  };
}

Setter<Node> readFrame(const Field& value) {
  if (value.isNull()) {
    return [](SceneState&, Node& node) { node.withoutFrame(); };
  }
  return [frame = value.rect()](SceneState&, Node& node) { node.at(frame); };
}

Setter<Node> readAttributes(const Field& object) {
  Setters<Node> setters;
  for (const auto& [key, value] : object.members()) {
    if (value.isNull()) {
      setters.emplace_back([name = key](SceneState&, Node& node) { node.without(name); });
    } else {
      setters.push_back(attribute(key, readValue(value)));
    }
  }
  return [setters](SceneState& state, Node& node) { apply(setters, state, node); };
}

Setter<Node> readSecure(const Field& value) {
  if (!value.boolean()) {
    return [](SceneState&, Node& node) { node.without("AXSubrole"); };
  }
  return attribute("AXSubrole", Value{"AXSecureTextField"});
}

Setter<Node> readEditable(const Field& value) {
  return [editable = value.boolean()](SceneState&, Node& node) {
    node.settable("AXValue", editable);
    node.settable("AXFocused", editable);
  };
}

// Each name in a list gets the same treatment.
Setter<Node> forEachName(const Field& list, void (*treat)(Node&, const std::string&)) {
  return [names = list.texts(), treat](SceneState&, Node& node) {
    for (const std::string& name : names) {
      treat(node, name);
    }
  };
}

Setter<Node> readPress(const Field& list) {
  return [effects = readEffects(list)](SceneState& state, Node& node) {
    node.onPress([effects, &state] { perform(effects, state); });
  };
}

Setter<Node> readClick(const Field& list) {
  return [effects = readEffects(list)](SceneState& state, Node& node) {
    node.onClick([effects, &state](int) { perform(effects, state); });
  };
}

Setter<Node> readRightClick(const Field& list) {
  return [effects = readEffects(list)](SceneState& state, Node& node) {
    node.onRightClick([effects, &state] { perform(effects, state); });
  };
}

constexpr std::array kActionMembers{
    Member<Action>{"refused",
                   [](const Field& value) -> Setter<Action> {
                     return [refused = value.boolean()](SceneState&, Action& action) {
                       action.refused(refused);
                     };
                   }},
    Member<Action>{"takesMs",
                   [](const Field& value) -> Setter<Action> {
                     return [takes = value.milliseconds()](SceneState&, Action& action) {
                       action.takes(takes);
                     };
                   }},
    Member<Action>{"do",
                   [](const Field& value) -> Setter<Action> {
                     return [effects = readEffects(value)](SceneState& state, Action& action) {
                       action.effect([effects, &state] { perform(effects, state); });
                     };
                   }},
    Member<Action>{"announce",
                   [](const Field& value) -> Setter<Action> {
                     return [names = value.texts()](SceneState&, Action& action) {
                       for (const std::string& name : names) {
                         action.announces(name);
                       }
                     };
                   }},
};

Setter<Node> readActions(const Field& object) {
  Setters<Node> setters;
  for (const auto& [key, value] : object.members()) {
    if (value.isNull()) {
      setters.emplace_back([name = key](SceneState&, Node& node) { node.withoutAction(name); });
      continue;
    }
    setters.emplace_back(
        [name = key, about = readSetters(value, kActionMembers)](SceneState& state, Node& node) {
          apply(about, state, node.action(name));
        });
  }
  return [setters](SceneState& state, Node& node) { apply(setters, state, node); };
}

// In the order in which they are applied: "editable" after what states the role's usual ways, the
// reactions before what may set them off.
constexpr std::array kNodeMembers{
    Member<Node>{"frame", readFrame},
    Member<Node>{"title", [](const Field& v) { return attribute("AXTitle", Value{v.text()}); }},
    Member<Node>{"value", [](const Field& v) { return attribute("AXValue", readValue(v)); }},
    Member<Node>{"description",
                 [](const Field& v) { return attribute("AXDescription", Value{v.text()}); }},
    Member<Node>{"placeholder",
                 [](const Field& v) { return attribute("AXPlaceholderValue", Value{v.text()}); }},
    Member<Node>{"identifier",
                 [](const Field& v) { return attribute("AXIdentifier", Value{v.text()}); }},
    Member<Node>{"subrole", [](const Field& v) { return attribute("AXSubrole", Value{v.text()}); }},
    Member<Node>{"url", [](const Field& v) { return attribute("AXURL", Value{Url{v.text()}}); }},
    Member<Node>{"enabled",
                 [](const Field& v) { return attribute("AXEnabled", Value{v.boolean()}); }},
    Member<Node>{"hidden",
                 [](const Field& v) { return attribute("AXHidden", Value{v.boolean()}); }},
    Member<Node>{"selected",
                 [](const Field& v) { return attribute("AXSelected", Value{v.boolean()}); }},
    Member<Node>{"secure", readSecure},
    Member<Node>{"attributes", readAttributes},
    Member<Node>{"editable", readEditable},
    Member<Node>{"refusesSet",
                 [](const Field& v) {
                   return forEachName(
                       v, [](Node& node, const std::string& name) { node.refusingSet(name); });
                 }},
    Member<Node>{"failing",
                 [](const Field& v) {
                   return forEachName(
                       v, [](Node& node, const std::string& name) { node.failing(name); });
                 }},
    Member<Node>{"actions", readActions},
    Member<Node>{"press", readPress},
    Member<Node>{"click", readClick},
    Member<Node>{"rightClick", readRightClick},
    Member<Node>{"announce",
                 [](const Field& v) {
                   return forEachName(
                       v, [](Node& node, const std::string& name) { node.announce(name); });
                 }},
};

// What every toolkit gives a control of its kind: buttons can be pressed, fields take text.
Node& addNode(Node& parent, const std::string& role) {
  if (role == "AXButton") {
    return parent.button("");
  }
  if (role == "AXLink") {
    return parent.link("");
  }
  if (role == "AXCheckBox") {
    return parent.checkBox("", false);
  }
  if (role == "AXTextField" || role == "AXTextArea" || role == "AXSearchField") {
    return parent.textField().with("AXRole", Value{role});
  }
  return parent.add(role);
}

std::optional<std::string> declaredId(const Field& object, Named kind) {
  const auto id = object.find("id");
  return id ? std::optional(id->declare(kind)) : std::nullopt;
}

Setter<Node> readNode(const Field& object) {
  const auto focused = object.find("focused");
  return [id = declaredId(object, Named::node), role = object.require("role").text(),
          setters = readNodeSetters(object, {"id", "role", "focused", "nodes"}),
          focused = focused && focused->boolean(),
          nodes = object.find("nodes") ? readNodes(object.require("nodes")) : nullptr](
             SceneState& state, Node& parent) {
    Node& node = addNode(parent, role);
    if (id) {
      state.nodes[*id] = &node;
    }
    apply(setters, state, node);
    if (nodes) {
      nodes(state, node);
    }
    if (focused) {
      node.focus();
    }
  };
}

Setter<Node> readItems(const Field& list);

Setter<Node> readItem(const Field& object) {
  return [id = declaredId(object, Named::node), setters = readNodeSetters(object, {"id", "items"}),
          items = object.find("items") ? readItems(object.require("items")) : nullptr](
             SceneState& state, Node& menu) {
    Node& item = menu.menuItem("");
    if (id) {
      state.nodes[*id] = &item;
    }
    apply(setters, state, item);
    if (items) {
      items(state, item.add("AXMenu"));
    }
  };
}

Setter<Node> readItems(const Field& list) {
  Setters<Node> items;
  for (const Field& item : list.items()) {
    items.push_back(readItem(item));
  }
  return [items](SceneState& state, Node& menu) { apply(items, state, menu); };
}

}  // namespace

Setters<Node> readNodeSetters(const Field& object, std::initializer_list<std::string_view> others) {
  return readSetters(object, kNodeMembers, others);
}

Setter<Node> readNodes(const Field& list) {
  Setters<Node> nodes;
  for (const Field& node : list.items()) {
    nodes.push_back(readNode(node));
  }
  return [nodes](SceneState& state, Node& parent) { apply(nodes, state, parent); };
}

Setter<App> readWindow(const Field& object) {
  const auto title = object.find("title");
  const auto document = object.find("document");
  const auto minimized = object.find("minimized");
  return [id = declaredId(object, Named::window), frame = object.require("frame").rect(),
          title = title ? title->text() : "", document = document ? document->text() : "",
          minimized = minimized && minimized->boolean(),
          setters = readNodeSetters(object, {"id", "document", "minimized", "nodes"}),
          nodes = object.find("nodes") ? readNodes(object.require("nodes")) : nullptr](
             SceneState& state, App& app) {
    Window& window = app.window(frame, title);
    if (id) {
      state.nodes[*id] = &window;
      state.windows[*id] = &window;
    }
    apply(setters, state, static_cast<Node&>(window));
    if (!document.empty()) {
      window.shows(document);
    }
    window.minimize(minimized);
    if (nodes) {
      nodes(state, window);
    }
  };
}

Setter<App> readMenus(const Field& list) {
  Setters<App> menus;
  for (const Field& menu : list.items()) {
    (void)readSetters(menu, std::array<Member<Node>, 0>{}, {"title", "items"});
    const std::string title = menu.require("title").text();
    const Setter<Node> items = readItems(menu.require("items"));
    menus.emplace_back(
        [title, items](SceneState& state, App& app) { items(state, app.menu(title)); });
  }
  return [menus](SceneState& state, App& app) { apply(menus, state, app); };
}

}  // namespace tarqo::sim
