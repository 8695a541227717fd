#include "platform/linux/atspi_facts.h"

#include <algorithm>

namespace tarqo::lnx {
namespace {

/// Longer texts are cut: nobody reads more of a value, and a log view may hold megabytes.
constexpr std::int32_t kMaxTextCharacters = 20000;

/// What gives an entry its placeholder, and web content its identifier.
bool attributesMatter(const AtspiFacts& facts, Toolkit toolkit) {
  switch (toolkit) {
    case Toolkit::gtk3:
    case Toolkit::gtk4:
      return facts.has(AtspiInterface::text) && facts.has(AtspiState::editable);
    case Toolkit::qt:  // Always empty.
      return false;
    case Toolkit::chromium:
    case Toolkit::other:
      return true;
  }
  return true;
}

bool identifierMatters(Toolkit toolkit) {
  // Qt 5 does not know the property; Chromium gives the identifier among the attributes.
  return toolkit != Toolkit::qt && toolkit != Toolkit::chromium;
}

/// A name that axAction might know under another spelling: GetActions gives translated names in
/// GTK 3 and empty ones in Chromium, where GetName gives the plain ones. Names with a dot are those
/// of GTK 4's own commands, of which every label has some.
bool needsPlainName(const std::string& action, std::uint32_t role) {
  return !axAction(action, role) && action.find('.') == std::string::npos;
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

struct FactAsker::Question {
  AtspiRef ref;
  Toolkit toolkit = Toolkit::other;
  FactSet wanted;
  std::shared_ptr<AtspiFacts> facts;
  Done done;
  int open = 0;  ///< Unanswered calls of this round.
  int round = 0;
};

void FactAsker::ask(const AtspiRef& ref, Toolkit toolkit, FactSet wanted,
                    std::shared_ptr<AtspiFacts> facts, Done done) {
  auto question = std::make_shared<Question>();
  question->ref = ref;
  question->toolkit = toolkit;
  if (wanted.has(Fact::value)) {
    wanted.add(Fact::name);  // A label's text and a list's choice.
  }
  question->wanted = (wanted | Fact::kind).without(facts->known);
  question->facts = std::move(facts);
  question->done = std::move(done);
  question->open = 1;  // Held until every call of the round is under way.
  if (question->wanted.has(Fact::kind)) {
    askKind(question);
  }
  askTexts(question);
  answered(question);
}

void FactAsker::answered(const std::shared_ptr<Question>& question) {
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

void FactAsker::askKind(const std::shared_ptr<Question>& question) {
  question->open += 3;
  batch_.call(question->ref, kAccessible, "GetRole", [this, question](Reply reply) {
    if (const auto role = reply.ok ? readNumber(reply.message) : std::nullopt) {
      question->facts->role = *role;
      question->facts->alive = true;
    }
    answered(question);
  });
  batch_.call(question->ref, kAccessible, "GetState", [this, question](Reply reply) {
    if (const auto states = reply.ok ? readStates(reply.message) : std::nullopt) {
      question->facts->states = *states;
    }
    answered(question);
  });
  batch_.call(question->ref, kAccessible, "GetInterfaces", [this, question](Reply reply) {
    if (const auto interfaces = reply.ok ? readInterfaces(reply.message) : std::nullopt) {
      question->facts->interfaces = *interfaces;
    }
    answered(question);
  });
}

void FactAsker::askTexts(const std::shared_ptr<Question>& question) {
  const auto property = [this, &question](Fact fact, const char* name,
                                          std::string AtspiFacts::*into) {
    if (!question->wanted.has(fact)) {
      return;
    }
    ++question->open;
    batch_.property(question->ref, kAccessible, name, [this, question, into](Reply reply) {
      if (auto text = reply.ok ? readVariantText(reply.message) : std::nullopt) {
        (*question->facts).*into = *std::move(text);
      }
      answered(question);
    });
  };
  property(Fact::name, "Name", &AtspiFacts::name);
  property(Fact::description, "Description", &AtspiFacts::description);
  if (identifierMatters(question->toolkit)) {
    property(Fact::identifier, "AccessibleId", &AtspiFacts::identifier);
  }
  if (question->wanted.has(Fact::parent)) {
    ++question->open;
    batch_.property(question->ref, kAccessible, "Parent", [this, question](Reply reply) {
      question->facts->parent = reply.ok ? readVariantRef(reply.message) : std::nullopt;
      answered(question);
    });
  }
  if (question->wanted.has(Fact::children)) {
    ++question->open;
    batch_.call(question->ref, kAccessible, "GetChildren", [this, question](Reply reply) {
      question->facts->children = reply.ok ? readRefs(reply.message) : std::nullopt;
      answered(question);
    });
  }
}

void FactAsker::askDetails(const std::shared_ptr<Question>& question) {
  const AtspiFacts& facts = *question->facts;
  const FactSet wanted = question->wanted;
  if (wanted.has(Fact::attributes) && attributesMatter(facts, question->toolkit)) {
    ++question->open;
    batch_.call(question->ref, kAccessible, "GetAttributes", [this, question](Reply reply) {
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
    Message message = batch_.make(question->ref, kComponent, "GetExtents");
    if (message) {
      const std::uint32_t ofWindow = question->toolkit == Toolkit::gtk4 ? 1 : 0;
      sd_bus_message_append(message.get(), "u", ofWindow);
    }
    batch_.send(std::move(message), [this, question](Reply reply) {
      question->facts->extents = reply.ok ? readExtents(reply.message) : std::nullopt;
      answered(question);
    });
  }
  if (wanted.has(Fact::actions) && facts.has(AtspiInterface::action)) {
    askActions(question);
  }
  if (wanted.has(Fact::value)) {
    askValue(question);
  }
  if (wanted.has(Fact::address) && facts.has(AtspiInterface::document)) {
    askAddress(question);
  }
  // Whether an object of such a role is a window shows by what it hangs on.
  if (!wanted.has(Fact::parent) && !facts.parent && isWindowRole(facts.role)) {
    ++question->open;
    batch_.property(question->ref, kAccessible, "Parent", [this, question](Reply reply) {
      question->facts->parent = reply.ok ? readVariantRef(reply.message) : std::nullopt;
      answered(question);
    });
  }
}

void FactAsker::askActions(const std::shared_ptr<Question>& question) {
  ++question->open;
  batch_.call(question->ref, kAction, "GetActions", [this, question](Reply reply) {
    if (auto actions = reply.ok ? readActions(reply.message) : std::nullopt) {
      question->facts->actions = *std::move(actions);
    }
    answered(question);
  });
}

void FactAsker::askActionNames(const std::shared_ptr<Question>& question) {
  if (!question->wanted.has(Fact::actions)) {
    return;
  }
  std::vector<std::string>& actions = question->facts->actions;
  for (std::size_t i = 0; i < actions.size(); ++i) {
    if (!needsPlainName(actions[i], question->facts->role)) {
      continue;
    }
    Message message = batch_.make(question->ref, kAction, "GetName");
    if (message) {
      sd_bus_message_append(message.get(), "i", static_cast<std::int32_t>(i));
    }
    ++question->open;
    batch_.send(std::move(message), [this, question, i](Reply reply) {
      if (auto name = reply.ok ? readText(reply.message) : std::nullopt) {
        question->facts->actions[i] = *std::move(name);
      }
      answered(question);
    });
  }
}

void FactAsker::askValue(const std::shared_ptr<Question>& question) {
  const AtspiFacts& facts = *question->facts;
  const RoleRow row = refined(roleRow(facts.role), facts.states);
  switch (row.value) {
    case ValueSource::none:
    case ValueSource::onOff:
    case ValueSource::label:
      break;
    case ValueSource::choice:
    case ValueSource::text:
      if (facts.has(AtspiInterface::text)) {
        askTextContent(question);
      }
      break;
    case ValueSource::quantity:
      if (facts.has(AtspiInterface::value)) {
        askNumber(question);
      }
      break;
  }
}

void FactAsker::askTextContent(const std::shared_ptr<Question>& question) {
  // GTK 4 takes -1 for "nothing", so the end must be told.
  ++question->open;
  batch_.property(question->ref, kText, "CharacterCount", [this, question](Reply reply) {
    const auto count = reply.ok ? readVariantInt(reply.message) : std::nullopt;
    if (!count || *count <= 0) {
      if (count) {
        question->facts->text = "";
      }
      answered(question);
      return;
    }
    Message message = batch_.make(question->ref, kText, "GetText");
    if (message) {
      sd_bus_message_append(message.get(), "ii", 0, std::min(*count, kMaxTextCharacters));
    }
    batch_.send(std::move(message), [this, question](Reply content) {
      question->facts->text = content.ok ? readText(content.message) : std::nullopt;
      answered(question);
    });
  });
}

void FactAsker::askNumber(const std::shared_ptr<Question>& question) {
  ++question->open;
  batch_.property(question->ref, kValue, "CurrentValue", [this, question](Reply reply) {
    question->facts->number = reply.ok ? readVariantDouble(reply.message) : std::nullopt;
    answered(question);
  });
}

void FactAsker::askAddress(const std::shared_ptr<Question>& question) {
  Message message = batch_.make(question->ref, kDocument, "GetAttributeValue");
  if (message) {
    sd_bus_message_append(message.get(), "s", "URI");
  }
  ++question->open;
  batch_.send(std::move(message), [this, question](Reply reply) {
    if (auto address = reply.ok ? readText(reply.message) : std::nullopt) {
      question->facts->address = *std::move(address);
    }
    answered(question);
  });
}

}  // namespace tarqo::lnx
