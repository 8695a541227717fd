// Searches below an object, level by level, each level in one batch.
#pragma once

#include <cstddef>
#include <functional>

#include "platform/linux/atspi/read/reader.h"

namespace tarqo::lnx::atspi {

enum class Visit { skip, descend };

/// Called with each object and its properties; returns whether to look below it.
using Visitor = std::function<Visit(const ObjectHandle& object, const Properties& properties)>;

/// Shows `visit` every object below `start`, nearest levels first and at most `limit` of them, but
/// for what lies below an object it skipped. Ends early when the application fails to answer.
/// Also ends, with what it found, after one messaging time-out: level by level, the answers of an
/// application that is slow, but in time, add up.
void searchBelow(Reader& reader, const ObjectHandle& start, PropertySet wanted, std::size_t limit,
                 const Visitor& visit);

}  // namespace tarqo::lnx::atspi
