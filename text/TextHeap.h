#pragma once
#include <cstddef>

// The program's shared heap. Text buffers of every kind are taken from and
// returned to it, so that a buffer made by one class can be released by another.
class TextHeap
{
public:
    virtual ~TextHeap() = default;
    // A block of at least `bytes` bytes; null only when memory is exhausted.
    virtual void* Allocate(size_t bytes) = 0;
    // A block of `bytes` bytes that starts with the first `copyBytes` bytes of
    // `block` (which is released). A null block behaves as Allocate.
    virtual void* Reallocate(void* block, size_t bytes, size_t copyBytes) = 0;
    // Releases a block; null is ignored.
    virtual void Free(void* block) = 0;
};

// The process-wide heap (created on first use).
TextHeap& GetTextHeap();
