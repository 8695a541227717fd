#include "tests/platform/mac/standin/accessibility.h"

#include <algorithm>

#include "tests/platform/mac/standin/ax_element.h"
#include "tests/platform/mac/standin/ax_observers.h"

namespace standin {
namespace {

float secondsOfAll = 0;

template <typename T>
T found(const std::map<std::string, T>& answers, const std::string& name, T otherwise) {
  const auto answer = answers.find(name);
  return answer == answers.end() ? otherwise : answer->second;
}

}  // namespace

float systemWideSeconds() { return secondsOfAll; }

std::string ScriptedElement::description() const {
  return "element " + std::to_string(pid()) + "/" + std::to_string(number_);
}

bool ScriptedElement::same(const AxElement& other) const {
  const auto* element = dynamic_cast<const ScriptedElement*>(&other);
  return element != nullptr && element->pid() == pid() && element->number_ == number_;
}

Node& ScriptedElement::asked(const std::string& what) const {
  const float limit = seconds() > 0 ? seconds() : systemWideSeconds();
  Applications::instance().calls.push_back({what, number_, limit});
  return Applications::instance().node(pid(), number_);
}

Answer ScriptedElement::read(const std::string& name) {
  return found(asked("read " + name).attributes, name, {kAXErrorAttributeUnsupported, {}});
}

Answer ScriptedElement::readMany(const std::vector<std::string>& names) {
  std::string all;
  std::vector<Owned> slots;
  const Node& node = asked("read many");
  for (const std::string& name : names) {
    all += (all.empty() ? "" : " ") + name;
    const Answer answer = found(node.attributes, name, {kAXErrorAttributeUnsupported, {}});
    const bool fine = answer.error == kAXErrorSuccess && answer.value;
    slots.push_back(fine ? answer.value : axError(answer.error));
  }
  Applications::instance().calls.back().what += ": " + all;
  return node.batch.value_or(Answer{kAXErrorSuccess, array(slots)});
}

Answer ScriptedElement::actionNames() { return asked("actions").actionNames; }

AXError ScriptedElement::perform(const std::string& action) {
  return found(asked("perform " + action).actions, action, kAXErrorActionUnsupported);
}

Answer ScriptedElement::settable(const std::string& name) {
  return found(asked("settable " + name).settable, name, {kAXErrorAttributeUnsupported, {}});
}

AXError ScriptedElement::set(const std::string& name, CFTypeRef value) {
  Node& node = asked("set " + name);
  node.taken[name] = Owned::retain(value);
  return found(node.takes, name, kAXErrorAttributeUnsupported);
}

AXError ScriptedElement::pidError() const {
  return Applications::instance().node(pid(), number_).pidError;
}

AXError ScriptedElement::subscribe(const std::string& notification) {
  return found(asked("subscribe " + notification).subscriptionErrors, notification,
               AXError{kAXErrorSuccess});
}

void SystemWide::limit(float seconds) { secondsOfAll = seconds; }
bool SystemWide::same(const AxElement& other) const {
  return dynamic_cast<const SystemWide*>(&other) != nullptr;
}
Answer SystemWide::read(const std::string& /*name*/) { return {kAXErrorAttributeUnsupported, {}}; }
Answer SystemWide::readMany(const std::vector<std::string>& /*names*/) {
  return {kAXErrorCannotComplete, {}};
}
Answer SystemWide::actionNames() { return {kAXErrorActionUnsupported, {}}; }
AXError SystemWide::perform(const std::string& /*action*/) { return kAXErrorActionUnsupported; }
Answer SystemWide::settable(const std::string& /*name*/) {
  return {kAXErrorAttributeUnsupported, {}};
}
AXError SystemWide::set(const std::string& /*name*/, CFTypeRef /*value*/) {
  return kAXErrorAttributeUnsupported;
}
AXError SystemWide::pidError() const { return kAXErrorIllegalArgument; }

Applications& Applications::instance() {
  static Applications applications;
  return applications;
}

void Applications::reset() {
  *this = Applications();
  secondsOfAll = 0;
  forgetObservers();
}

Node& Applications::node(pid_t pid, int number) { return nodes_[{pid, number}]; }

Owned Applications::element(pid_t pid, int number) {
  return Owned::adopt(toRef<CFTypeRef>(Heap::instance().make<ScriptedElement>(pid, number)));
}

std::vector<std::string> Applications::asked() const {
  std::vector<std::string> result;
  for (const Call& call : calls) {
    result.push_back(call.what);
  }
  return result;
}

int Applications::notify(pid_t pid, int number, const std::string& notification) {
  const Owned sender = element(pid, number);
  const Owned whole = element(pid, 1);
  const auto deliveries = deliveriesOf(notification, [&](CFTypeRef subscribed) {
    return CFEqual(subscribed, sender.get()) || CFEqual(subscribed, whole.get());
  });
  if (beforeDelivery) {
    beforeDelivery();
  }
  for (const Delivery& each : deliveries) {
    deliver(each, static_cast<AXUIElementRef>(sender.get()), notification);
  }
  return static_cast<int>(deliveries.size());
}

std::size_t Applications::sourcesOnTheLoop() const { return sourcesOfObservers(); }

}  // namespace standin
