#pragma once
#include <cstdint>
#include <utility>

// A doubly linked list of values in order, walked with a cursor that
// remembers its node and index (-1 when it rests on none). Moving to an index
// starts from whichever of the ends and the cursor is nearest, so walking the
// list in order costs one step per index.
template <typename T>
class IndexedList
{
public:
    IndexedList() = default;
    IndexedList(const IndexedList&) = delete;
    IndexedList& operator=(const IndexedList&) = delete;
    IndexedList(IndexedList&& other) noexcept { Take(other); }
    IndexedList& operator=(IndexedList&& other) noexcept
    {
        if (this != &other)
        {
            Clear();
            Take(other);
        }
        return *this;
    }
    ~IndexedList() { Clear(); }

    int32_t Count() const { return count; }
    void Append(const T& value)
    {
        Node* node = new Node{value, last, nullptr};
        (last ? last->next : first) = node;
        last = node;
        ++count;
    }
    void Clear()
    {
        while (first)
        {
            Node* next = first->next;
            delete first;
            first = next;
        }
        last = cursor = nullptr;
        count = 0;
        cursorIndex = -1;
    }

    // Puts the cursor on `index`; false (and the cursor on none) outside.
    bool MoveTo(int32_t index)
    {
        if (index < 0 || index >= count)
        {
            cursor = nullptr;
            cursorIndex = -1;
            return false;
        }
        Node* node = first;
        int32_t at = 0;
        if (count - 1 - index < index - at)
        {
            node = last;
            at = count - 1;
        }
        if (cursor && Distance(cursorIndex, index) < Distance(at, index))
        {
            node = cursor;
            at = cursorIndex;
        }
        for (; at < index; ++at)
            node = node->next;
        for (; at > index; --at)
            node = node->prev;
        cursor = node;
        cursorIndex = index;
        return true;
    }
    int32_t CursorIndex() const { return cursorIndex; }
    // The value under the cursor, null when it rests on none.
    T* Current() { return cursor ? &cursor->value : nullptr; }
    // The value at an index (moves the cursor), null outside.
    T* At(int32_t index) { return MoveTo(index) ? &cursor->value : nullptr; }

private:
    struct Node
    {
        T value;
        Node* prev;
        Node* next;
    };

    static int32_t Distance(int32_t a, int32_t b) { return a > b ? a - b : b - a; }
    void Take(IndexedList& other)
    {
        first = std::exchange(other.first, nullptr);
        last = std::exchange(other.last, nullptr);
        cursor = std::exchange(other.cursor, nullptr);
        count = std::exchange(other.count, 0);
        cursorIndex = std::exchange(other.cursorIndex, -1);
    }

    Node* first = nullptr;
    Node* last = nullptr;
    Node* cursor = nullptr;
    int32_t count = 0;
    int32_t cursorIndex = -1;
};
