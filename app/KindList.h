#pragma once
#include <cstdint>

// The program path kinds of a product, in descriptor order: a doubly linked
// list with a cursor that remembers its position, so that walking the list by
// index is cheap.
class KindList
{
public:
    KindList() = default;
    KindList(const KindList&) = delete;
    KindList& operator=(const KindList&) = delete;
    ~KindList() { Clear(); }

    void Clear();
    void Append(int32_t kind);
    // Replaces the contents with the kinds of a descriptor (ended by -1).
    void Assign(const int32_t* descriptor);
    int32_t Count() const { return count; }
    // The kind at index (0-based); -1 outside the list.
    int32_t At(int32_t index) const;

private:
    struct Node
    {
        int32_t kind;
        Node* previous;
        Node* next;
    };
    Node* first = nullptr;
    Node* last = nullptr;
    int32_t count = 0;
    // The last node visited and its index (-1: none).
    mutable Node* cursor = nullptr;
    mutable int32_t cursorIndex = -1;
};
