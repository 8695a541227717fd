#include "platform/linux/atspi/read/reader.h"

#include <algorithm>

namespace tarqo::lnx {
namespace {

/// How far up the window of an object is looked for.
constexpr int kMaxDepth = 100;

/// How long an application that failed to answer is left alone: each further question of the same
/// request would cost the same wait.
constexpr auto kLeftAlone = std::chrono::milliseconds(500);

/// Puts objects in the order of their windows.
ApplicationWindows inOrder(std::vector<Toplevel> toplevels,
                           const std::vector<LocatedWindow>& windows) {
  const auto rank = [&windows](const Toplevel& toplevel) {
    if (!toplevel.window) {
      return windows.size();
    }
    const auto found = std::ranges::find(windows, toplevel.window->number, &LocatedWindow::number);
    return static_cast<std::size_t>(found - windows.begin());
  };
  std::ranges::stable_sort(toplevels, {}, rank);
  ApplicationWindows result{std::move(toplevels), {}};
  std::ranges::copy_if(windows, std::back_inserter(result.popups),
                       &LocatedWindow::overrideRedirect);
  return result;
}

/// The window among these that receives keystrokes; 0 when it is none of them.
WindowNumber keyboardWindowAmong(const std::vector<LocatedWindow>& windows,
                                 const std::vector<WindowNumber>& numbers) {
  const auto active = std::ranges::find(windows, true, &LocatedWindow::active);
  const bool isAmong =
      active != windows.end() && std::ranges::find(numbers, active->number) != numbers.end();
  return isAmong ? active->number : 0;
}

}  // namespace

/// Ends the scope it was made for, unless a later one has replaced it.
class AtspiReader::Scope final : public TreeRead {
 public:
  Scope(AtspiReader& reader, std::shared_ptr<AtspiTree> tree)
      : reader_(reader), tree_(std::move(tree)) {}
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;
  ~Scope() override {
    if (reader_.tree_ == tree_) {
      reader_.tree_.reset();
    }
  }

  [[nodiscard]] bool incomplete() const override { return tree_->ended(); }
  void askAgain() override { tree_->askAgain(); }

 private:
  AtspiReader& reader_;
  std::shared_ptr<AtspiTree> tree_;
};

AtspiTree* AtspiReader::treeOf(Pid pid) {
  return tree_ && tree_->pid() == pid ? tree_.get() : nullptr;
}

bool AtspiReader::failed(Pid pid) {
  const AtspiTree* tree = treeOf(pid);
  const auto silent = silentUntil_.find(pid);
  return (tree != nullptr && tree->closed()) ||
         (silent != silentUntil_.end() && std::chrono::steady_clock::now() < silent->second);
}

void AtspiReader::noteFailure(Pid pid) {
  silentUntil_[pid] = std::chrono::steady_clock::now() + kLeftAlone;
  if (AtspiTree* tree = treeOf(pid)) {
    tree->end();
  }
}

BatchLimits AtspiReader::limitsFor(const AtspiElement::Parts& object) {
  return {std::chrono::steady_clock::now() + object.timeout, object.timeout};
}

Toolkit AtspiReader::toolkitOf(const AtspiElement::Parts& object) {
  if (failed(object.pid)) {
    return applications_.knownToolkitOf(object.ref.bus).value_or(Toolkit::other);
  }
  const std::optional<Toolkit> toolkit = applications_.toolkitOf(object.ref.bus, object.timeout);
  if (!toolkit) {
    noteFailure(object.pid);
  }
  return toolkit.value_or(Toolkit::other);
}

void AtspiReader::reach(const AtspiElement::Parts& object) {
  if (AtspiTree* tree = treeOf(object.pid)) {
    const Toolkit toolkit = toolkitOf(object);
    if (!tree->ended()) {
      tree->readAhead(object, toolkit,
                      applications_.channelTo(object.ref.bus, toolkit, object.timeout));
    }
  }
}

bool AtspiReader::ask(const AtspiElement::Parts& object,
                      const std::function<void(AtspiBatch&)>& fill) {
  if (failed(object.pid)) {
    return false;
  }
  AtspiBatch batch(bus_);
  fill(batch);
  const BatchOutcome outcome = batch.run(limitsFor(object));
  if (outcome == BatchOutcome::timedOut) {
    noteFailure(object.pid);
  } else if (outcome == BatchOutcome::lost && treeOf(object.pid) != nullptr) {
    treeOf(object.pid)->end();
  }
  return outcome == BatchOutcome::complete;
}

FactsPtr AtspiReader::learn(const AtspiElement::Parts& object, FactSet wanted) {
  return learnAll({&object, 1}, wanted).front();
}

std::vector<FactsPtr> AtspiReader::learnAll(std::span<const AtspiElement::Parts> objects,
                                            FactSet wanted) {
  std::vector<FactsPtr> result(objects.size());
  if (objects.empty()) {
    return result;
  }
  AtspiTree* tree = treeOf(objects.front().pid);
  const Toolkit toolkit = toolkitOf(objects.front());
  const auto isKnown = [wanted](const std::shared_ptr<AtspiFacts>& facts) {
    return facts->known.hasAll(wanted | Fact::look);
  };
  std::vector<std::shared_ptr<AtspiFacts>> facts;
  for (const AtspiElement::Parts& object : objects) {
    facts.push_back(tree ? tree->factsOf(object.ref) : std::make_shared<AtspiFacts>());
  }
  if (!std::ranges::all_of(facts, isKnown)) {
    ask(objects.front(), [&](AtspiBatch& batch) {
      for (std::size_t i = 0; i < facts.size(); ++i) {
        if (!isKnown(facts[i])) {
          askFacts(batch, {objects[i].ref, toolkit, wanted}, facts[i], {});
        }
      }
    });
  }
  for (std::size_t i = 0; i < facts.size(); ++i) {
    if (isKnown(facts[i]) && facts[i]->alive) {
      result[i] = facts[i];
    }
  }
  return result;
}

std::vector<AtspiElement::Parts> AtspiReader::topLevelObjects(Pid pid, Duration patience) {
  std::vector<AtspiElement::Parts> result;
  for (const AtspiApp& application : applications_.of(pid, patience)) {
    const AtspiElement::Parts root{.pid = pid, .timeout = patience, .ref = application.root};
    ask(root, [&](AtspiBatch& batch) {
      batch.call(root.ref, kAccessible, "GetChildren", [&](Reply reply) {
        for (AtspiRef& child : (reply.ok ? readRefs(reply.message) : std::nullopt)
                                   .value_or(std::vector<AtspiRef>())) {
          result.push_back({.pid = pid, .timeout = patience, .ref = child, .window = child});
        }
      });
    });
  }
  return result;
}

const ApplicationWindows& AtspiReader::windowsOf(Pid pid, Duration patience) {
  AtspiTree* tree = treeOf(pid);
  if (tree != nullptr && tree->windows) {
    return *tree->windows;
  }
  if (momentPid_ == pid) {
    return moment_;
  }
  const std::vector<AtspiElement::Parts> objects = topLevelObjects(pid, patience);
  const std::vector<FactsPtr> facts = learnAll(objects, Fact::name | Fact::parent | Fact::extents);
  std::vector<Toplevel> toplevels;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    if (facts[i]) {
      toplevels.push_back({objects[i].ref, toolkitOf(objects[i]), facts[i], std::nullopt});
    }
  }
  std::vector<Toplevel>& known = known_[pid];
  if (failed(pid)) {
    toplevels = known;  // It hangs, but its windows are still where the X server shows them.
  } else {
    known = toplevels;
  }
  moment_ = paired(pid, toplevels, patience);
  momentPid_ = pid;
  if (tree != nullptr && !tree->ended()) {
    tree->windows = moment_;
  }
  return moment_;
}

/// Twins wait for a proof: one that receives keystrokes now tells which it is, and is known from
/// then on.
ApplicationWindows AtspiReader::paired(Pid pid, const std::vector<Toplevel>& toplevels,
                                       Duration patience) {
  const std::vector<LocatedWindow> windows = locator_.windowsOf(pid);
  std::vector<ProvenPair>& proven = proven_[pid];
  std::erase_if(proven, [&](const ProvenPair& pair) {
    return std::ranges::find(toplevels, pair.ref, &Toplevel::ref) == toplevels.end() ||
           std::ranges::find(windows, pair.window, &LocatedWindow::number) == windows.end();
  });
  std::vector<Toplevel> matched = toplevels;
  for (const Twins& twins : pairWithWindows(matched, windows, proven)) {
    const WindowNumber focused = keyboardWindowAmong(windows, twins.windows);
    if (focused == 0 || failed(pid)) {
      continue;
    }
    if (const std::optional<AtspiRef> active = activeTwin(pid, twins, focused, patience)) {
      proven.push_back({*active, focused});
      matched = toplevels;
      static_cast<void>(pairWithWindows(matched, windows, proven));
    }
    break;
  }
  return inOrder(std::move(matched), windows);
}

/// The twin that its application calls the active one while its window has the keyboard. The
/// application learns of that after the X server, so it is asked when it has caught up, and what it
/// says counts when nothing has changed meanwhile.
std::optional<AtspiRef> AtspiReader::activeTwin(Pid pid, const Twins& twins, WindowNumber focused,
                                                Duration patience) {
  if (!locator_.awaitEventsHandled(focused, patience)) {
    return std::nullopt;
  }
  const std::vector<AtspiRef> active = activeAmong(pid, twins.objects, patience);
  const bool isStillFocused =
      keyboardWindowAmong(locator_.windowsOf(pid), twins.windows) == focused;
  return active.size() == 1 && isStillFocused ? std::optional(active.front()) : std::nullopt;
}

std::vector<AtspiRef> AtspiReader::activeAmong(Pid pid, const std::vector<AtspiRef>& objects,
                                               Duration patience) {
  std::vector<AtspiRef> active;
  ask({.pid = pid, .timeout = patience, .ref = objects.front()}, [&](AtspiBatch& batch) {
    for (const AtspiRef& object : objects) {
      batch.call(object, kAccessible, "GetState", [&active, &object](Reply reply) {
        const auto states = reply.ok ? readStates(reply.message) : std::nullopt;
        if (states && states->has(AtspiState::active)) {
          active.push_back(object);
        }
      });
    }
  });
  return active;
}

FactsPtr AtspiReader::factsOfSilentWindow(const AtspiElement::Parts& object) {
  if (!failed(object.pid)) {
    return nullptr;
  }
  const std::vector<Toplevel>& known = known_[object.pid];
  const auto found = std::ranges::find(known, object.ref, &Toplevel::ref);
  return found == known.end() ? nullptr : found->facts;
}

std::optional<Toplevel> AtspiReader::toplevelOf(const AtspiElement::Parts& object) {
  const std::vector<Toplevel>& all = windowsOf(object.pid, object.timeout).toplevels;
  AtspiRef at = object.window.empty() ? object.ref : object.window;
  const Instant end = std::chrono::steady_clock::now() + object.timeout;
  for (int depth = 0; depth < kMaxDepth && std::chrono::steady_clock::now() < end; ++depth) {
    const auto found = std::ranges::find(all, at, &Toplevel::ref);
    if (found != all.end()) {
      return *found;
    }
    AtspiElement::Parts parts = object;
    parts.ref = at;
    const FactsPtr facts = learn(parts, Fact::parent);
    if (!facts || !facts->parent || facts->parent->empty()) {
      return std::nullopt;
    }
    at = *facts->parent;
  }
  return std::nullopt;
}

std::unique_ptr<TreeRead> AtspiReader::readTree(const AtspiElement::Parts& window,
                                                const TreeReadLimits& limits) {
  tree_ = std::make_shared<AtspiTree>(window, limits);
  auto scope = std::make_unique<Scope>(*this, tree_);
  if (failed(window.pid)) {
    tree_->end();  // It is left alone for a while yet, and must not pass for empty.
  }
  // The toolkit's name is the first question: an application that hangs shows here.
  static_cast<void>(windowsOf(window.pid, window.timeout));
  reach(window);
  return scope;
}

}  // namespace tarqo::lnx
