#include "platform/linux/atspi/read/search.h"

#include <algorithm>

namespace tarqo::lnx {
namespace {

void appendChildren(std::vector<AtspiElement::Parts>& level, const AtspiElement::Parts& parent,
                    const AtspiFacts& facts) {
  for (const AtspiRef& child : facts.children.value_or(std::vector<AtspiRef>())) {
    level.push_back(parent);
    level.back().ref = child;
  }
}

}  // namespace

void searchBelow(AtspiReader& reader, const AtspiElement::Parts& start, FactSet wanted,
                 std::size_t limit, const Visitor& visit) {
  wanted.add(Fact::kind | Fact::children);
  const FactsPtr top = reader.learn(start, wanted);
  std::vector<AtspiElement::Parts> level;
  if (top) {
    appendChildren(level, start, *top);
  }
  std::size_t seen = 0;
  const Instant end = std::chrono::steady_clock::now() + start.timeout;
  while (!level.empty() && seen < limit && std::chrono::steady_clock::now() < end) {
    level.resize(std::min(level.size(), limit - seen));
    seen += level.size();
    const std::vector<FactsPtr> facts = reader.learnAll(level, wanted);
    std::vector<AtspiElement::Parts> next;
    for (std::size_t i = 0; i < level.size(); ++i) {
      if (facts[i] && visit(level[i], *facts[i]) == Visit::descend) {
        appendChildren(next, level[i], *facts[i]);
      }
    }
    level = std::move(next);
  }
}

}  // namespace tarqo::lnx
