#pragma once
#include <cstdint>

#include "text/KelText.h"

// A doubly linked list of texts with a current item (a cursor that First and
// Next move). The list owns its nodes and their texts. Indexes are 0-based
// and forgiving: reading outside the list gives null, inserting clamps the
// position to the list.
class TextLinkedList
{
public:
    TextLinkedList() = default;
    ~TextLinkedList();
    TextLinkedList(const TextLinkedList&) = delete;
    TextLinkedList& operator=(const TextLinkedList&) = delete;

    int32_t Count() const { return count; }
    bool IsEmpty() const { return count == 0; }

    // The text of item index, null outside the list.
    const KelText* At(int32_t index) const;
    // Inserts a copy of text before item index (clamped to 0..Count()).
    void InsertAt(int32_t index, const KelText& text);
    void Append(const KelText& text) { InsertAt(count, text); }
    // Deletes every node with its text; afterwards there is no current item.
    void Clear();

    // Moves the current item to the first item / the one after it and answers
    // its text; null at the end of the list (the list then has no current item).
    const KelText* First();
    const KelText* Next();
    // The current item's text, null when there is none.
    const KelText* Current() const;

private:
    struct Node
    {
        KelText text;
        Node* previous = nullptr;
        Node* next = nullptr;
    };

    Node* NodeAt(int32_t index) const;

    Node* head = nullptr;
    Node* tail = nullptr;
    Node* current = nullptr;
    int32_t count = 0;
};
