// How long lies between the end of the last proof that an event may go out and the moment it has:
// what changes in that time, nobody sees. Watched from outside, by services that pass every call on
// and note the time.
//
//     check_to_event BUNDLE ROUNDS
//
// Double-clicks, presses a key and turns the wheel ROUNDS times each, on the running application of
// that bundle identifier. Prints one line a kind of event: what, how many actions, how many events,
// the median, the 99th percentile and the longest, in milliseconds.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/json.h"
#include "platform/platform.h"
#include "server/server.h"

namespace tarqo {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

/// When the last proof ended, and what lay between proofs and events.
class Watch {
 public:
  /// Asks something that a proof is made of.
  template <typename Question>
  auto prove(Question&& question) {
    auto answer = std::forward<Question>(question)();
    provenAt_ = std::chrono::steady_clock::now();
    return answer;
  }

  void eventIsOut() {
    gaps_.push_back(Milliseconds(std::chrono::steady_clock::now() - provenAt_).count());
  }

  [[nodiscard]] std::vector<double> takeGaps() { return std::exchange(gaps_, {}); }

 private:
  Instant provenAt_{};
  std::vector<double> gaps_;
};

class WatchedAccessibility final : public Accessibility {
 public:
  WatchedAccessibility(Accessibility& service, Watch& watch) : service_(service), watch_(watch) {}

  Element application(Pid pid, Duration messagingTimeout) override {
    return service_.application(pid, messagingTimeout);
  }
  std::optional<Value> attribute(const Element& element, std::string_view name) override {
    return watch_.prove([&] { return service_.attribute(element, name); });
  }
  std::vector<std::optional<Value>> attributes(const Element& element,
                                               std::span<const std::string_view> names) override {
    return watch_.prove([&] { return service_.attributes(element, names); });
  }
  std::vector<std::string> actionNames(const Element& element) override {
    return watch_.prove([&] { return service_.actionNames(element); });
  }
  Performed perform(const Element& element, std::string_view action) override {
    return service_.perform(element, action);
  }
  bool isEndangeredByKeys(Pid pid) override {
    return watch_.prove([&] { return service_.isEndangeredByKeys(pid); });
  }
  std::optional<Element> otherKeyWindow(const Element& window) override {
    return watch_.prove([&] { return service_.otherKeyWindow(window); });
  }
  bool takesTextByKeys(const Element& element) override {
    return watch_.prove([&] { return service_.takesTextByKeys(element); });
  }
  std::optional<Size> wheelStep(const Element& element) override {
    return service_.wheelStep(element);
  }
  bool set(const Element& element, std::string_view name, const Value& value) override {
    return service_.set(element, name, value);
  }
  bool isSettable(const Element& element, std::string_view name) override {
    return watch_.prove([&] { return service_.isSettable(element, name); });
  }
  std::optional<Element> elementAt(Point point) override {
    return watch_.prove([&] { return service_.elementAt(point); });
  }
  std::optional<Pid> pidOf(const Element& element) override { return service_.pidOf(element); }
  std::unique_ptr<Observer> observe(Pid pid, NotificationCallback callback) override {
    return service_.observe(pid, std::move(callback));
  }
  std::unique_ptr<TreeRead> readTree(const Element& root, const TreeReadLimits& limits) override {
    return service_.readTree(root, limits);
  }

 private:
  Accessibility& service_;
  Watch& watch_;
};

class WatchedWorkspace final : public Workspace {
 public:
  WatchedWorkspace(Workspace& service, Watch& watch) : service_(service), watch_(watch) {}

  std::vector<RunningApplication> runningApplications() override {
    return service_.runningApplications();
  }
  std::vector<RunningApplication> runningApplications(std::string_view bundleId) override {
    return service_.runningApplications(bundleId);
  }
  std::optional<RunningApplication> runningApplication(Pid pid) override {
    return service_.runningApplication(pid);
  }
  bool isTerminated(const ApplicationId& application) override {
    return service_.isTerminated(application);
  }
  bool isHidden(const ApplicationId& application) override {
    return service_.isHidden(application);
  }
  void unhide(const ApplicationId& application) override { service_.unhide(application); }
  void activate(const ApplicationId& application) override { service_.activate(application); }
  std::optional<Pid> frontmostApplication() override {
    return watch_.prove([&] { return service_.frontmostApplication(); });
  }

 private:
  Workspace& service_;
  Watch& watch_;
};

class WatchedWindowServer final : public WindowServer {
 public:
  WatchedWindowServer(WindowServer& service, Watch& watch) : service_(service), watch_(watch) {}

  std::vector<WindowInfo> windows(WindowList which) override {
    return watch_.prove([&] { return service_.windows(which); });
  }
  std::vector<Screen> screens() override { return service_.screens(); }
  LoginSession loginSession() override { return service_.loginSession(); }

 private:
  WindowServer& service_;
  Watch& watch_;
};

/// Notes the events that somebody could get wrongly: buttons and keys that go down, turns of the
/// wheel.
class WatchedInputEvents final : public InputEvents {
 public:
  WatchedInputEvents(InputEvents& service, Watch& watch) : service_(service), watch_(watch) {}

  std::unique_ptr<EventSource> makeSource(const std::string& text) override {
    return service_.makeSource(text);
  }
  std::unique_ptr<CreatedEvent> create(EventSource* source, const InputEvent& event) override {
    std::unique_ptr<CreatedEvent> created = service_.create(source, event);
    matters_[created.get()] = matters(event);
    return created;
  }
  void post(const CreatedEvent& event) override {
    service_.post(event);
    note(event);
  }
  bool postTo(Pid receiver, const CreatedEvent& event) override {
    const bool isPosted = service_.postTo(receiver, event);
    if (isPosted) {
      note(event);
    }
    return isPosted;
  }
  bool scrollsByDragging() override { return service_.scrollsByDragging(); }
  std::optional<Point> pointerLocation() override { return service_.pointerLocation(); }

 private:
  static bool matters(const InputEvent& event) {
    if (const auto* mouse = std::get_if<MouseEvent>(&event)) {
      return mouse->type == MouseEventType::leftDown || mouse->type == MouseEventType::rightDown;
    }
    const auto* key = std::get_if<KeyEvent>(&event);
    return std::holds_alternative<ScrollEvent>(event) || (key != nullptr && key->down);
  }

  void note(const CreatedEvent& event) {
    if (matters_[&event]) {
      watch_.eventIsOut();
    }
  }

  InputEvents& service_;
  Watch& watch_;
  /// By address, which a later event may have again.
  std::unordered_map<const CreatedEvent*, bool> matters_;
};

/// A helper in this process, over watched services.
class Helper {
 public:
  explicit Helper(const Platform& platform)
      : accessibility_(platform.accessibility, watch_),
        workspace_(platform.workspace, watch_),
        windowServer_(platform.windowServer, watch_),
        inputEvents_(platform.inputEvents, watch_),
        server_(Platform{accessibility_, workspace_, platform.bundles, platform.processes,
                         platform.permissions, windowServer_, platform.screenCapture, inputEvents_,
                         platform.textRecognizer, platform.images, platform.clock,
                         platform.random}) {}

  Json call(const std::string& method, Json args) {
    const Json request = {{"id", 1}, {"method", method}, {"args", std::move(args)}};
    const Json response = Json::parse(server_.serve(request.dump()).response.value_or("{}"));
    if (!response.contains("result")) {
      std::cerr << method << ": " << response.dump() << "\n";
      std::_Exit(1);
    }
    return response["result"];
  }

  /// Observes, and does something to one of the application's first two buttons.
  void act(const std::string& method, std::size_t which, Json args) {
    const Json observation = call("observe", {{"image", false}});
    std::vector<Json> buttons;
    for (const Json& node : observation["snapshot"]["nodes"]) {
      if (node["role"] == "button") {
        buttons.push_back(node["id"]);
      }
    }
    args["nodeId"] = buttons.at(which);
    static_cast<void>(watch_.takeGaps());
    call(method, std::move(args));
  }

  Watch& watch() { return watch_; }

 private:
  Watch watch_;
  WatchedAccessibility accessibility_;
  WatchedWorkspace workspace_;
  WatchedWindowServer windowServer_;
  WatchedInputEvents inputEvents_;
  Server server_;
};

double percentile(const std::vector<double>& sorted, double part) {
  const auto last = static_cast<double>(sorted.size() - 1);
  return sorted.at(static_cast<std::size_t>(last * part + 0.5));
}

void measure(Helper& helper, const std::string& what, const std::string& method, const Json& args,
             int rounds) {
  std::vector<double> gaps;
  for (int round = 0; round < rounds; ++round) {
    // Two in turn: a pointer that is there already does not move.
    helper.act(method, static_cast<std::size_t>(round % 2), args);
    std::ranges::copy(helper.watch().takeGaps(), std::back_inserter(gaps));
  }
  if (gaps.empty()) {
    std::cerr << what << ": no event went out.\n";
    std::_Exit(1);
  }
  std::ranges::sort(gaps);
  std::cout << what << '\t' << rounds << '\t' << gaps.size() << '\t' << percentile(gaps, 0.5)
            << '\t' << percentile(gaps, 0.99) << '\t' << gaps.back() << std::endl;
}

void run(Helper& helper, const std::string& bundleId, int rounds) {
  helper.call("connect", {{"bundleId", bundleId}});
  measure(helper, "double click", "click", {{"count", 2}}, rounds);
  measure(helper, "key", "input", {{"kind", "key"}, {"key", "ArrowLeft"}}, rounds);
  measure(helper, "turn of the wheel", "input", {{"kind", "scroll"}, {"deltaY", 40}}, rounds);
}

}  // namespace
}  // namespace tarqo

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() != 2) {
    std::cerr << "usage: check_to_event BUNDLE ROUNDS\n";
    return 2;
  }
  const std::unique_ptr<tarqo::Backend> host = tarqo::makePlatform(argv[0]);
  tarqo::Helper helper(host->platform());
  std::thread([&helper, &arguments] {
    tarqo::run(helper, arguments[0], std::atoi(arguments[1].c_str()));
    std::_Exit(0);
  }).detach();
  host->mainLoop().run();
}
