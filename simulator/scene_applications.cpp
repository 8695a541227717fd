// Applications: what is installed, what runs, and how each behaves.

#include "input/key_tables.h"
#include "simulator/scene_parts.h"

namespace tarqo::sim {
namespace {

Fact<App> readFlag(const Field& value, bool AppFacts::*flag) {
  return [value = value.boolean(), flag](Stage&, App& app) { app.facts.*flag = value; };
}

Fact<App> readComesToFront(const Field& value) {
  const std::optional<Duration> after =
      value.isNull() ? std::nullopt : std::optional(value.milliseconds());
  return [after](Stage&, App& app) { app.facts.comesToFront = after; };
}

Fact<App> readKeys(const Field& object) {
  std::map<std::uint16_t, Deeds> effects;
  for (const auto& [name, list] : object.members()) {
    const auto code = keyCode(name);
    if (!code) {
      list.fail("must be a key that the protocol knows");
    }
    effects[*code] = readEffects(list);
  }
  return [effects](Stage& stage, App& app) {
    app.onKey([effects, &stage](const KeyEvent& event) {
      const auto found = effects.find(event.keyCode);
      if (event.down && found != effects.end()) {
        perform(found->second, stage);
      }
    });
  };
}

constexpr std::array kAppMembers{
    Member<App>{"name",
                [](const Field& value) -> Fact<App> {
                  return
                      [name = value.text()](Stage&, App& app) { app.facts.localizedName = name; };
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
                [](const Field& value) -> Fact<App> {
                  return [takes = value.milliseconds()](Stage&, App& app) {
                    app.facts.eachCallTakes = takes;
                  };
                }},
    Member<App>{"keys", readKeys},
};

// How an application behaves when it is opened.
constexpr std::array kBundleMembers{
    Member<InstalledBundle>{"name",
                            [](const Field& value) -> Fact<InstalledBundle> {
                              return [name = value.text()](Stage&, InstalledBundle& bundle) {
                                bundle.displayName = name;
                              };
                            }},
    Member<InstalledBundle>{"version",
                            [](const Field& value) -> Fact<InstalledBundle> {
                              return [version = value.text()](Stage&, InstalledBundle& bundle) {
                                bundle.info["CFBundleShortVersionString"] = version;
                              };
                            }},
    Member<InstalledBundle>{"build",
                            [](const Field& value) -> Fact<InstalledBundle> {
                              return [build = value.text()](Stage&, InstalledBundle& bundle) {
                                bundle.info["CFBundleVersion"] = build;
                              };
                            }},
    // Null: the application never comes up.
    Member<InstalledBundle>{
        "launchMs",
        [](const Field& value) -> Fact<InstalledBundle> {
          const Reply reply = value.isNull() ? Reply::never() : Reply::after(value.milliseconds());
          return [reply](Stage&, InstalledBundle& bundle) { bundle.launch = reply; };
        }},
    Member<InstalledBundle>{"launchError",
                            [](const Field& value) -> Fact<InstalledBundle> {
                              return [error = value.text()](Stage&, InstalledBundle& bundle) {
                                bundle.launchError = error;
                              };
                            }},
    Member<InstalledBundle>{
        "reopen",
        [](const Field& list) -> Fact<InstalledBundle> {
          return [effects = readEffects(list)](Stage& stage, InstalledBundle& bundle) {
            bundle.onReopen = [effects, &stage](App&) { perform(effects, stage); };
          };
        }},
};

// Opens a new window for every site but those excepted.
Fact<InstalledBundle> readOpensSites(const Field& object) {
  (void)readFacts(object, std::array<Member<App>, 0>{}, {"frame", "except"});
  const auto except = object.find("except");
  return [frame = object.require("frame").rect(),
          excepted = except ? except->texts() : std::vector<std::string>{}](
             Stage&, InstalledBundle& bundle) {
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

Facts<App> readContent(const Field& object) {
  Facts<App> content;
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

Facts<InstalledBundle> readBundle(const Field& object) {
  Facts<InstalledBundle> facts;
  for (const Member<InstalledBundle>& member : kBundleMembers) {
    if (const auto value = object.find(member.name)) {
      facts.push_back(member.read(*value));
    }
  }
  if (const auto sites = object.find("opensSites")) {
    facts.push_back(readOpensSites(*sites));
  }
  return facts;
}

}  // namespace

App* runningApp(Stage& stage, const std::string& bundleId) {
  for (const RunningApplication& each :
       stage.desktop.platform().workspace.runningApplications(bundleId)) {
    (void)each;
    return &stage.desktop.app(bundleId);
  }
  return nullptr;
}

Facts<App> readAppFacts(const Field& object, std::initializer_list<std::string_view> others) {
  return readFacts(object, kAppMembers, others);
}

Deed readApplication(const Field& object) {
  const auto running = object.find("running");
  const auto front = object.find("front");
  const std::string bundleId = object.require("bundleId").declare(Named::application);
  Facts<App> facts =
      readAppFacts(object, {"bundleId", "folder", "running", "front", "windows", "menus", "version",
                            "build", "launchMs", "reopen", "launchError", "opensSites"});
  for (Fact<App>& part : readContent(object)) {
    facts.push_back(std::move(part));
  }
  return
      [bundleId, path = bundlePath(object, bundleId), about = readBundle(object), facts,
       running = !running || running->boolean(), front = front && front->boolean()](Stage& stage) {
        InstalledBundle& bundle = stage.desktop.bundles().install(path, bundleId);
        apply(about, stage, bundle);
        bundle.onLaunch = [facts, &stage](App& app) { apply(facts, stage, app); };
        if (running) {
          App& app = stage.desktop.bundles().start(bundle);
          apply(facts, stage, app);
          if (front) {
            app.bringToFront();
          }
        }
      };
}

}  // namespace tarqo::sim
