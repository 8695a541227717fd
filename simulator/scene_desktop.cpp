// The desktop as a whole: displays, the login session, grants, pixels, text recognition, input.

#include "simulator/scene_parts.h"

namespace tarqo::sim {
namespace {

Setter<Desktop> all(Setters<Desktop> setters) {
  return [setters = std::move(setters)](SceneState& state, Desktop& desktop) {
    apply(setters, state, desktop);
  };
}

Setter<Desktop> readScreens(const Field& list) {
  std::vector<std::pair<Rect, double>> screens;
  for (const Field& item : list.items()) {
    (void)readSetters(item, std::array<Member<Desktop>, 0>{}, {"frame", "scale"});
    const auto scale = item.find("scale");
    screens.emplace_back(item.require("frame").rect(), scale ? scale->number(1, 8) : 1);
  }
  return [screens](SceneState&, Desktop& desktop) {
    desktop.windowServer().displays.clear();
    for (const auto& [frame, scale] : screens) {
      desktop.windowServer().addDisplay(frame, scale);
    }
  };
}

constexpr std::array kSessionMembers{
    Member<Desktop>{"locked",
                    [](const Field& value) -> Setter<Desktop> {
                      return [locked = value.boolean()](SceneState&, Desktop& desktop) {
                        desktop.windowServer().session.locked = locked;
                      };
                    }},
    Member<Desktop>{"onConsole",
                    [](const Field& value) -> Setter<Desktop> {
                      return [onConsole = value.boolean()](SceneState&, Desktop& desktop) {
                        desktop.windowServer().session.onConsole = onConsole;
                      };
                    }},
};

Setter<Desktop> readPermission(const Field& value, bool PermissionsService::*grant) {
  return [granted = value.boolean(), grant](SceneState&, Desktop& desktop) {
    desktop.permissions().*grant = granted;
  };
}

constexpr std::array kPermissionMembers{
    Member<Desktop>{
        "accessibility",
        [](const Field& value) { return readPermission(value, &PermissionsService::trusted); }},
    Member<Desktop>{"screenCapture",
                    [](const Field& value) {
                      return readPermission(value, &PermissionsService::captureGranted);
                    }},
    Member<Desktop>{"promptGrantsAccessibility",
                    [](const Field& value) {
                      return readPermission(value, &PermissionsService::promptGrantsTrust);
                    }},
    Member<Desktop>{"promptGrantsScreenCapture",
                    [](const Field& value) {
                      return readPermission(value, &PermissionsService::requestGrantsCapture);
                    }},
};

Reply readReply(const Field& value) {
  if (value.value().is_number()) {
    return Reply::after(value.milliseconds());
  }
  const std::string word = value.value().is_string() ? value.text() : "";
  if (word == "works") {
    return Reply::now();
  }
  if (word == "fails") {
    return Reply::nothing();
  }
  if (word == "never") {
    return Reply::never();
  }
  value.fail("must be \"works\", \"fails\", \"never\" or a number of milliseconds");
}

Setter<Desktop> readWindowImagesOf(const Field& object) {
  std::map<std::string, Reply> replies;
  for (const auto& [id, value] : object.members()) {
    replies.emplace(id, readReply(value));
    value.refer(id, {Named::window, Named::otherWindow});
  }
  return [replies](SceneState& state, Desktop& desktop) {
    for (const auto& [id, reply] : replies) {
      const auto own = state.windows.find(id);
      const auto other = state.otherWindows.find(id);
      const ServerWindow* window = own != state.windows.end()          ? &own->second->server()
                                   : other != state.otherWindows.end() ? other->second
                                                                       : nullptr;
      if (window != nullptr && window->info.number) {
        desktop.capture().windowImagesOf.insert_or_assign(*window->info.number, reply);
      }
    }
  };
}

constexpr std::array kCaptureMembers{
    Member<Desktop>{"windowImages",
                    [](const Field& value) -> Setter<Desktop> {
                      return [reply = readReply(value)](SceneState&, Desktop& desktop) {
                        desktop.capture().windowImages = reply;
                      };
                    }},
    Member<Desktop>{"windowImagesOf", readWindowImagesOf},
    Member<Desktop>{"displayRegions",
                    [](const Field& value) -> Setter<Desktop> {
                      return [reply = readReply(value)](SceneState&, Desktop& desktop) {
                        desktop.capture().displayRegions = reply;
                      };
                    }},
    Member<Desktop>{"encoding",
                    [](const Field& value) -> Setter<Desktop> {
                      const std::string word = value.text();
                      if (word != "works" && word != "fails" && word != "missing") {
                        value.fail("must be \"works\", \"fails\" or \"missing\"");
                      }
                      return [word](SceneState&, Desktop& desktop) {
                        auto& fault = desktop.images().encodingFails;
                        fault.reset();
                        if (word != "works") {
                          fault = word == "fails" ? PngError::failed : PngError::noEncoder;
                        }
                      };
                    }},
};

RecognizedLine readLine(const Field& item) {
  (void)readSetters(item, std::array<Member<Desktop>, 0>{}, {"text", "box", "confidence"});
  const auto confidence = item.find("confidence");
  return {item.require("text").text(), item.require("box").rect(),
          confidence ? static_cast<float>(confidence->number(0, 1)) : 1.0F};
}

constexpr std::array kRecognitionMembers{
    Member<Desktop>{"lines",
                    [](const Field& list) -> Setter<Desktop> {
                      std::vector<RecognizedLine> lines;
                      for (const Field& item : list.items()) {
                        lines.push_back(readLine(item));
                      }
                      return [lines](SceneState&, Desktop& desktop) {
                        desktop.recognizer().lines = lines;
                      };
                    }},
    Member<Desktop>{"error",
                    [](const Field& value) -> Setter<Desktop> {
                      return [error = value.text()](SceneState&, Desktop& desktop) {
                        desktop.recognizer().error = error;
                      };
                    }},
    Member<Desktop>{"takesMs",
                    [](const Field& value) -> Setter<Desktop> {
                      return [takes = value.milliseconds()](SceneState&, Desktop& desktop) {
                        desktop.recognizer().takes = takes;
                      };
                    }},
};

Setter<Desktop> readRefusal(const Field& value, bool InputEventsService::*refuses) {
  return [works = value.boolean(), refuses](SceneState&, Desktop& desktop) {
    desktop.input().*refuses = !works;
  };
}

constexpr std::array kInputMembers{
    Member<Desktop>{
        "mouse",
        [](const Field& value) { return readRefusal(value, &InputEventsService::refusesMouse); }},
    Member<Desktop>{
        "keys",
        [](const Field& value) { return readRefusal(value, &InputEventsService::refusesKeys); }},
    Member<Desktop>{
        "text",
        [](const Field& value) { return readRefusal(value, &InputEventsService::refusesText); }},
    Member<Desktop>{
        "scroll",
        [](const Field& value) { return readRefusal(value, &InputEventsService::refusesScroll); }},
};

constexpr std::array kDesktopMembers{
    Member<Desktop>{"screens", readScreens},
    Member<Desktop>{"session", [](const Field& v) { return all(readSetters(v, kSessionMembers)); }},
    Member<Desktop>{"permissions",
                    [](const Field& v) { return all(readSetters(v, kPermissionMembers)); }},
    Member<Desktop>{"capture", [](const Field& v) { return all(readSetters(v, kCaptureMembers)); }},
    Member<Desktop>{"recognizedText",
                    [](const Field& v) { return all(readSetters(v, kRecognitionMembers)); }},
    Member<Desktop>{"inputEvents",
                    [](const Field& v) { return all(readSetters(v, kInputMembers)); }},
};

}  // namespace

Setters<Desktop> readDesktopSetters(const Field& object,
                                    std::initializer_list<std::string_view> others) {
  return readSetters(object, kDesktopMembers, others);
}

}  // namespace tarqo::sim
