#include "platform/linux/atspi/read/properties.h"

#include <algorithm>

#include "platform/linux/atspi/read/property_request.h"

namespace tarqo::lnx {
namespace {

/// From this many children on, it is worth asking which of them are shown.
constexpr int kManyChildren = 8;

/// What gives an entry its placeholder, and web content its identifier.
bool attributesMatter(const AtspiFacts& facts, Toolkit toolkit) {
  switch (toolkit) {
    case Toolkit::gtk4:
      return facts.has(AtspiInterface::text) && facts.has(AtspiState::editable);
    case Toolkit::gtk3:      // Told among the properties.
    case Toolkit::chromium:  // The same.
    case Toolkit::qt:        // Always empty.
      return false;
    case Toolkit::other:
      return true;
  }
  return true;
}

bool identifierMatters(Toolkit toolkit) {
  // Qt 5 does not know the property.
  return toolkit != Toolkit::qt;
}

}  // namespace

Toolkit toolkitNamed(std::string_view name, std::string_view version) {
  if (name == "GTK" || (name == "gtk" && version.starts_with("4"))) {
    return Toolkit::gtk4;
  }
  if (name == "gtk") {
    return Toolkit::gtk3;
  }
  if (name == "Qt") {
    return Toolkit::qt;
  }
  if (name == "Chromium" || name == "Chrome") {
    return Toolkit::chromium;
  }
  return Toolkit::other;
}

const std::string* AtspiFacts::attribute(std::string_view key) const {
  const auto found = std::ranges::find(
      attributes, key, [](const auto& pair) -> std::string_view { return pair.first; });
  return found == attributes.end() ? nullptr : &found->second;
}

bool isShowing(const AtspiFacts& facts, Toolkit toolkit) {
  // GTK 4 says "showing" of windows only.
  if (toolkit == Toolkit::gtk4) {
    return facts.has(AtspiState::visible) || facts.has(AtspiState::showing);
  }
  return facts.has(AtspiState::showing);
}

namespace {

void askLook(const std::shared_ptr<Question>& question) {
  question->open += 2;
  question->batch.call(question->ref, kAccessible, "GetRole", [question](Reply reply) {
    if (const auto role = reply.ok ? readNumber(reply.message) : std::nullopt) {
      question->facts->role = *role;
      question->facts->alive = true;
    }
    answered(question);
  });
  question->batch.call(question->ref, kAccessible, "GetState", [question](Reply reply) {
    if (const auto states = reply.ok ? readStates(reply.message) : std::nullopt) {
      question->facts->states = *states;
    }
    answered(question);
  });
}

void askInterfaces(const std::shared_ptr<Question>& question) {
  ++question->open;
  question->batch.call(question->ref, kAccessible, "GetInterfaces", [question](Reply reply) {
    if (const auto interfaces = reply.ok ? readInterfaces(reply.message) : std::nullopt) {
      question->facts->interfaces = *interfaces;
    }
    answered(question);
  });
}

bool dependsOnInterfaces(FactSet wanted) {
  return wanted.has(Fact::extents) || wanted.has(Fact::actions) || wanted.has(Fact::value) ||
         wanted.has(Fact::address) || wanted.has(Fact::attributes);
}

/// GTK and Chromium give all properties of an object in one answer. Qt 5 dies of the question.
bool tellsPropertiesAtOnce(Toolkit toolkit) {
  return toolkit == Toolkit::gtk3 || toolkit == Toolkit::gtk4 || toolkit == Toolkit::chromium;
}

FactSet properties(Toolkit toolkit) {
  const FactSet all = Fact::name | Fact::description | Fact::identifier | Fact::parent;
  return toolkit == Toolkit::gtk4 ? all : all | Fact::attributes;
}

bool worthAskingAll(FactSet wanted) {
  return wanted.has(Fact::description) || wanted.has(Fact::identifier) ||
         wanted.has(Fact::attributes);
}

void askProperties(const std::shared_ptr<Question>& question) {
  question->wanted.add(properties(question->toolkit));
  Message message =
      question->batch.make(question->ref, "org.freedesktop.DBus.Properties", "GetAll");
  if (message) {
    sd_bus_message_append(message.get(), "s", kAccessible);
  }
  ++question->open;
  question->batch.send(std::move(message), [question](Reply reply) {
    AtspiFacts& facts = *question->facts;
    if (reply.ok) {
      AccessibleProperties told = readProperties(reply.message);
      facts.name = std::move(told.name).value_or("");
      facts.description = std::move(told.description).value_or("");
      facts.identifier = std::move(told.identifier).value_or("");
      facts.parent = std::move(told.parent);
      facts.childCount = told.childCount;
      if (told.attributes) {
        facts.attributes = *std::move(told.attributes);
      }
    }
    answered(question);
  });
}

void askTexts(const std::shared_ptr<Question>& question) {
  const auto property = [&question](Fact fact, const char* name, std::string AtspiFacts::*into) {
    if (!question->wanted.has(fact)) {
      return;
    }
    ++question->open;
    question->batch.property(question->ref, kAccessible, name, [question, into](Reply reply) {
      if (auto text = reply.ok ? readVariantText(reply.message) : std::nullopt) {
        (*question->facts).*into = *std::move(text);
      }
      answered(question);
    });
  };
  if (tellsPropertiesAtOnce(question->toolkit) && worthAskingAll(question->wanted)) {
    askProperties(question);
    return;
  }
  property(Fact::name, "Name", &AtspiFacts::name);
  property(Fact::description, "Description", &AtspiFacts::description);
  if (identifierMatters(question->toolkit)) {
    property(Fact::identifier, "AccessibleId", &AtspiFacts::identifier);
  }
  if (question->wanted.has(Fact::parent)) {
    ++question->open;
    question->batch.property(question->ref, kAccessible, "Parent", [question](Reply reply) {
      question->facts->parent = reply.ok ? readVariantRef(reply.message) : std::nullopt;
      answered(question);
    });
  }
}

void askAllChildren(const std::shared_ptr<Question>& question) {
  ++question->open;
  question->batch.call(question->ref, kAccessible, "GetChildren", [question](Reply reply) {
    question->facts->children = reply.ok ? readRefs(reply.message) : std::nullopt;
    answered(question);
  });
}

/// One answer in place of a list of all children and a question to each of them.
void askShownChildren(const std::shared_ptr<Question>& question) {
  Message message = question->batch.make(question->ref, kCollection, "GetMatches");
  if (message) {
    constexpr std::uint32_t kShowing = 1U << static_cast<unsigned>(AtspiState::showing);
    constexpr int kAll = 1;
    constexpr int kInOrder = 1;
    // All of these states and of no attributes, roles and interfaces; not inverted; in the
    // parent's order, however many, and none from further down.
    sd_bus_message_append(message.get(), "(aiia{ss}iaiiasib)uib", 2, kShowing, 0, kAll, 0, kAll, 0,
                          kAll, 0, kAll, 0, kInOrder, 0, 0);
  }
  ++question->open;
  question->batch.send(std::move(message), [question](Reply reply) {
    question->facts->children = reply.ok ? readRefs(reply.message) : std::nullopt;
    if (!question->facts->children) {
      askAllChildren(question);
    }
    answered(question);
  });
}

/// GTK 3 takes as long to list the shown children as to list all. Cells count as shown in any case.
bool canListShownChildren(const AtspiFacts& facts, Toolkit toolkit) {
  return toolkit == Toolkit::gtk3 && facts.childCount && *facts.childCount >= kManyChildren &&
         !facts.has(AtspiState::managesDescendants);
}

void askChildren(const std::shared_ptr<Question>& question) {
  const AtspiFacts& facts = *question->facts;
  if (facts.childCount == 0) {
    question->facts->children.emplace();
  } else if (question->onlyShownChildren && canListShownChildren(facts, question->toolkit)) {
    askShownChildren(question);
  } else {
    askAllChildren(question);
  }
}

void askDetails(const std::shared_ptr<Question>& question) {
  const AtspiFacts& facts = *question->facts;
  const FactSet wanted = question->wanted;
  if (wanted.has(Fact::children)) {
    askChildren(question);
  }
  if (wanted.has(Fact::attributes) && attributesMatter(facts, question->toolkit)) {
    ++question->open;
    question->batch.call(question->ref, kAccessible, "GetAttributes", [question](Reply reply) {
      if (auto attributes = reply.ok ? readAttributes(reply.message) : std::nullopt) {
        question->facts->attributes = *std::move(attributes);
      }
      answered(question);
    });
  }
  // Places of what is not shown are garbage, and asking for them upsets GTK 3.
  if (wanted.has(Fact::extents) && facts.has(AtspiInterface::component) &&
      isShowing(facts, question->toolkit)) {
    ++question->open;
    Message message = question->batch.make(question->ref, kComponent, "GetExtents");
    if (message) {
      const std::uint32_t ofWindow = question->toolkit == Toolkit::gtk4 ? 1 : 0;
      sd_bus_message_append(message.get(), "u", ofWindow);
    }
    question->batch.send(std::move(message), [question](Reply reply) {
      question->facts->extents = reply.ok ? readExtents(reply.message) : std::nullopt;
      answered(question);
    });
  }
  if (wanted.has(Fact::actions)) {
    askActions(question);
  }
  if (wanted.has(Fact::value)) {
    askValue(question);
  }
  if (wanted.has(Fact::address)) {
    askAddress(question);
  }
  // Whether an object of such a role is a window shows by what it hangs on.
  if (!wanted.has(Fact::parent) && !facts.parent && isWindowRole(facts.role)) {
    ++question->open;
    question->batch.property(question->ref, kAccessible, "Parent", [question](Reply reply) {
      question->facts->parent = reply.ok ? readVariantRef(reply.message) : std::nullopt;
      answered(question);
    });
  }
}

}  // namespace

void answered(const std::shared_ptr<Question>& question) {
  if (--question->open > 0) {
    return;
  }
  ++question->round;
  if (question->round == 1 && question->facts->alive) {
    question->open = 1;
    askDetails(question);
    answered(question);
    return;
  }
  if (question->round == 2) {
    question->open = 1;
    askActionNames(question);
    answered(question);
    return;
  }
  question->facts->known.add(question->wanted);
  if (question->done) {
    question->done();
  }
}

void askFacts(AtspiBatch& batch, const FactRequest& request, std::shared_ptr<AtspiFacts> facts,
              std::function<void()> done) {
  auto question =
      std::make_shared<Question>(Question{.batch = batch,
                                          .ref = request.ref,
                                          .toolkit = request.toolkit,
                                          .onlyShownChildren = request.onlyShownChildren});
  FactSet wanted = request.wanted;
  if (wanted.has(Fact::value)) {
    wanted.add(Fact::name);  // A label's text and a list's choice.
  }
  if (dependsOnInterfaces(wanted)) {
    wanted.add(Fact::interfaces);
  }
  question->wanted = (wanted | Fact::look).without(facts->known);
  question->facts = std::move(facts);
  question->done = std::move(done);
  question->open = 1;  // Held until every call of the round is under way.
  if (question->wanted.has(Fact::look)) {
    askLook(question);
  }
  if (question->wanted.has(Fact::interfaces)) {
    askInterfaces(question);
  }
  askTexts(question);
  answered(question);
}

}  // namespace tarqo::lnx
