// Blocks, by the published binary interface of the compiler: copied to the heap when they are kept,
// with what they hold.

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "tests/platform/mac/runtime/blocks.h"

extern "C" {
void* objc_retain(void* object);
void objc_release(void* object);
extern char standinMallocBlockClass[];
extern char standinStackBlockClass[];
extern char standinGlobalBlockClass[];
}

namespace {

constexpr std::int32_t kHasHelpers = 1 << 25;
constexpr std::int32_t kIsGlobal = 1 << 28;
constexpr std::int32_t kOneReference = 2;  // Bit 0 is the runtime's own.
constexpr std::int32_t kReferenceMask = 0xFFFE;

// What `_Block_object_assign` is told that it copies.
constexpr int kObject = 3;
constexpr int kBlock = 7;
constexpr int kByReference = 8;
constexpr int kWeak = 16;
constexpr int kOfByReference = 128;

struct Descriptor {
  std::uintptr_t reserved;
  std::uintptr_t size;
  void (*copy)(void* to, const void* from);
  void (*dispose)(const void* block);
};

struct Block {
  const void* isa;
  std::atomic<std::int32_t> flags;
  std::int32_t reserved;
  void (*invoke)(void*);
  Descriptor* descriptor;
};

/// A variable marked `__block`, which all blocks that use it share.
struct Shared {
  const void* isa;
  Shared* forwarding;
  std::atomic<std::int32_t> flags;
  std::int32_t size;
  void (*keep)(Shared* to, Shared* from);
  void (*destroy)(Shared*);
};

std::atomic<long> livingBlocks = 0;

Shared* shareCopy(Shared* original) {
  Shared* current = original->forwarding;
  if ((current->flags & kReferenceMask) != 0) {
    current->flags += kOneReference;
    return current;
  }
  auto* copy = static_cast<Shared*>(std::malloc(static_cast<std::size_t>(original->size)));
  std::memcpy(static_cast<void*>(copy), static_cast<void*>(original),
              static_cast<std::size_t>(original->size));
  // One for the block that asks, one for the scope that the variable was made in.
  copy->flags = original->flags | 2 * kOneReference;
  copy->forwarding = copy;
  original->forwarding = copy;
  if ((original->flags & kHasHelpers) != 0) {
    copy->keep(copy, original);
  }
  ++livingBlocks;
  return copy;
}

void shareRelease(Shared* any) {
  Shared* shared = any->forwarding;
  if ((shared->flags & kReferenceMask) == 0) {
    return;  // Never left the stack.
  }
  if (((shared->flags -= kOneReference) & kReferenceMask) != 0) {
    return;
  }
  if ((shared->flags & kHasHelpers) != 0) {
    shared->destroy(shared);
  }
  std::free(shared);
  --livingBlocks;
}

}  // namespace

namespace standin {

bool isBlock(const void* object) {
  const void* isa = *static_cast<void* const*>(object);
  return isa == standinMallocBlockClass || isa == standinStackBlockClass ||
         isa == standinGlobalBlockClass;
}

long blocksAlive() { return livingBlocks; }

}  // namespace standin

extern "C" {

void* _Block_copy(const void* any) {
  auto* block = static_cast<Block*>(const_cast<void*>(any));
  if (block == nullptr || (block->flags & kIsGlobal) != 0) {
    return block;
  }
  if (block->isa == standinMallocBlockClass) {
    block->flags += kOneReference;
    return block;
  }
  const std::size_t size = block->descriptor->size;
  auto* copy = static_cast<Block*>(std::malloc(size));
  std::memcpy(static_cast<void*>(copy), static_cast<void*>(block), size);
  copy->flags = (block->flags & ~kReferenceMask) | kOneReference;
  copy->isa = standinMallocBlockClass;
  if ((block->flags & kHasHelpers) != 0) {
    block->descriptor->copy(copy, block);
  }
  ++livingBlocks;
  return copy;
}

void _Block_release(const void* any) {
  auto* block = static_cast<Block*>(const_cast<void*>(any));
  if (block == nullptr || block->isa != standinMallocBlockClass) {
    return;
  }
  if (((block->flags -= kOneReference) & kReferenceMask) != 0) {
    return;
  }
  if ((block->flags & kHasHelpers) != 0) {
    block->descriptor->dispose(block);
  }
  std::free(block);
  --livingBlocks;
}

void _Block_object_assign(void* to, const void* object, int flags) {
  auto** place = static_cast<void**>(to);
  auto* its = const_cast<void*>(object);
  if ((flags & (kOfByReference | kWeak)) != 0) {
    *place = its;
  } else if ((flags & kByReference) != 0) {
    *place = shareCopy(static_cast<Shared*>(its));
  } else if ((flags & kBlock) == kBlock) {
    *place = _Block_copy(its);
  } else if ((flags & kObject) == kObject) {
    *place = objc_retain(its);
  }
}

void _Block_object_dispose(const void* object, int flags) {
  auto* its = const_cast<void*>(object);
  if ((flags & (kOfByReference | kWeak)) != 0) {
    if ((flags & kByReference) != 0 && (flags & kOfByReference) == 0) {
      shareRelease(static_cast<Shared*>(its));
    }
  } else if ((flags & kByReference) != 0) {
    shareRelease(static_cast<Shared*>(its));
  } else if ((flags & kBlock) == kBlock) {
    _Block_release(its);
  } else if ((flags & kObject) == kObject) {
    objc_release(its);
  }
}

}  // extern "C"
