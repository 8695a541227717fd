// Applications: what is installed, what runs, and how each behaves.

#include "input/key_tables.h"
#include "simulator/scene_parts.h"

namespace tarqo::sim {
namespace {

Setter<App> readFlag(const Field& value, bool AppFacts::*flag) {
  return [value = value.boolean(), flag](SceneState&, App& app) { app.facts.*flag = value; };
}

Setter<App> readComesToFront(const Field& value) {
  const std::optional<Duration> after =
      value.isNull() ? std::nullopt : std::optional(value.milliseconds());
  return [after](SceneState&, App& app) { app.facts.comesToFront = after; };
}

Setter<App> readKeys(const Field& object) {
  std::map<std::uint16_t, Effects> effects;
  for (const auto& [name, list] : object.members()) {
    const auto code = keyCode(name);
    if (!code) {
      list.fail("must be a key that the protocol knows");
    }
    effects[*code] = readEffects(list);
  }
  return [effects](SceneState& state, App& app) {
    app.onKey([effects, &state](const KeyEvent& event) {
      const auto found = effects.find(event.keyCode);
      if (event.down && found != effects.end()) {
        perform(found->second, state);
      }
    });
  };
}

constexpr std::array kAppMembers{
    Member<App>{"name",
                [](const Field& value) -> Setter<App> {
                  return [name = value.text()](SceneState&, App& app) {
                    app.facts.localizedName = name;
                  };
                }},
    Member<App>{"hidden", [](const Field& value) { return readFlag(value, &AppFacts::hidden); }},
    Member<App>{"hung", [](const Field& value) { return readFlag(value, &AppFacts::hung); }},
    Member<App>{"refusesHitTest",
                [](const Field& value) { return readFlag(value, &AppFacts::refusesHitTest); }},
    Member<App>{"refusesObservers",
                [](const Field& value) { return readFlag(value, &AppFacts::refusesObservers); }},
    Member<App>{"acknowledgesActions",
                [](const Field& value) { return readFlag(value, &AppFacts::acknowledgesActions); }},
    Member<App>{
        "hangsAtKeysInActions",
        [](const Field& value) { return readFlag(value, &AppFacts::hangsAtKeysInActions); }},
    Member<App>{"comesToFrontMs", readComesToFront},
    Member<App>{"callMs",
                [](const Field& value) -> Setter<App> {
                  return [takes = value.milliseconds()](SceneState&, App& app) {
                    app.facts.eachCallTakes = takes;
                  };
                }},
    Member<App>{"keys", readKeys},
};

// How an application behaves when it is opened.
constexpr std::array kBundleMembers{
    Member<InstalledBundle>{"name",
                            [](const Field& value) -> Setter<InstalledBundle> {
                              return [name = value.text()](SceneState&, InstalledBundle& bundle) {
                                bundle.displayName = name;
                              };
                            }},
    Member<InstalledBundle>{"version",
                            [](const Field& value) -> Setter<InstalledBundle> {
                              return
                                  [version = value.text()](SceneState&, InstalledBundle& bundle) {
                                    bundle.info["CFBundleShortVersionString"] = version;
                                  };
                            }},
    Member<InstalledBundle>{"build",
                            [](const Field& value) -> Setter<InstalledBundle> {
                              return [build = value.text()](SceneState&, InstalledBundle& bundle) {
                                bundle.info["CFBundleVersion"] = build;
                              };
                            }},
    // Null: the application never comes up.
    Member<InstalledBundle>{
        "launchMs",
        [](const Field& value) -> Setter<InstalledBundle> {
          const Reply reply = value.isNull() ? Reply::never() : Reply::after(value.milliseconds());
          return [reply](SceneState&, InstalledBundle& bundle) { bundle.launch = reply; };
        }},
    Member<InstalledBundle>{"launchError",
                            [](const Field& value) -> Setter<InstalledBundle> {
                              return [error = value.text()](SceneState&, InstalledBundle& bundle) {
                                bundle.launchError = error;
                              };
                            }},
    Member<InstalledBundle>{
        "reopen",
        [](const Field& list) -> Setter<InstalledBundle> {
          return [effects = readEffects(list)](SceneState& state, InstalledBundle& bundle) {
            bundle.onReopen = [effects, &state](App&) { perform(effects, state); };
          };
        }},
};

// Opens a new window for every site but those excepted.
Setter<InstalledBundle> readOpensSites(const Field& object) {
  (void)readSetters(object, std::array<Member<App>, 0>{}, {"frame", "except"});
  const auto except = object.find("except");
  return [frame = object.require("frame").rect(),
          excepted = except ? except->texts() : std::vector<std::string>{}](
             SceneState&, InstalledBundle& bundle) {
    bundle.onOpenSite = [frame, excepted](App& app, const std::string& site) {
      const bool opens = std::none_of(excepted.begin(), excepted.end(),
                                      [&](const auto& each) { return site.starts_with(each); });
      if (opens) {
        app.window(frame, site).shows(site);
      }
    };
  };
}

// "com.example.Notes" is "Notes" unless the scene calls it otherwise.
std::string bundlePath(const Field& object, const std::string& bundleId) {
  const auto folder = object.find("folder");
  const auto name = object.find("name");
  return (folder ? folder->text() : "/Applications") + "/" +
         (name ? name->text() : bundleId.substr(bundleId.rfind('.') + 1)) + ".app";
}

Setters<App> readContent(const Field& object) {
  Setters<App> content;
  if (const auto windows = object.find("windows")) {
    for (const Field& window : windows->items()) {
      content.push_back(readWindow(window));
    }
  }
  if (const auto menus = object.find("menus")) {
    content.push_back(readMenus(*menus));
  }
  return content;
}

Setters<InstalledBundle> readBundle(const Field& object) {
  Setters<InstalledBundle> setters;
  for (const Member<InstalledBundle>& member : kBundleMembers) {
    if (const auto value = object.find(member.name)) {
      setters.push_back(member.read(*value));
    }
  }
  if (const auto sites = object.find("opensSites")) {
    setters.push_back(readOpensSites(*sites));
  }
  return setters;
}

}  // namespace

App* runningApp(SceneState& state, const std::string& bundleId) {
  for (const RunningApplication& each :
       state.desktop.platform().workspace.runningApplications(bundleId)) {
    (void)each;
    return &state.desktop.app(bundleId);
  }
  return nullptr;
}

Setters<App> readAppSetters(const Field& object, std::initializer_list<std::string_view> others) {
  return readSetters(object, kAppMembers, others);
}

Effect readApplication(const Field& object) {
  const auto running = object.find("running");
  const auto front = object.find("front");
  const std::string bundleId = object.require("bundleId").declare(Named::application);
  Setters<App> setters = readAppSetters(
      object, {"bundleId", "folder", "running", "front", "windows", "menus", "version", "build",
               "launchMs", "reopen", "launchError", "opensSites"});
  for (Setter<App>& part : readContent(object)) {
    setters.push_back(std::move(part));
  }
  return [bundleId, path = bundlePath(object, bundleId), about = readBundle(object), setters,
          running = !running || running->boolean(),
          front = front && front->boolean()](SceneState& state) {
    InstalledBundle& bundle = state.desktop.bundles().install(path, bundleId);
    apply(about, state, bundle);
    bundle.onLaunch = [setters, &state](App& app) { apply(setters, state, app); };
    if (running) {
      App& app = state.desktop.bundles().start(bundle);
      apply(setters, state, app);
      if (front) {
        app.bringToFront();
      }
    }
  };
}

}  // namespace tarqo::sim
