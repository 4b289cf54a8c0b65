#pragma once
#include <algorithm>
#include <cstdint>
#include <vector>

class KelText;

// A growable array of pointers with an element count and an owns-its-elements
// flag. An owning array deletes its elements when they are removed, when it is
// cleared and when it is destroyed. Null elements are never stored, and every
// index is forgiving: reading outside the array gives null, inserting clamps
// the position to the array, removing outside it does nothing.
template <typename T>
class PtrArray
{
public:
    explicit PtrArray(bool ownsElements = true) : owns(ownsElements) {}
    ~PtrArray() { Clear(); }
    PtrArray(const PtrArray&) = delete;
    PtrArray& operator=(const PtrArray&) = delete;

    int32_t Count() const { return int32_t(items.size()); }
    bool IsEmpty() const { return items.empty(); }
    bool Owns() const { return owns; }
    void SetOwns(bool ownsElements) { owns = ownsElements; }

    // The element at index, null outside the array.
    T* At(int32_t index) const
    {
        return (index >= 0 && index < Count()) ? items[size_t(index)] : nullptr;
    }
    T* operator[](int32_t index) const { return At(index); }

    // Appends item (taking it over when the array owns its elements); null is ignored.
    void Add(T* item)
    {
        if (item)
            items.push_back(item);
    }

    // Inserts item before index, clamped to 0..Count(); null is ignored.
    void InsertAt(int32_t index, T* item)
    {
        if (!item)
            return;
        index = std::clamp(index, 0, Count());
        items.insert(items.begin() + index, item);
    }

    // Removes the element at index, deleting it when the array owns it.
    void RemoveAt(int32_t index)
    {
        if (T* item = Detach(index); item && owns)
            delete item;
    }

    // Removes the element at index without deleting it and hands it back.
    T* Detach(int32_t index)
    {
        T* item = At(index);
        if (item)
            items.erase(items.begin() + index);
        return item;
    }

    // Removes every element, deleting them when the array owns them.
    void Clear()
    {
        if (owns)
            for (T* item : items)
                delete item;
        items.clear();
    }

    using const_iterator = typename std::vector<T*>::const_iterator;
    const_iterator begin() const { return items.begin(); }
    const_iterator end() const { return items.end(); }

private:
    std::vector<T*> items;
    bool owns;
};

// The owning array of texts that block entries and iniFile::List fill.
using TextPtrArray = PtrArray<KelText>;
