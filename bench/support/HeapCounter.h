#pragma once
#include <cstdint>

// Counts the heap bytes a piece of code takes: every malloc, calloc, realloc,
// aligned allocation and free of the process (operator new included) passes
// through counters while a count runs. Outside a count the hooks only forward,
// so timed loops pay next to nothing. A count should create and destroy what
// it measures itself: a block allocated before it and freed during it is
// subtracted all the same.
namespace HeapCounter
{
// Starts a count from zero.
void Start();
// Bytes held now, counted since Start (usable sizes, as the allocator hands them out).
int64_t Live();
// The most held at any time since Start.
int64_t Peak();
// Ends the count.
void Stop();

// Keeps freed memory in the process rather than giving it back to the system
// at once, and takes blocks up to 32 MB from the heap: without it, whether a
// benchmark pays for fresh pages depends on what ran before it in the same
// process, and ratios jump between runs. Call once at the start.
void KeepFreedMemory();
} // namespace HeapCounter
