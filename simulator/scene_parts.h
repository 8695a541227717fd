// The parts of a scene file, each read into what it does to the scene's state. Every reader throws
// `SceneError`.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "simulator/scene_field.h"
#include "simulator/scene_state.h"

namespace tarqo::sim {

/// A member that an object of a scene may have, and how its value is read.
template <typename Target>
struct Member {
  std::string_view name;
  Setter<Target> (*read)(const Field& value);
};

/// Reads every member of `object` that `table` knows, in the table's order. `others` are those that
/// the caller reads; any further one is an error.
template <typename Target, std::size_t count>
Setters<Target> readSetters(const Field& object, const std::array<Member<Target>, count>& table,
                            std::initializer_list<std::string_view> others = {}) {
  for (const auto& [key, value] : object.members()) {
    const std::string_view name = key;
    const bool known =
        std::any_of(table.begin(), table.end(),
                    [&](const Member<Target>& member) { return member.name == name; }) ||
        std::find(others.begin(), others.end(), name) != others.end();
    if (!known) {
      value.fail("is not known");
    }
  }
  Setters<Target> setters;
  for (const Member<Target>& member : table) {
    if (const auto value = object.find(member.name)) {
      setters.push_back(member.read(*value));
    }
  }
  return setters;
}

/// What may be stated of any node or window; `others` as above.
[[nodiscard]] Setters<Node> readNodeSetters(const Field& object,
                                            std::initializer_list<std::string_view> others);
/// A list of nodes, added to the target.
[[nodiscard]] Setter<Node> readNodes(const Field& list);
/// A new window of the target.
[[nodiscard]] Setter<App> readWindow(const Field& object);
/// A list of menus, added to the target's menu bar.
[[nodiscard]] Setter<App> readMenus(const Field& list);

/// Installs an application, and starts it unless the scene says that it does not run.
[[nodiscard]] Effect readApplication(const Field& object);
[[nodiscard]] Setters<App> readAppSetters(const Field& object,
                                          std::initializer_list<std::string_view> others);

/// What may be stated of the desktop as a whole.
[[nodiscard]] Setters<Desktop> readDesktopSetters(const Field& object,
                                                  std::initializer_list<std::string_view> others);

/// A list of effects: what an element does when it is used, or what changes by itself.
[[nodiscard]] Effects readEffects(const Field& list);

/// The application of that identifier that runs now; null when there is none.
[[nodiscard]] App* runningApp(SceneState& state, const std::string& bundleId);

}  // namespace tarqo::sim
