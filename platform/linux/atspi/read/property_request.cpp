#include "platform/linux/atspi/read/property_request.h"

#include "platform/linux/atspi/read/cells_in_view.h"
#include "platform/linux/atspi/read/value_request.h"
#include "platform/linux/atspi/translate/visibility.h"

namespace tarqo::lnx::atspi {
namespace {

/// From this many children on, it is worth requesting only those that are shown.
constexpr int kManyChildren = 8;

/// What gives an entry its placeholder, and web content its identifier.
bool attributesMatter(const Properties& properties, Toolkit toolkit) {
  switch (toolkit) {
    case Toolkit::gtk4:
      return properties.has(Interface::text) && properties.has(State::editable);
    case Toolkit::gtk3:      // Answered with all properties.
    case Toolkit::chromium:  // The same.
    case Toolkit::gecko:     // The same.
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

void requestRoleAndStates(const std::shared_ptr<PropertyRequest>& request) {
  request->open += 2;
  request->batch.call(request->ref, kAccessible, "GetRole", [request](Reply reply) {
    if (const auto role = reply.ok ? readNumber(reply.message) : std::nullopt) {
      request->properties->role = *role;
      request->properties->alive = true;
    }
    answered(request);
  });
  request->batch.call(request->ref, kAccessible, "GetState", [request](Reply reply) {
    if (const auto states = reply.ok ? readStates(reply.message) : std::nullopt) {
      request->properties->states = *states;
    }
    answered(request);
  });
}

void requestInterfaces(const std::shared_ptr<PropertyRequest>& request) {
  ++request->open;
  request->batch.call(request->ref, kAccessible, "GetInterfaces", [request](Reply reply) {
    if (const auto interfaces = reply.ok ? readInterfaces(reply.message) : std::nullopt) {
      request->properties->interfaces = *interfaces;
    }
    answered(request);
  });
}

bool dependsOnInterfaces(PropertySet wanted) {
  return wanted.has(Property::extents) || wanted.has(Property::actions) ||
         wanted.has(Property::value) || wanted.has(Property::address) ||
         wanted.has(Property::attributes);
}

/// GTK, Chromium and Gecko give all properties of an object in one answer. The request crashes
/// Qt 5.
bool answersAllAtOnce(Toolkit toolkit) {
  return toolkit == Toolkit::gtk3 || toolkit == Toolkit::gtk4 || toolkit == Toolkit::chromium ||
         toolkit == Toolkit::gecko;
}

PropertySet answeredAtOnce(Toolkit toolkit) {
  const PropertySet all =
      Property::name | Property::description | Property::identifier | Property::parent;
  return toolkit == Toolkit::gtk4 ? all : all | Property::attributes;
}

bool isWorthRequestingAll(PropertySet wanted) {
  return wanted.has(Property::description) || wanted.has(Property::identifier) ||
         wanted.has(Property::attributes);
}

void requestProperties(const std::shared_ptr<PropertyRequest>& request) {
  request->wanted.add(answeredAtOnce(request->toolkit));
  Message message = request->batch.make(request->ref, "org.freedesktop.DBus.Properties", "GetAll");
  if (message) {
    sd_bus_message_append(message.get(), "s", kAccessible);
  }
  ++request->open;
  request->batch.send(std::move(message), [request](Reply reply) {
    Properties& properties = *request->properties;
    if (reply.ok) {
      AccessibleProperties reported = readProperties(reply.message);
      properties.name = withoutMarks(std::move(reported.name).value_or(""));
      properties.description = std::move(reported.description).value_or("");
      properties.identifier = std::move(reported.identifier).value_or("");
      properties.parent = std::move(reported.parent);
      properties.childCount = reported.childCount;
      if (reported.attributes) {
        properties.attributes = *std::move(reported.attributes);
      }
    }
    answered(request);
  });
}

void requestTexts(const std::shared_ptr<PropertyRequest>& request) {
  const auto requestText = [&request](Property which, const char* name,
                                      std::string Properties::*into) {
    if (!request->wanted.has(which)) {
      return;
    }
    ++request->open;
    request->batch.property(request->ref, kAccessible, name, [request, into](Reply reply) {
      if (auto text = reply.ok ? readVariantText(reply.message) : std::nullopt) {
        (*request->properties).*into = withoutMarks(*std::move(text));
      }
      answered(request);
    });
  };
  if (answersAllAtOnce(request->toolkit) && isWorthRequestingAll(request->wanted)) {
    requestProperties(request);
    return;
  }
  requestText(Property::name, "Name", &Properties::name);
  requestText(Property::description, "Description", &Properties::description);
  if (identifierMatters(request->toolkit)) {
    requestText(Property::identifier, "AccessibleId", &Properties::identifier);
  }
  if (request->wanted.has(Property::parent)) {
    ++request->open;
    request->batch.property(request->ref, kAccessible, "Parent", [request](Reply reply) {
      request->properties->parent = reply.ok ? readVariantRef(reply.message) : std::nullopt;
      answered(request);
    });
  }
}

void requestAllChildren(const std::shared_ptr<PropertyRequest>& request) {
  ++request->open;
  request->batch.call(request->ref, kAccessible, "GetChildren", [request](Reply reply) {
    request->properties->children = reply.ok ? readRefs(reply.message) : std::nullopt;
    answered(request);
  });
}

/// One answer in place of a list of all children and a request to each of them.
void requestShownChildren(const std::shared_ptr<PropertyRequest>& request) {
  Message message = request->batch.make(request->ref, kCollection, "GetMatches");
  if (message) {
    constexpr std::uint32_t kShowing = 1U << static_cast<unsigned>(State::showing);
    constexpr int kAll = 1;
    constexpr int kInOrder = 1;
    // All of these states and of no attributes, roles and interfaces; not inverted; in the
    // parent's order, however many, no grandchildren.
    sd_bus_message_append(message.get(), "(aiia{ss}iaiiasib)uib", 2, kShowing, 0, kAll, 0, kAll, 0,
                          kAll, 0, kAll, 0, kInOrder, 0, 0);
  }
  ++request->open;
  request->batch.send(std::move(message), [request](Reply reply) {
    request->properties->children = reply.ok ? readRefs(reply.message) : std::nullopt;
    if (!request->properties->children) {
      requestAllChildren(request);
    }
    answered(request);
  });
}

/// GTK 3 takes as long to list the shown children as to list all. Cells count as shown in any case.
bool canListShownChildren(const Properties& properties, Toolkit toolkit) {
  return toolkit == Toolkit::gtk3 && properties.childCount &&
         *properties.childCount >= kManyChildren && !properties.has(State::managesDescendants);
}

void requestChildren(const std::shared_ptr<PropertyRequest>& request);

/// A search for something else among all objects does without the cells.
void requestChildrenOfMany(const std::shared_ptr<PropertyRequest>& request) {
  if (request->onlyShownChildren && request->properties->has(Interface::component)) {
    requestCellsInView(request);
  } else {
    request->properties->children.emplace();
  }
}

void requestCount(const std::shared_ptr<PropertyRequest>& request) {
  ++request->open;
  request->batch.property(request->ref, kAccessible, "ChildCount", [request](Reply reply) {
    request->properties->childCount =
        (reply.ok ? readVariantInt(reply.message) : std::nullopt).value_or(0);
    requestChildren(request);
    answered(request);
  });
}

void requestChildren(const std::shared_ptr<PropertyRequest>& request) {
  const Properties& properties = *request->properties;
  const bool mayBeMany = mayHaveTooManyChildren(properties, request->toolkit);
  if (mayBeMany && !properties.childCount) {
    requestCount(request);
  } else if (mayBeMany && *properties.childCount > kTooManyChildren) {
    requestChildrenOfMany(request);
  } else if (properties.childCount == 0) {
    request->properties->children.emplace();
  } else if (request->onlyShownChildren && canListShownChildren(properties, request->toolkit)) {
    requestShownChildren(request);
  } else {
    requestAllChildren(request);
  }
}

std::uint32_t coordinates(Toolkit toolkit) {
  constexpr std::uint32_t kOfScreen = 0;
  constexpr std::uint32_t kOfWindow = 1;
  return toolkit == Toolkit::gtk4 ? kOfWindow : kOfScreen;
}

/// GTK 4 reports former pages and the rows that a list keeps for later as shown, at the places they
/// had last. Only what is drawn holds a point.
void requestDrawn(const std::shared_ptr<PropertyRequest>& request, const Rect& extents) {
  Message message = request->batch.make(request->ref, kComponent, "Contains");
  if (message) {
    const Point centre = extents.center();
    sd_bus_message_append(message.get(), "iiu", static_cast<std::int32_t>(centre.x),
                          static_cast<std::int32_t>(centre.y), coordinates(request->toolkit));
  }
  ++request->open;
  request->batch.send(std::move(message), [request](Reply reply) {
    request->properties->drawn = reply.ok ? readBool(reply.message) : std::nullopt;
    answered(request);
  });
}

void requestExtents(const std::shared_ptr<PropertyRequest>& request) {
  Message message = request->batch.make(request->ref, kComponent, "GetExtents");
  if (message) {
    sd_bus_message_append(message.get(), "u", coordinates(request->toolkit));
  }
  ++request->open;
  request->batch.send(std::move(message), [request](Reply reply) {
    request->properties->extents = reply.ok ? readExtents(reply.message) : std::nullopt;
    const std::optional<Rect> extents = plausible(request->properties->extents);
    if (extents && request->toolkit == Toolkit::gtk4) {
      requestDrawn(request, *extents);
    }
    answered(request);
  });
}

void requestDetails(const std::shared_ptr<PropertyRequest>& request) {
  const Properties& properties = *request->properties;
  const PropertySet wanted = request->wanted;
  if (wanted.has(Property::children)) {
    requestChildren(request);
  }
  if (wanted.has(Property::name)) {
    requestLabel(request);
  }
  if (wanted.has(Property::attributes) && attributesMatter(properties, request->toolkit)) {
    ++request->open;
    request->batch.call(request->ref, kAccessible, "GetAttributes", [request](Reply reply) {
      if (auto attributes = reply.ok ? readAttributes(reply.message) : std::nullopt) {
        request->properties->attributes = *std::move(attributes);
      }
      answered(request);
    });
  }
  // Places of hidden objects are garbage, and requesting them upsets GTK 3.
  if (wanted.has(Property::extents) && properties.has(Interface::component) &&
      isShowing(properties, request->toolkit)) {
    requestExtents(request);
  }
  if (wanted.has(Property::actions)) {
    requestActions(request);
  }
  if (wanted.has(Property::value)) {
    requestValue(request);
  }
  if (wanted.has(Property::address)) {
    requestAddress(request);
  }
  // The parent shows whether an object of such a role is a window.
  if (!wanted.has(Property::parent) && !properties.parent && isWindowRole(properties.role)) {
    ++request->open;
    request->batch.property(request->ref, kAccessible, "Parent", [request](Reply reply) {
      request->properties->parent = reply.ok ? readVariantRef(reply.message) : std::nullopt;
      answered(request);
    });
  }
}

}  // namespace

void answered(const std::shared_ptr<PropertyRequest>& request) {
  if (--request->open > 0) {
    return;
  }
  ++request->round;
  if (request->round == 1 && request->properties->alive) {
    request->open = 1;
    requestDetails(request);
    answered(request);
    return;
  }
  if (request->round == 2) {
    request->open = 1;
    requestActionNames(request);
    answered(request);
    return;
  }
  request->properties->known.add(request->wanted);
  if (request->done) {
    request->done();
  }
}

void requestProperties(Batch& batch, const PropertyQuery& query,
                       std::shared_ptr<Properties> properties, std::function<void()> done) {
  auto request = std::make_shared<PropertyRequest>(
      PropertyRequest{.batch = batch,
                      .ref = query.ref,
                      .toolkit = query.toolkit,
                      .onlyShownChildren = query.onlyShownChildren});
  PropertySet wanted = query.wanted;
  if (wanted.has(Property::value)) {
    wanted.add(Property::name);  // A label's text and a list's choice.
  }
  if (dependsOnInterfaces(wanted)) {
    wanted.add(Property::interfaces);
  }
  request->wanted = (wanted | Property::roleAndStates).without(properties->known);
  request->properties = std::move(properties);
  request->done = std::move(done);
  request->open = 1;  // Held until every call of the round is under way.
  if (request->wanted.has(Property::roleAndStates)) {
    requestRoleAndStates(request);
  }
  if (request->wanted.has(Property::interfaces)) {
    requestInterfaces(request);
  }
  requestTexts(request);
  answered(request);
}

}  // namespace tarqo::lnx::atspi
