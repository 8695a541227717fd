// Finds the children that show of an object that has too many to be listed: the cells of a
// spreadsheet, the rows of a long list.
#pragma once

#include <memory>

#include "platform/linux/atspi/read/value_request.h"

namespace tarqo::lnx::atspi {

/// From this many children on, only those in view are looked for. A sheet of LibreOffice reports
/// 2^31 children, and works for good on a request for all of them.
inline constexpr int kTooManyChildren = 250;

/// Whether the number of an object's children is worth asking for before they are requested.
[[nodiscard]] bool mayHaveTooManyChildren(const Properties& properties, Toolkit toolkit);

/// Requests the children in view by their place: along a row and down a column to learn where the
/// others are, then each of them. Gives the headers of a table with few columns too. No children
/// where the object has no place. At most some thousands of requests, however many children there
/// are.
void requestCellsInView(const std::shared_ptr<PropertyRequest>& request);

}  // namespace tarqo::lnx::atspi
