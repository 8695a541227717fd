#include "platform/linux/atspi/read/value_request.h"

#include <algorithm>

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
    request->properties->text = content.ok ? readText(content.message) : std::nullopt;
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

/// What is chosen in one of Chromium's lists: the name of the selected entry of its menu. The
/// list's own text is a placeholder for the menu.
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
    request->properties->text = reply.ok ? readVariantText(reply.message) : std::nullopt;
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
  request->batch.callWithNumber(request->ref, {kAccessible, "GetChildAtIndex"}, 0, takeMenu);
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

void requestAddress(const std::shared_ptr<PropertyRequest>& request) {
  const Properties& properties = *request->properties;
  // Chromium reports every object as a document.
  if (!properties.has(Interface::document) || roleRow(properties.role).axRole != "AXWebArea") {
    return;
  }
  Message message = request->batch.make(request->ref, kDocument, "GetAttributeValue");
  if (message) {
    sd_bus_message_append(message.get(), "s", "URI");
  }
  ++request->open;
  request->batch.send(std::move(message), [request](Reply reply) {
    if (auto address = reply.ok ? readText(reply.message) : std::nullopt) {
      request->properties->address = *std::move(address);
    }
    answered(request);
  });
}

void requestValue(const std::shared_ptr<PropertyRequest>& request) {
  const Properties& properties = *request->properties;
  const RoleRow row = refined(roleRow(properties.role), properties.states);
  switch (row.value) {
    case ValueSource::none:
    case ValueSource::onOff:
    case ValueSource::label:
      break;
    case ValueSource::choice:
      if (request->toolkit == Toolkit::chromium) {
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
