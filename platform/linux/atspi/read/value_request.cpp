#include "platform/linux/atspi/read/value_request.h"

#include <algorithm>
#include <array>

#include "platform/linux/atspi/translate/view.h"

namespace tarqo::lnx::atspi {
namespace {

/// Longer texts are cut: nobody reads more of a value, and a log view may hold megabytes.
constexpr std::int32_t kMaxTextCharacters = 20000;

/// GTK 4 gives every label the commands of its context menu, and none of them presses it.
bool actionsMatter(const Properties& properties, Toolkit toolkit) {
  return properties.has(Interface::action) &&
         !(toolkit == Toolkit::gtk4 && properties.is(Role::label));
}

/// A name that axAction might know under another spelling: GetActions gives translated names in
/// GTK 3 and empty ones in Chromium, where GetName gives the plain ones. Names with a dot are those
/// of GTK 4's own commands, of which every label has some.
bool needsPlainName(const std::string& action, std::uint32_t role) {
  return !axAction(action, role) && action.find('.') == std::string::npos;
}

/// Chromium gives actions no names in the list of them. Its first two are what an object does when
/// it is pressed and its context menu.
void requestFirstActionNames(const std::shared_ptr<PropertyRequest>& request) {
  request->properties->actions.resize(2);
  request->open += 2;
  for (std::int32_t i = 0; i < 2; ++i) {
    request->batch.callWithNumber(request->ref, {kAction, "GetName"}, i, [request, i](Reply reply) {
      request->properties->actions[static_cast<std::size_t>(i)] =
          (reply.ok ? readText(reply.message) : std::nullopt).value_or("");
      answered(request);
    });
  }
}

void requestTextOf(const std::shared_ptr<PropertyRequest>& request, std::int32_t end) {
  Message message = request->batch.make(request->ref, kText, "GetText");
  if (message) {
    sd_bus_message_append(message.get(), "ii", 0, end);
  }
  request->batch.send(std::move(message), [request](Reply content) {
    if (auto text = content.ok ? readText(content.message) : std::nullopt) {
      request->properties->text = withoutMarks(*std::move(text));
    }
    answered(request);
  });
}

void requestTextContent(const std::shared_ptr<PropertyRequest>& request) {
  ++request->open;
  // -1 means the end, but to GTK 4; and what has many lines may be too long to be read whole.
  if (request->toolkit != Toolkit::gtk4 && request->properties->has(State::singleLine)) {
    requestTextOf(request, -1);
    return;
  }
  request->batch.property(request->ref, kText, "CharacterCount", [request](Reply reply) {
    const auto count = reply.ok ? readVariantInt(reply.message) : std::nullopt;
    if (!count || *count <= 0) {
      if (count) {
        request->properties->text = "";
      }
      answered(request);
      return;
    }
    requestTextOf(request, std::min(*count, kMaxTextCharacters));
  });
}

/// The roles whose name may stand in a label beside them.
bool mayBeLabelled(const Properties& properties) {
  constexpr std::array kRoles{Role::text,     Role::entry,  Role::passwordText, Role::spinButton,
                              Role::comboBox, Role::slider, Role::autocomplete};
  return std::ranges::any_of(kRoles, [&properties](Role role) { return properties.is(role); });
}

/// Whether a role without a value of its own has a text that its name does not tell: paragraphs,
/// statuses, the cells of a sheet. In Chromium and GTK 4 such texts are objects of their own.
bool hasUnnamedText(const Properties& properties, Toolkit toolkit) {
  return properties.has(Interface::text) && toolkit != Toolkit::chromium &&
         toolkit != Toolkit::gtk4 && !isSecure(properties) &&
         (properties.name.empty() || properties.has(State::editable));
}

/// Whether what is chosen in a list is the selected entry of the menu that is its only child; its
/// own text is a placeholder for the menu. Elsewhere the list has a selection itself.
bool choosesInMenu(Toolkit toolkit) {
  return toolkit == Toolkit::chromium || toolkit == Toolkit::gecko;
}

/// The name of what is chosen in a list.
void requestChosen(const std::shared_ptr<PropertyRequest>& request) {
  ++request->open;
  const auto giveUp = [request](const std::optional<Ref>& ref) {
    if (!ref || ref->empty()) {
      answered(request);
      return true;
    }
    return false;
  };
  const auto takeName = [request](Reply reply) {
    if (auto name = reply.ok ? readVariantText(reply.message) : std::nullopt) {
      request->properties->text = withoutMarks(*std::move(name));
    }
    answered(request);
  };
  const auto takeEntry = [request, giveUp, takeName](Reply reply) {
    const std::optional<Ref> entry = reply.ok ? readRef(reply.message) : std::nullopt;
    if (!giveUp(entry)) {
      request->batch.property(*entry, kAccessible, "Name", takeName);
    }
  };
  const auto takeMenu = [request, giveUp, takeEntry](Reply reply) {
    const std::optional<Ref> menu = reply.ok ? readRef(reply.message) : std::nullopt;
    if (!giveUp(menu)) {
      request->batch.callWithNumber(*menu, {kSelection, "GetSelectedChild"}, 0, takeEntry);
    }
  };
  if (choosesInMenu(request->toolkit)) {
    request->batch.callWithNumber(request->ref, {kAccessible, "GetChildAtIndex"}, 0, takeMenu);
  } else {
    request->batch.callWithNumber(request->ref, {kSelection, "GetSelectedChild"}, 0, takeEntry);
  }
}

void requestNumber(const std::shared_ptr<PropertyRequest>& request) {
  ++request->open;
  request->batch.property(request->ref, kValue, "CurrentValue", [request](Reply reply) {
    request->properties->number = reply.ok ? readVariantDouble(reply.message) : std::nullopt;
    answered(request);
  });
}

}  // namespace

void requestActions(const std::shared_ptr<PropertyRequest>& request) {
  if (!actionsMatter(*request->properties, request->toolkit)) {
    return;
  }
  if (request->toolkit == Toolkit::chromium && !request->properties->has(Interface::value)) {
    requestFirstActionNames(request);
    return;
  }
  ++request->open;
  request->batch.call(request->ref, kAction, "GetActions", [request](Reply reply) {
    if (auto actions = reply.ok ? readActions(reply.message) : std::nullopt) {
      request->properties->actions = *std::move(actions);
    }
    answered(request);
  });
}

void requestActionNames(const std::shared_ptr<PropertyRequest>& request) {
  if (!request->wanted.has(Property::actions) ||
      (request->toolkit == Toolkit::chromium && !request->properties->has(Interface::value))) {
    return;
  }
  std::vector<std::string>& actions = request->properties->actions;
  for (std::size_t i = 0; i < actions.size(); ++i) {
    if (!needsPlainName(actions[i], request->properties->role)) {
      continue;
    }
    Message message = request->batch.make(request->ref, kAction, "GetName");
    if (message) {
      sd_bus_message_append(message.get(), "i", static_cast<std::int32_t>(i));
    }
    ++request->open;
    request->batch.send(std::move(message), [request, i](Reply reply) {
      if (auto name = reply.ok ? readText(reply.message) : std::nullopt) {
        request->properties->actions[i] = *std::move(name);
      }
      answered(request);
    });
  }
}

void requestLabel(const std::shared_ptr<PropertyRequest>& request) {
  const Properties& properties = *request->properties;
  // GTK 3 and Qt name a list of choices after the choice.
  if (!mayBeLabelled(properties) ||
      (!shownName(properties, request->toolkit).empty() && !properties.is(Role::comboBox))) {
    return;
  }
  ++request->open;
  const auto takeName = [request](Reply reply) {
    if (auto name = reply.ok ? readVariantText(reply.message) : std::nullopt) {
      request->properties->label = withoutMarks(*std::move(name));
    }
    answered(request);
  };
  const auto takeLabels = [request, takeName](Reply reply) {
    constexpr std::uint32_t kLabelledBy = 2;
    const std::vector<Ref> labels =
        reply.ok ? readRelation(reply.message, kLabelledBy) : std::vector<Ref>();
    if (labels.empty()) {
      answered(request);
    } else {
      request->batch.property(labels.front(), kAccessible, "Name", takeName);
    }
  };
  request->batch.call(request->ref, kAccessible, "GetRelationSet", takeLabels);
}

void requestAddress(const std::shared_ptr<PropertyRequest>& request) {
  const Properties& properties = *request->properties;
  // Chromium reports every object as a document.
  if (!properties.has(Interface::document) || roleRow(properties.role).axRole != "AXWebArea") {
    return;
  }
  // The first is Chromium's name for it, the second that of Gecko and WebKit.
  for (const char* name : {"URI", "DocURL"}) {
    Message message = request->batch.make(request->ref, kDocument, "GetAttributeValue");
    if (message) {
      sd_bus_message_append(message.get(), "s", name);
    }
    ++request->open;
    request->batch.send(std::move(message), [request](Reply reply) {
      auto address = reply.ok ? readText(reply.message) : std::nullopt;
      if (address && !address->empty()) {
        request->properties->address = *std::move(address);
      }
      answered(request);
    });
  }
}

void requestValue(const std::shared_ptr<PropertyRequest>& request) {
  const Properties& properties = *request->properties;
  const RoleRow row = refined(roleRow(properties.role), properties.states);
  switch (row.value) {
    case ValueSource::none:
    case ValueSource::label:
      if (hasUnnamedText(properties, request->toolkit)) {
        requestTextContent(request);
      }
      break;
    case ValueSource::onOff:
      break;
    case ValueSource::choice:
      if (choosesInMenu(request->toolkit) ||
          (!properties.has(Interface::text) && properties.has(Interface::selection))) {
        requestChosen(request);
        break;
      }
      [[fallthrough]];
    case ValueSource::text:
      if (properties.has(Interface::text)) {
        requestTextContent(request);
      } else if (properties.has(Interface::value)) {
        requestNumber(request);
      }
      break;
    case ValueSource::quantity:
      if (properties.has(Interface::value)) {
        requestNumber(request);
      }
      break;
  }
}

}  // namespace tarqo::lnx::atspi
