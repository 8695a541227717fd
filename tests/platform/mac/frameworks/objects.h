// What the frameworks of the stand-in share. They are Objective-C without automatic reference
// counting: what they give is in the autorelease pool, as on a Mac.
#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/mac/mac_cf_text.h"
#include "tests/platform/mac/runtime/blocks.h"
#include "tests/platform/mac/standin/core_foundation.h"
#include "tests/platform/mac/standin/desktop.h"
#include "tests/platform/mac/standin/run_loop.h"

namespace standin {

/// In the pool; nil for none.
NSString* given(const std::optional<std::string>& text);
NSArray* given(const std::vector<id>& objects);
std::string utf8Of(NSString* text);
NSError* makeError(const std::string& text);

/// A block that is kept until it has been called, on whatever thread.
template <typename Block>
class KeptBlock {
 public:
  explicit KeptBlock(Block block)
      : block_(_Block_copy(reinterpret_cast<const void*>(block)), _Block_release) {}
  [[nodiscard]] Block get() const { return reinterpret_cast<Block>(block_.get()); }

 private:
  std::shared_ptr<void> block_;
};

/// Runs on a thread of the system's, in a pool, and keeps what the deed throws from it.
void answer(std::function<void()> deed);

}  // namespace standin
