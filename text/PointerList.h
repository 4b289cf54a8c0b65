#pragma once
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

// Capacity of the dictionary's pointer arrays for n elements: n rounded up to
// a multiple of a step chosen by n, always adding a step (n - n % step + step).
// The step is 4 below 4 elements, 8 below 65, 128 up to 512, 1024 up to 4096,
// 8192 up to 65,536, 131,072 up to 500,000, else 1,000,000.
inline int32_t GrowthCapacity(int32_t n)
{
    if (n < 0)
        n = 0;
    int32_t step = 0;
    if (n < 4)
        step = 4;
    else if (n < 65)
        step = 8;
    else if (n <= 512)
        step = 128;
    else if (n <= 4096)
        step = 1024;
    else if (n <= 65536)
        step = 8192;
    else if (n <= 500000)
        step = 131072;
    else
        step = 1000000;
    const int64_t capacity = int64_t(n) - n % step + step;
    return capacity > INT32_MAX ? INT32_MAX : int32_t(capacity);
}

// An array of pointers that grows by GrowthCapacity. With ownsItems set (the
// default) the list deletes its elements when it is cleared or destroyed, the
// last element first. Elements may be null.
template <typename T>
class PointerList
{
public:
    PointerList() = default;
    PointerList(const PointerList&) = delete;
    PointerList& operator=(const PointerList&) = delete;
    ~PointerList()
    {
        Clear();
        std::free(static_cast<void*>(items));
    }

    int32_t Count() const { return count; }
    int32_t Capacity() const { return capacity; }
    // Null outside the list.
    T* At(int32_t index) const { return index >= 0 && index < count ? items[index] : nullptr; }
    T* const* begin() const { return items; }
    T* const* end() const { return items + count; }

    bool OwnsItems() const { return ownsItems; }
    void SetOwnsItems(bool owns) { ownsItems = owns; }

    // Makes room for n elements without changing the count.
    bool Reserve(int32_t n)
    {
        if (n <= capacity)
            return true;
        const int32_t wanted = GrowthCapacity(n);
        void* fresh = std::realloc(static_cast<void*>(items), size_t(wanted) * sizeof(T*));
        if (!fresh)
            return false;
        items = static_cast<T**>(fresh);
        capacity = wanted;
        return true;
    }

    // Appends item (taking ownership when the list owns its items).
    bool Add(T* item) { return Insert(count, item); }

    // Inserts item before position index (clamped to 0..count).
    bool Insert(int32_t index, T* item)
    {
        if (count == INT32_MAX || !Reserve(count + 1))
        {
            if (ownsItems)
                delete item;
            return false;
        }
        index = std::clamp(index, 0, count);
        std::move_backward(items + index, items + count, items + count + 1);
        items[index] = item;
        ++count;
        return true;
    }

    // Takes the element at index out of the list without deleting it.
    T* Detach(int32_t index)
    {
        if (index < 0 || index >= count)
            return nullptr;
        T* item = items[index];
        std::move(items + index + 1, items + count, items + index);
        --count;
        return item;
    }

    // Empties the list; owned elements are deleted from the last to the first.
    // The storage is kept.
    void Clear()
    {
        while (count > 0)
        {
            T* item = items[--count];
            if (ownsItems)
                delete item;
        }
    }

    // Stable sort by `less` (which must accept null elements if any are held).
    template <typename Less>
    void Sort(Less less)
    {
        std::stable_sort(items, items + count, less);
    }

private:
    T** items = nullptr;
    int32_t count = 0;
    int32_t capacity = 0;
    bool ownsItems = true;
};
