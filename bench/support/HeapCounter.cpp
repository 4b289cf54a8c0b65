// Heap counting for the benchmarks: the C library's allocation functions are
// replaced by ones that call glibc's own (__libc_malloc and friends) and add
// up the usable sizes of what they hand out while a count runs.
#include "bench/support/HeapCounter.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>

// glibc's own allocator entry points, which the counter wraps; the names are
// glibc's, reserved to it and used as it documents them.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C"
{
    void* __libc_malloc(size_t size);
    void* __libc_calloc(size_t count, size_t size);
    void* __libc_realloc(void* block, size_t size);
    void* __libc_memalign(size_t alignment, size_t size);
    void __libc_free(void* block);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace
{
std::atomic<bool> counting{false};
std::atomic<int64_t> live{0};
std::atomic<int64_t> peak{0};

void Taken(void* block)
{
    if (!block || !counting.load(std::memory_order_relaxed))
        return;
    const int64_t now =
        live.fetch_add(int64_t(malloc_usable_size(block))) + int64_t(malloc_usable_size(block));
    int64_t high = peak.load(std::memory_order_relaxed);
    while (now > high && !peak.compare_exchange_weak(high, now))
    {
    }
}

void Given(void* block)
{
    if (block && counting.load(std::memory_order_relaxed))
        live.fetch_sub(int64_t(malloc_usable_size(block)));
}
} // namespace

extern "C"
{
    void* malloc(size_t size)
    {
        void* block = __libc_malloc(size);
        Taken(block);
        return block;
    }

    void* calloc(size_t count, size_t size)
    {
        void* block = __libc_calloc(count, size);
        Taken(block);
        return block;
    }

    void* realloc(void* block, size_t size)
    {
        Given(block);
        void* fresh = __libc_realloc(block, size);
        if (fresh)
            Taken(fresh);
        else if (block && size != 0)
            Taken(block); // failed: the old block stays
        return fresh;
    }

    void free(void* block)
    {
        Given(block);
        __libc_free(block);
    }

    void* memalign(size_t alignment, size_t size)
    {
        void* block = __libc_memalign(alignment, size);
        Taken(block);
        return block;
    }

    void* aligned_alloc(size_t alignment, size_t size)
    {
        return memalign(alignment, size);
    }

    int posix_memalign(void** result, size_t alignment, size_t size)
    {
        if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0)
            return EINVAL;
        void* block = memalign(alignment, size);
        if (!block && size)
            return ENOMEM;
        *result = block;
        return 0;
    }
}

namespace HeapCounter
{
void Start()
{
    counting = false;
    live = 0;
    peak = 0;
    counting = true;
}

int64_t Live()
{
    return live;
}

int64_t Peak()
{
    return std::max<int64_t>(peak, live);
}

void Stop()
{
    counting = false;
}

void KeepFreedMemory()
{
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024 * 1024);
}
} // namespace HeapCounter
