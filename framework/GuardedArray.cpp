#include "framework/GuardedArray.h"

#include <algorithm>
#include <utility>

namespace
{
// The registry of named arrays. Function-local statics so that arrays built
// during static initialisation find it ready.
CriticalSection& RegistryGuard()
{
    static CriticalSection guard;
    return guard;
}

std::vector<GuardedArray*>& Registered()
{
    static std::vector<GuardedArray*> arrays;
    return arrays;
}
} // namespace

GuardedArray::GuardedArray(KelText arrayName) : name(std::move(arrayName))
{
    CriticalLock lock(RegistryGuard());
    Registered().push_back(this);
}

GuardedArray::~GuardedArray()
{
    CriticalLock lock(RegistryGuard());
    auto& arrays = Registered();
    arrays.erase(std::remove(arrays.begin(), arrays.end(), this), arrays.end());
}

GuardedArray* GuardedArray::Find(const KelText& arrayName)
{
    CriticalLock lock(RegistryGuard());
    // The most recent registration of a name wins.
    auto& arrays = Registered();
    for (auto it = arrays.rbegin(); it != arrays.rend(); ++it)
        if ((*it)->name.SameAs(arrayName))
            return *it;
    return nullptr;
}

void GuardedArray::Add(void* item)
{
    CriticalLock lock(guard);
    items.push_back(item);
}

bool GuardedArray::Remove(void* item)
{
    CriticalLock lock(guard);
    auto it = std::find(items.begin(), items.end(), item);
    if (it == items.end())
        return false;
    items.erase(it);
    return true;
}

bool GuardedArray::Contains(void* item)
{
    CriticalLock lock(guard);
    return std::find(items.begin(), items.end(), item) != items.end();
}

int32_t GuardedArray::Count()
{
    CriticalLock lock(guard);
    return int32_t(items.size());
}

void* GuardedArray::At(int32_t index)
{
    CriticalLock lock(guard);
    if (index < 0 || index >= int32_t(items.size()))
        return nullptr;
    return items[size_t(index)];
}
