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

Fact<Node> attribute(std::string name, Value value) {
  return [name = std::move(name), value = std::move(value)](Stage&, Node& node) {
    node.with(name, value);
  };
}

Fact<Node> readFrame(const Field& value) {
  if (value.isNull()) {
    return [](Stage&, Node& node) { node.withoutFrame(); };
  }
  return [frame = value.rect()](Stage&, Node& node) { node.at(frame); };
}

Fact<Node> readAttributes(const Field& object) {
  Facts<Node> facts;
  for (const auto& [name, value] : object.members()) {
    if (value.isNull()) {
      facts.emplace_back([name = name](Stage&, Node& node) { node.without(name); });
    } else {
      facts.push_back(attribute(name, readValue(value)));
    }
  }
  return [facts](Stage& stage, Node& node) { apply(facts, stage, node); };
}

Fact<Node> readSecure(const Field& value) {
  if (!value.boolean()) {
    return [](Stage&, Node& node) { node.without("AXSubrole"); };
  }
  return attribute("AXSubrole", Value{"AXSecureTextField"});
}

Fact<Node> readEditable(const Field& value) {
  return [editable = value.boolean()](Stage&, Node& node) {
    node.settable("AXValue", editable);
    node.settable("AXFocused", editable);
  };
}

// Each name in a list gets the same treatment.
Fact<Node> forEachName(const Field& list, void (*treat)(Node&, const std::string&)) {
  return [names = list.texts(), treat](Stage&, Node& node) {
    for (const std::string& name : names) {
      treat(node, name);
    }
  };
}

Fact<Node> readPress(const Field& list) {
  return [effects = readEffects(list)](Stage& stage, Node& node) {
    node.onPress([effects, &stage] { perform(effects, stage); });
  };
}

Fact<Node> readClick(const Field& list) {
  return [effects = readEffects(list)](Stage& stage, Node& node) {
    node.onClick([effects, &stage](int) { perform(effects, stage); });
  };
}

Fact<Node> readRightClick(const Field& list) {
  return [effects = readEffects(list)](Stage& stage, Node& node) {
    node.onRightClick([effects, &stage] { perform(effects, stage); });
  };
}

constexpr std::array kActionMembers{
    Member<Action>{"refused",
                   [](const Field& value) -> Fact<Action> {
                     return [refused = value.boolean()](Stage&, Action& action) {
                       action.refused(refused);
                     };
                   }},
    Member<Action>{"takesMs",
                   [](const Field& value) -> Fact<Action> {
                     return [takes = value.milliseconds()](Stage&, Action& action) {
                       action.takes(takes);
                     };
                   }},
    Member<Action>{"do",
                   [](const Field& value) -> Fact<Action> {
                     return [effects = readEffects(value)](Stage& stage, Action& action) {
                       action.effect([effects, &stage] { perform(effects, stage); });
                     };
                   }},
    Member<Action>{"announce",
                   [](const Field& value) -> Fact<Action> {
                     return [names = value.texts()](Stage&, Action& action) {
                       for (const std::string& name : names) {
                         action.announces(name);
                       }
                     };
                   }},
};

Fact<Node> readActions(const Field& object) {
  Facts<Node> facts;
  for (const auto& [name, value] : object.members()) {
    if (value.isNull()) {
      facts.emplace_back([name = name](Stage&, Node& node) { node.withoutAction(name); });
      continue;
    }
    facts.emplace_back([name = name, about = readFacts(value, kActionMembers)](
                           Stage& stage, Node& node) { apply(about, stage, node.action(name)); });
  }
  return [facts](Stage& stage, Node& node) { apply(facts, stage, node); };
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

Fact<Node> readNode(const Field& object) {
  const auto focused = object.find("focused");
  return [id = declaredId(object, Named::node), role = object.require("role").text(),
          facts = readNodeFacts(object, {"id", "role", "focused", "nodes"}),
          focused = focused && focused->boolean(),
          nodes = object.find("nodes") ? readNodes(object.require("nodes")) : nullptr](
             Stage& stage, Node& parent) {
    Node& node = addNode(parent, role);
    if (id) {
      stage.nodes[*id] = &node;
    }
    apply(facts, stage, node);
    if (nodes) {
      nodes(stage, node);
    }
    if (focused) {
      node.focus();
    }
  };
}

Fact<Node> readItems(const Field& list);

Fact<Node> readItem(const Field& object) {
  return [id = declaredId(object, Named::node), facts = readNodeFacts(object, {"id", "items"}),
          items = object.find("items") ? readItems(object.require("items")) : nullptr](Stage& stage,
                                                                                       Node& menu) {
    Node& item = menu.menuItem("");
    if (id) {
      stage.nodes[*id] = &item;
    }
    apply(facts, stage, item);
    if (items) {
      items(stage, item.add("AXMenu"));
    }
  };
}

Fact<Node> readItems(const Field& list) {
  Facts<Node> items;
  for (const Field& item : list.items()) {
    items.push_back(readItem(item));
  }
  return [items](Stage& stage, Node& menu) { apply(items, stage, menu); };
}

}  // namespace

Facts<Node> readNodeFacts(const Field& object, std::initializer_list<std::string_view> others) {
  return readFacts(object, kNodeMembers, others);
}

Fact<Node> readNodes(const Field& list) {
  Facts<Node> nodes;
  for (const Field& node : list.items()) {
    nodes.push_back(readNode(node));
  }
  return [nodes](Stage& stage, Node& parent) { apply(nodes, stage, parent); };
}

Fact<App> readWindow(const Field& object) {
  const auto title = object.find("title");
  const auto document = object.find("document");
  const auto minimized = object.find("minimized");
  return [id = declaredId(object, Named::window), frame = object.require("frame").rect(),
          title = title ? title->text() : "", document = document ? document->text() : "",
          minimized = minimized && minimized->boolean(),
          facts = readNodeFacts(object, {"id", "document", "minimized", "nodes"}),
          nodes = object.find("nodes") ? readNodes(object.require("nodes")) : nullptr](Stage& stage,
                                                                                       App& app) {
    Window& window = app.window(frame, title);
    if (id) {
      stage.nodes[*id] = &window;
      stage.windows[*id] = &window;
    }
    apply(facts, stage, static_cast<Node&>(window));
    if (!document.empty()) {
      window.shows(document);
    }
    window.minimize(minimized);
    if (nodes) {
      nodes(stage, window);
    }
  };
}

Fact<App> readMenus(const Field& list) {
  Facts<App> menus;
  for (const Field& menu : list.items()) {
    (void)readFacts(menu, std::array<Member<Node>, 0>{}, {"title", "items"});
    const std::string title = menu.require("title").text();
    const Fact<Node> items = readItems(menu.require("items"));
    menus.emplace_back([title, items](Stage& stage, App& app) { items(stage, app.menu(title)); });
  }
  return [menus](Stage& stage, App& app) { apply(menus, stage, app); };
}

}  // namespace tarqo::sim
