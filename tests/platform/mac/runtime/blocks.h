// Blocks that live on the heap.
#pragma once

extern "C" {
/// Keeps a block beyond the scope that made it; null gives null.
void* _Block_copy(const void* block);
void _Block_release(const void* block);
}

namespace standin {

[[nodiscard]] bool isBlock(const void* object);

/// Blocks and shared variables on the heap now.
[[nodiscard]] long blocksAlive();

}  // namespace standin
