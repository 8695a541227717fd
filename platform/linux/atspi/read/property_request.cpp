#include "platform/linux/atspi/read/property_request.h"

#include <algorithm>

namespace tarqo::lnx {
namespace {

/// Longer texts are cut: nobody reads more of a value, and a log view may hold megabytes.
constexpr std::int32_t kMaxTextCharacters = 20000;

/// GTK 4 gives every label the commands of its context menu, none of which stands for pressing it.
bool actionsMatter(const AtspiFacts& facts, Toolkit toolkit) {
  return facts.has(AtspiInterface::action) &&
         !(toolkit == Toolkit::gtk4 && facts.is(AtspiRole::label));
}

/// A name that axAction might know under another spelling: GetActions gives translated names in
/// GTK 3 and empty ones in Chromium, where GetName gives the plain ones. Names with a dot are those
/// of GTK 4's own commands, of which every label has some.
bool needsPlainName(const std::string& action, std::uint32_t role) {
  return !axAction(action, role) && action.find('.') == std::string::npos;
}

/// Chromium gives actions no names in the list of them. Its first two are what an object does when
/// it is pressed and its context menu.
void askFirstActionNames(const std::shared_ptr<Question>& question) {
  question->facts->actions.resize(2);
  question->open += 2;
  for (std::int32_t i = 0; i < 2; ++i) {
    question->batch.callWithNumber(
        question->ref, {kAction, "GetName"}, i, [question, i](Reply reply) {
          question->facts->actions[static_cast<std::size_t>(i)] =
              (reply.ok ? readText(reply.message) : std::nullopt).value_or("");
          answered(question);
        });
  }
}

void askTextOf(const std::shared_ptr<Question>& question, std::int32_t end) {
  Message message = question->batch.make(question->ref, kText, "GetText");
  if (message) {
    sd_bus_message_append(message.get(), "ii", 0, end);
  }
  question->batch.send(std::move(message), [question](Reply content) {
    question->facts->text = content.ok ? readText(content.message) : std::nullopt;
    answered(question);
  });
}

void askTextContent(const std::shared_ptr<Question>& question) {
  ++question->open;
  // -1 means the end, but to GTK 4; and what has many lines may be too long to be read whole.
  if (question->toolkit != Toolkit::gtk4 && question->facts->has(AtspiState::singleLine)) {
    askTextOf(question, -1);
    return;
  }
  question->batch.property(question->ref, kText, "CharacterCount", [question](Reply reply) {
    const auto count = reply.ok ? readVariantInt(reply.message) : std::nullopt;
    if (!count || *count <= 0) {
      if (count) {
        question->facts->text = "";
      }
      answered(question);
      return;
    }
    askTextOf(question, std::min(*count, kMaxTextCharacters));
  });
}

/// What is chosen in one of Chromium's lists: the name of the selected entry of its menu. The
/// list's own text is a placeholder for the menu.
void askChosen(const std::shared_ptr<Question>& question) {
  ++question->open;
  const auto giveUp = [question](const std::optional<AtspiRef>& ref) {
    if (!ref || ref->empty()) {
      answered(question);
      return true;
    }
    return false;
  };
  const auto takeName = [question](Reply reply) {
    question->facts->text = reply.ok ? readVariantText(reply.message) : std::nullopt;
    answered(question);
  };
  const auto takeEntry = [question, giveUp, takeName](Reply reply) {
    const std::optional<AtspiRef> entry = reply.ok ? readRef(reply.message) : std::nullopt;
    if (!giveUp(entry)) {
      question->batch.property(*entry, kAccessible, "Name", takeName);
    }
  };
  const auto takeMenu = [question, giveUp, takeEntry](Reply reply) {
    const std::optional<AtspiRef> menu = reply.ok ? readRef(reply.message) : std::nullopt;
    if (!giveUp(menu)) {
      question->batch.callWithNumber(*menu, {kSelection, "GetSelectedChild"}, 0, takeEntry);
    }
  };
  question->batch.callWithNumber(question->ref, {kAccessible, "GetChildAtIndex"}, 0, takeMenu);
}

void askNumber(const std::shared_ptr<Question>& question) {
  ++question->open;
  question->batch.property(question->ref, kValue, "CurrentValue", [question](Reply reply) {
    question->facts->number = reply.ok ? readVariantDouble(reply.message) : std::nullopt;
    answered(question);
  });
}

}  // namespace

void askActions(const std::shared_ptr<Question>& question) {
  if (!actionsMatter(*question->facts, question->toolkit)) {
    return;
  }
  if (question->toolkit == Toolkit::chromium && !question->facts->has(AtspiInterface::value)) {
    askFirstActionNames(question);
    return;
  }
  ++question->open;
  question->batch.call(question->ref, kAction, "GetActions", [question](Reply reply) {
    if (auto actions = reply.ok ? readActions(reply.message) : std::nullopt) {
      question->facts->actions = *std::move(actions);
    }
    answered(question);
  });
}

void askActionNames(const std::shared_ptr<Question>& question) {
  if (!question->wanted.has(Fact::actions) ||
      (question->toolkit == Toolkit::chromium && !question->facts->has(AtspiInterface::value))) {
    return;
  }
  std::vector<std::string>& actions = question->facts->actions;
  for (std::size_t i = 0; i < actions.size(); ++i) {
    if (!needsPlainName(actions[i], question->facts->role)) {
      continue;
    }
    Message message = question->batch.make(question->ref, kAction, "GetName");
    if (message) {
      sd_bus_message_append(message.get(), "i", static_cast<std::int32_t>(i));
    }
    ++question->open;
    question->batch.send(std::move(message), [question, i](Reply reply) {
      if (auto name = reply.ok ? readText(reply.message) : std::nullopt) {
        question->facts->actions[i] = *std::move(name);
      }
      answered(question);
    });
  }
}

void askAddress(const std::shared_ptr<Question>& question) {
  const AtspiFacts& facts = *question->facts;
  // Chromium says of every object that it is a document.
  if (!facts.has(AtspiInterface::document) || roleRow(facts.role).axRole != "AXWebArea") {
    return;
  }
  Message message = question->batch.make(question->ref, kDocument, "GetAttributeValue");
  if (message) {
    sd_bus_message_append(message.get(), "s", "URI");
  }
  ++question->open;
  question->batch.send(std::move(message), [question](Reply reply) {
    if (auto address = reply.ok ? readText(reply.message) : std::nullopt) {
      question->facts->address = *std::move(address);
    }
    answered(question);
  });
}

void askValue(const std::shared_ptr<Question>& question) {
  const AtspiFacts& facts = *question->facts;
  const RoleRow row = refined(roleRow(facts.role), facts.states);
  switch (row.value) {
    case ValueSource::none:
    case ValueSource::onOff:
    case ValueSource::label:
      break;
    case ValueSource::choice:
      if (question->toolkit == Toolkit::chromium) {
        askChosen(question);
        break;
      }
      [[fallthrough]];
    case ValueSource::text:
      if (facts.has(AtspiInterface::text)) {
        askTextContent(question);
      } else if (facts.has(AtspiInterface::value)) {
        askNumber(question);
      }
      break;
    case ValueSource::quantity:
      if (facts.has(AtspiInterface::value)) {
        askNumber(question);
      }
      break;
  }
}

}  // namespace tarqo::lnx
