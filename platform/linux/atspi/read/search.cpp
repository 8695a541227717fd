#include "platform/linux/atspi/read/search.h"

#include <algorithm>

namespace tarqo::lnx::atspi {
namespace {

void appendChildren(std::vector<ObjectHandle>& level, const ObjectHandle& parent,
                    const Properties& properties) {
  for (const Ref& child : properties.children.value_or(std::vector<Ref>())) {
    level.push_back(parent);
    level.back().ref = child;
  }
}

}  // namespace

void searchBelow(Reader& reader, const ObjectHandle& start, PropertySet wanted, std::size_t limit,
                 const Visitor& visit) {
  wanted.add(Property::basics | Property::children);
  const PropertiesPtr top = reader.read(start, wanted);
  std::vector<ObjectHandle> level;
  if (top) {
    appendChildren(level, start, *top);
  }
  std::size_t seen = 0;
  const Instant end = reader.clock().now() + start.timeout;
  while (!level.empty() && seen < limit && reader.clock().now() < end) {
    level.resize(std::min(level.size(), limit - seen));
    seen += level.size();
    const std::vector<PropertiesPtr> properties = reader.readAll(level, wanted);
    std::vector<ObjectHandle> next;
    for (std::size_t i = 0; i < level.size(); ++i) {
      if (properties[i] && visit(level[i], *properties[i]) == Visit::descend) {
        appendChildren(next, level[i], *properties[i]);
      }
    }
    level = std::move(next);
  }
}

}  // namespace tarqo::lnx::atspi
