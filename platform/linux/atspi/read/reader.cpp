#include "platform/linux/atspi/read/reader.h"

#include "platform/linux/atspi/read/property_request.h"

#include <algorithm>

namespace tarqo::lnx::atspi {
namespace {

/// How far up the window of an object is looked for.
constexpr int kMaxDepth = 100;

/// How long an application that failed to answer is not sent anything: each further read of the
/// same request would cost the same wait.
constexpr auto kSilenceRest = std::chrono::milliseconds(500);

/// How often it is looked whether the object of a new window has come.
constexpr auto kObjectPoll = std::chrono::milliseconds(20);

/// Puts objects in the order of their windows.
ApplicationWindows inOrder(std::vector<Toplevel> toplevels,
                           const std::vector<x11::LocatedWindow>& windows) {
  const auto rank = [&windows](const Toplevel& toplevel) {
    if (!toplevel.window) {
      return windows.size();
    }
    const auto found =
        std::ranges::find(windows, toplevel.window->number, &x11::LocatedWindow::number);
    return static_cast<std::size_t>(found - windows.begin());
  };
  std::ranges::stable_sort(toplevels, {}, rank);
  ApplicationWindows result{std::move(toplevels), {}, {}};
  std::ranges::copy_if(windows, std::back_inserter(result.popups),
                       &x11::LocatedWindow::overrideRedirect);
  return result;
}

/// The window among these that receives keystrokes; 0 when another or no window does.
WindowNumber keyboardWindowAmong(const std::vector<x11::LocatedWindow>& windows,
                                 const std::vector<WindowNumber>& numbers) {
  const auto active = std::ranges::find(windows, true, &x11::LocatedWindow::active);
  const bool isAmong =
      active != windows.end() && std::ranges::find(numbers, active->number) != numbers.end();
  return isAmong ? active->number : 0;
}

}  // namespace

/// Ends the scope it was made for, unless a later one has replaced it.
class Reader::Scope final : public TreeRead {
 public:
  Scope(Reader& reader, std::shared_ptr<ReadAhead> ahead)
      : reader_(reader), readAhead_(std::move(ahead)) {}
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;
  ~Scope() override {
    if (reader_.readAhead_ == readAhead_) {
      reader_.readAhead_.reset();
    }
  }

  [[nodiscard]] bool incomplete() const override { return readAhead_->ended(); }
  void readLive() override { readAhead_->readLive(); }

 private:
  Reader& reader_;
  std::shared_ptr<ReadAhead> readAhead_;
};

ReadAhead* Reader::readAheadOf(Pid pid) {
  return readAhead_ && readAhead_->pid() == pid ? readAhead_.get() : nullptr;
}

bool Reader::failed(Pid pid) {
  const ReadAhead* ahead = readAheadOf(pid);
  const auto silent = silent_.find(pid);
  return (ahead != nullptr && ahead->closed()) ||
         (silent != silent_.end() && silent->second.isRunning(clock().now()));
}

void Reader::noteFailure(Pid pid) {
  silent_[pid].start(clock().now(), kSilenceRest);
  if (ReadAhead* ahead = readAheadOf(pid)) {
    ahead->end();
  }
}

BatchLimits Reader::limitsFor(const ObjectHandle& object) {
  return {clock().now() + object.timeout, object.timeout};
}

Toolkit Reader::toolkitOf(const ObjectHandle& object) {
  if (failed(object.pid)) {
    return registry_.knownToolkitOf(object.ref.bus).value_or(Toolkit::other);
  }
  const std::optional<Toolkit> toolkit = registry_.toolkitOf(object.ref.bus, object.timeout);
  if (!toolkit) {
    noteFailure(object.pid);
  }
  return toolkit.value_or(Toolkit::other);
}

void Reader::readAheadFrom(const ObjectHandle& object) {
  if (ReadAhead* ahead = readAheadOf(object.pid)) {
    const Toolkit toolkit = toolkitOf(object);
    if (!ahead->ended()) {
      ahead->readFrom(object, toolkit,
                      registry_.channelTo(object.ref.bus, toolkit, object.timeout));
    }
  }
}

bool Reader::request(const ObjectHandle& object, const std::function<void(Batch&)>& fill) {
  if (failed(object.pid)) {
    return false;
  }
  Batch batch(bus_);
  fill(batch);
  const BatchOutcome outcome = batch.run(limitsFor(object));
  if (outcome == BatchOutcome::timedOut) {
    noteFailure(object.pid);
  } else if (outcome == BatchOutcome::lost && readAheadOf(object.pid) != nullptr) {
    readAheadOf(object.pid)->end();
  }
  return outcome == BatchOutcome::complete;
}

PropertiesPtr Reader::read(const ObjectHandle& object, PropertySet wanted) {
  return readAll({&object, 1}, wanted).front();
}

std::vector<PropertiesPtr> Reader::readAll(std::span<const ObjectHandle> objects,
                                           PropertySet wanted) {
  std::vector<PropertiesPtr> result(objects.size());
  if (objects.empty()) {
    return result;
  }
  ReadAhead* ahead = readAheadOf(objects.front().pid);
  const Toolkit toolkit = toolkitOf(objects.front());
  const auto isKnown = [wanted](const std::shared_ptr<Properties>& properties) {
    return properties->known.hasAll(wanted | Property::roleAndStates);
  };
  std::vector<std::shared_ptr<Properties>> properties;
  for (const ObjectHandle& object : objects) {
    properties.push_back(ahead ? ahead->propertiesOf(object.ref) : std::make_shared<Properties>());
  }
  if (!std::ranges::all_of(properties, isKnown)) {
    request(objects.front(), [&](Batch& batch) {
      for (std::size_t i = 0; i < properties.size(); ++i) {
        if (!isKnown(properties[i])) {
          requestProperties(batch, {objects[i].ref, toolkit, wanted}, properties[i], {});
        }
      }
    });
  }
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (isKnown(properties[i]) && properties[i]->alive) {
      result[i] = properties[i];
    }
  }
  return result;
}

std::vector<ObjectHandle> Reader::topLevelObjects(Pid pid, Duration patience) {
  std::vector<ObjectHandle> result;
  for (const Registration& application : registry_.registrationsOf(pid, patience)) {
    const ObjectHandle root{.pid = pid, .timeout = patience, .ref = application.root};
    request(root, [&](Batch& batch) {
      batch.call(root.ref, kAccessible, "GetChildren", [&](Reply reply) {
        for (Ref& child :
             (reply.ok ? readRefs(reply.message) : std::nullopt).value_or(std::vector<Ref>())) {
          result.push_back({.pid = pid, .timeout = patience, .ref = child, .window = child});
        }
      });
    });
  }
  return result;
}

/// The top-level objects as their application reports them, without windows.
std::vector<Toplevel> Reader::reportedToplevels(Pid pid, Duration patience) {
  const std::vector<ObjectHandle> objects = topLevelObjects(pid, patience);
  const std::vector<PropertiesPtr> properties =
      readAll(objects, Property::name | Property::parent | Property::extents);
  std::vector<Toplevel> toplevels;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    if (properties[i]) {
      toplevels.push_back({objects[i].ref, toolkitOf(objects[i]), properties[i], std::nullopt});
    }
  }
  std::vector<Toplevel>& known = known_[pid];
  if (failed(pid)) {
    return known;  // It hangs, but its windows are still where the X server shows them.
  }
  known = toplevels;
  return toplevels;
}

const ApplicationWindows& Reader::windowsOf(Pid pid, Duration patience) {
  ReadAhead* ahead = readAheadOf(pid);
  if (ahead != nullptr && ahead->windows) {
    return *ahead->windows;
  }
  if (windowsThisCallPid_ == pid) {
    return windowsThisCall_;
  }
  windowsThisCall_ = paired(pid, reportedToplevels(pid, patience), patience);
  while (objectsAwaited_) {
    clock().sleep(kObjectPoll);
    windowsThisCall_ = paired(pid, reportedToplevels(pid, patience), patience);
  }
  windowsThisCallPid_ = pid;
  if (ahead != nullptr && !ahead->ended()) {
    ahead->windows = windowsThisCall_;
  }
  return windowsThisCall_;
}

/// Twins get no window until there is a proof: one that receives keystrokes now shows which it is,
/// and that is remembered.
ApplicationWindows Reader::paired(Pid pid, const std::vector<Toplevel>& toplevels,
                                  Duration patience) {
  const std::vector<x11::LocatedWindow> windows = locator_.windowsOf(pid);
  std::vector<ProvenPair>& proven = proven_[pid];
  std::erase_if(proven, [&](const ProvenPair& pair) {
    return std::ranges::find(toplevels, pair.ref, &Toplevel::ref) == toplevels.end() ||
           std::ranges::find(windows, pair.window, &x11::LocatedWindow::number) == windows.end();
  });
  std::vector<Toplevel> matched = toplevels;
  std::vector<Twins> unproven = pairWithWindows(matched, windows, proven);
  for (const Twins& twins : unproven) {
    const WindowNumber focused = keyboardWindowAmong(windows, twins.windows);
    if (focused == 0 || failed(pid)) {
      continue;
    }
    if (const std::optional<Ref> active = activeTwin(pid, twins, focused, patience)) {
      proven.push_back({*active, focused});
      matched = toplevels;
      unproven = pairWithWindows(matched, windows, proven);
    }
    break;
  }
  const bool hasObjects = std::ranges::any_of(
      matched, [](const Toplevel& toplevel) { return toplevel.window.has_value(); });
  LateObjects::Verdict late =
      late_.judge(pid, hasObjects, windowsWithoutObject(matched, unproven, windows));
  objectsAwaited_ = late.awaited;
  ApplicationWindows result = inOrder(std::move(matched), windows);
  result.bare = std::move(late.bare);
  return result;
}

/// The twin that its application reports as active while its window has the keyboard. The
/// application hears of the focus after the X server does, so the request waits until it has caught
/// up, and its answer counts only if nothing has changed meanwhile.
std::optional<Ref> Reader::activeTwin(Pid pid, const Twins& twins, WindowNumber focused,
                                      Duration patience) {
  if (!locator_.awaitEventsHandled(focused, patience)) {
    return std::nullopt;
  }
  const std::vector<Ref> active = activeAmong(pid, twins.objects, patience);
  const bool isStillFocused =
      keyboardWindowAmong(locator_.windowsOf(pid), twins.windows) == focused;
  return active.size() == 1 && isStillFocused ? std::optional(active.front()) : std::nullopt;
}

std::vector<Ref> Reader::activeAmong(Pid pid, const std::vector<Ref>& objects, Duration patience) {
  std::vector<Ref> active;
  request({.pid = pid, .timeout = patience, .ref = objects.front()}, [&](Batch& batch) {
    for (const Ref& object : objects) {
      batch.call(object, kAccessible, "GetState", [&active, &object](Reply reply) {
        const auto states = reply.ok ? readStates(reply.message) : std::nullopt;
        if (states && states->has(State::active)) {
          active.push_back(object);
        }
      });
    }
  });
  return active;
}

PropertiesPtr Reader::propertiesOfSilentWindow(const ObjectHandle& object) {
  if (!failed(object.pid)) {
    return nullptr;
  }
  const std::vector<Toplevel>& known = known_[object.pid];
  const auto found = std::ranges::find(known, object.ref, &Toplevel::ref);
  return found == known.end() ? nullptr : found->properties;
}

std::optional<Toplevel> Reader::toplevelOf(const ObjectHandle& object) {
  const std::vector<Toplevel>& all = windowsOf(object.pid, object.timeout).toplevels;
  Ref at = object.window.empty() ? object.ref : object.window;
  const Instant end = clock().now() + object.timeout;
  for (int depth = 0; depth < kMaxDepth && clock().now() < end; ++depth) {
    const auto found = std::ranges::find(all, at, &Toplevel::ref);
    if (found != all.end()) {
      return *found;
    }
    ObjectHandle parts = object;
    parts.ref = at;
    const PropertiesPtr properties = read(parts, Property::parent);
    if (!properties || !properties->parent || properties->parent->empty()) {
      return std::nullopt;
    }
    at = *properties->parent;
  }
  return std::nullopt;
}

std::unique_ptr<TreeRead> Reader::readTree(const ObjectHandle& window,
                                           const TreeReadLimits& limits) {
  readAhead_ = std::make_shared<ReadAhead>(window, limits, clock());
  auto scope = std::make_unique<Scope>(*this, readAhead_);
  if (failed(window.pid)) {
    readAhead_->end();  // Still in its back-off period: report truncated, not empty.
  }
  // The toolkit's name is the first request: an application that hangs shows here.
  static_cast<void>(windowsOf(window.pid, window.timeout));
  readAheadFrom(window);
  return scope;
}

}  // namespace tarqo::lnx::atspi
