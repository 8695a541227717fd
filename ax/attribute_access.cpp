#include "ax/attribute_access.h"

#include <algorithm>
#include <cmath>

#include "platform/unicode.h"

namespace tarqo {
namespace {

constexpr std::size_t kMaxTextClusters = 2048;

/// A cluster has no end of its own: a letter may carry a million accents. This leaves 64 bytes to
/// each; the longest emoji, a family of four with a skin tone each, takes 41.
constexpr std::size_t kMaxTextBytes = 64 * kMaxTextClusters;

/// The longest beginning of whole clusters that has no more bytes; of a first one that has more, as
/// many whole code points. Of valid UTF-8.
std::string cutToBytes(std::string text, std::size_t most) {
  if (text.size() <= most) {
    return text;
  }
  std::size_t end = 0;
  bool fits = true;
  unicode::forEachCluster(text, [&](std::string_view cluster) {
    fits = fits && end + cluster.size() <= most;
    end += fits ? cluster.size() : 0;
  });
  const auto continues = [&](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
  };
  if (end == 0) {
    for (end = most; end > 0 && continues(end); --end) {
    }
  }
  text.resize(end);
  return text;
}

std::optional<Rect> rectOf(const Value* position, const Value* size) {
  const Point* origin = position == nullptr ? nullptr : position->as<Point>();
  const Size* extent = size == nullptr ? nullptr : size->as<Size>();
  if (origin == nullptr || extent == nullptr) {
    return std::nullopt;
  }
  const Rect rect{origin->x, origin->y, extent->width, extent->height};
  const bool finite = std::isfinite(rect.x) && std::isfinite(rect.y) && std::isfinite(rect.width) &&
                      std::isfinite(rect.height);
  return finite && rect.width > 0 && rect.height > 0 ? std::optional(rect) : std::nullopt;
}

const Value* pointerTo(const std::optional<Value>& value) { return value ? &*value : nullptr; }

}  // namespace

std::optional<Value> attribute(Accessibility& accessibility, const Element& element,
                               std::string_view name) {
  return accessibility.attribute(element, name);
}

Attributes attributes(Accessibility& accessibility, const Element& element) {
  std::vector<std::optional<Value>> values = accessibility.attributes(element, attributeNames);
  Attributes result;
  const std::size_t count = std::min(values.size(), attributeNames.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (values[i]) {
      result.insert_or_assign(attributeNames[i], std::move(*values[i]));
    }
  }
  return result;
}

const Value* find(const Attributes& attributes, std::string_view name) {
  const auto found = attributes.find(name);
  return found == attributes.end() ? nullptr : &found->second;
}

std::optional<Element> elementValue(const std::optional<Value>& value) {
  const Element* element = value ? value->as<Element>() : nullptr;
  return element == nullptr ? std::nullopt : std::optional(*element);
}

std::optional<bool> booleanValue(const Value* value) {
  const bool* boolean = value == nullptr ? nullptr : value->as<bool>();
  return boolean == nullptr ? std::nullopt : std::optional(*boolean);
}

std::optional<bool> booleanValue(const std::optional<Value>& value) {
  return booleanValue(pointerTo(value));
}

std::string text(const Value* value) {
  const std::string* string = value == nullptr ? nullptr : value->as<std::string>();
  if (string == nullptr) {
    return {};
  }
  return cutToBytes(unicode::prefix(unicode::trimmed(unicode::repaired(*string)), kMaxTextClusters),
                    kMaxTextBytes);
}

std::string text(const std::optional<Value>& value) { return text(pointerTo(value)); }

std::optional<Rect> frame(Accessibility& accessibility, const Element& element) {
  constexpr std::array<std::string_view, 2> kNames{"AXPosition", "AXSize"};
  const auto values = accessibility.attributes(element, kNames);
  return values.size() == kNames.size() ? rectOf(pointerTo(values[0]), pointerTo(values[1]))
                                        : std::nullopt;
}

std::optional<Rect> frameFrom(const Attributes& attributes) {
  return rectOf(find(attributes, "AXPosition"), find(attributes, "AXSize"));
}

Json rectJSON(const Rect& rect) {
  return {{"x", rect.minX()},
          {"y", rect.minY()},
          {"width", rect.extentX()},
          {"height", rect.extentY()}};
}

std::vector<std::string> actionNames(Accessibility& accessibility, const Element& element) {
  return accessibility.actionNames(element);
}

std::vector<Element> elementList(const std::optional<Value>& value) {
  const Values* values = value ? value->as<Values>() : nullptr;
  std::vector<Element> elements;
  if (values == nullptr) {
    return elements;
  }
  elements.reserve(values->size());
  for (const Value& item : *values) {
    const Element* element = item.as<Element>();
    if (element == nullptr) {
      return {};
    }
    elements.push_back(*element);
  }
  return elements;
}

std::vector<Element> childElements(Accessibility& accessibility, const Element& element) {
  return elementList(accessibility.attribute(element, "AXChildren"));
}

}  // namespace tarqo
