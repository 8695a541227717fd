#include "simulator/scene_file.h"

#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <system_error>
#include <utility>

#include "platform/unicode.h"
#include "simulator/scene_parts.h"

namespace tarqo::sim {
namespace {

constexpr std::array<Member<Node>, 0> kNone{};

// A window of a process that is no application of the scene, in front of all others.
Effect readOtherWindow(const Field& object) {
  (void)readSetters(object, kNone, {"id", "owner", "frame", "layer"});
  const auto id = object.find("id");
  const auto layer = object.find("layer");
  return [id = id ? id->declare(Named::otherWindow) : "", owner = object.require("owner").text(),
          frame = object.require("frame").rect(),
          layer = layer ? layer->count() : 0](SceneState& state) {
    const Pid pid = state.desktop.processes().add("/usr/bin/" + owner, 1);
    ServerWindow& window = state.desktop.windowServer().bareWindow(pid, owner, frame);
    window.info.layer = layer;
    if (!id.empty()) {
      state.otherWindows[id] = &window;
    }
  };
}

// Which application launched the helper, and through which other programs.
Effect readHost(const Field& object) {
  (void)readSetters(object, kNone, {"application", "through"});
  const auto through = object.find("through");
  return [bundleId = object.require("application").name({Named::application}),
          programs = through ? through->texts() : std::vector<std::string>{}](SceneState& state) {
    App* host = runningApp(state, bundleId);
    if (host == nullptr) {
      return;
    }
    ProcessesService& processes = state.desktop.processes();
    Pid parent = host->pid();
    for (const std::string& program : programs) {
      parent = processes.add(program, parent);
    }
    processes.table[processes.own].parent = parent;
  };
}

Json parsed(const std::string& text) {
  try {
    return parseJson(unicode::repaired(text));
  } catch (const JsonError& error) {
    throw SceneError("the scene is no JSON: " + error.reason());
  }
}

}  // namespace

SceneFile::SceneFile(const std::string& json) {
  const Json value = parsed(json);
  SceneNames names;
  const Field scene(value, "", names);
  const Setters<Desktop> desktop =
      readDesktopSetters(scene, {"applications", "otherWindows", "host", "changes"});
  if (const auto applications = scene.find("applications")) {
    for (const Field& application : applications->items()) {
      build_.push_back(readApplication(application));
    }
  }
  if (const auto windows = scene.find("otherWindows")) {
    for (const Field& window : windows->items()) {
      build_.push_back(readOtherWindow(window));
    }
  }
  if (const auto host = scene.find("host")) {
    build_.push_back(readHost(*host));
  }
  build_.emplace_back([desktop](SceneState& state) { apply(desktop, state, state.desktop); });
  if (const auto changes = scene.find("changes")) {
    for (const Field& change : changes->items()) {
      readChange(change);
    }
  }
  names.requireAllKnown();
}

SceneFile SceneFile::read(const std::string& path) {
  std::error_code unknown;
  if (std::filesystem::is_directory(path, unknown)) {
    throw SceneError("the scene must be a file, and this is a folder");
  }
  std::ifstream file(path, std::ios::binary);
  std::string json;
  try {
    json.assign(std::istreambuf_iterator<char>(file), {});
  } catch (const std::ios_base::failure&) {
    file.setstate(std::ios_base::badbit);
  }
  if (!file) {
    throw SceneError("the file cannot be read");
  }
  return SceneFile(json);
}

void SceneFile::readChange(const Field& object) {
  (void)readSetters(object, kNone, {"after", "do"});
  const Field after = object.require("after");
  (void)readSetters(after, kNone, {"requests", "ms"});
  const auto requests = after.find("requests");
  const auto ms = after.find("ms");
  const std::optional<Duration> delay = ms ? std::optional(ms->milliseconds()) : std::nullopt;
  changes_.emplace(requests ? requests->count() : 0,
                   [effects = readEffects(object.require("do")), delay](SceneState& state) {
                     if (!delay) {
                       perform(effects, state);
                       return;
                     }
                     state.desktop.after(*delay, [effects, &state] { perform(effects, state); });
                   });
}

void SceneFile::changeAfter(int requests, SceneState& state) const {
  const auto [begin, end] = changes_.equal_range(requests);
  for (auto change = begin; change != end; ++change) {
    change->second(state);
  }
}

}  // namespace tarqo::sim
