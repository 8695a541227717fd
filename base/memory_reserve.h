// Memory kept back for cleaning up after the rest has run out.
//
// The end of a JSON array or object asks for memory, for all that is in it, and cannot say that
// it got none: the process would end. What ends while a failure is on its way up is what the
// request had built by then, so it may be much, at the worst moment.
#pragma once

namespace tarqo {

/// Keeps the reserve, also again after it was used. From the first call on, what a destructor asks
/// for while an exception is on its way is taken from it when there is nothing else. Call where the
/// memory of the last request is free again. Any thread; costs nothing while the reserve is there.
void keepMemoryReserve() noexcept;

}  // namespace tarqo
