#pragma once
#include <cstdint>
#include <vector>

#include "framework/CriticalSection.h"
#include "text/KelText.h"

// An array of pointers that several threads share, guarded by a critical
// section and registered under a name so that other parts of the program can
// find it. Every operation takes the guard; callers that need several steps
// to happen together hold a GuardedArray::Lock around them.
class GuardedArray
{
public:
    // Registers the array under `name` (process-wide) until destruction.
    explicit GuardedArray(KelText name);
    ~GuardedArray();
    GuardedArray(const GuardedArray&) = delete;
    GuardedArray& operator=(const GuardedArray&) = delete;

    // The registered array of that name (exact match), or null.
    static GuardedArray* Find(const KelText& name);

    const KelText& Name() const { return name; }

    void Add(void* item);
    // Removes the first occurrence; false when the item is not held.
    bool Remove(void* item);
    bool Contains(void* item);
    int32_t Count();
    // The item at a 0-based position; null outside.
    void* At(int32_t index);

    // Holds the array's guard for a sequence of operations (the guard is
    // re-entrant on the holding thread).
    class Lock
    {
    public:
        explicit Lock(GuardedArray& array) : lock(array.guard) {}

    private:
        CriticalLock lock;
    };

private:
    KelText name;
    CriticalSection guard;
    std::vector<void*> items;
};
