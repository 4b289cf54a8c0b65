#include "app/KindList.h"

#include <cstdlib>

void KindList::Clear()
{
    while (first)
    {
        Node* next = first->next;
        delete first;
        first = next;
    }
    last = nullptr;
    count = 0;
    cursor = nullptr;
    cursorIndex = -1;
}

void KindList::Append(int32_t kind)
{
    Node* node = new Node{kind, last, nullptr};
    if (last)
        last->next = node;
    else
        first = node;
    last = node;
    ++count;
}

void KindList::Assign(const int32_t* descriptor)
{
    Clear();
    for (const int32_t* kind = descriptor; kind && *kind != -1; ++kind)
        Append(*kind);
}

int32_t KindList::At(int32_t index) const
{
    if (index < 0 || index >= count)
        return -1;
    // Start from whichever is nearest: the cursor, the first or the last node.
    Node* node = first;
    int32_t at = 0;
    if (cursor && std::abs(cursorIndex - index) < index &&
        std::abs(cursorIndex - index) < count - 1 - index)
    {
        node = cursor;
        at = cursorIndex;
    }
    else if (count - 1 - index < index)
    {
        node = last;
        at = count - 1;
    }
    while (at < index)
    {
        node = node->next;
        ++at;
    }
    while (at > index)
    {
        node = node->previous;
        --at;
    }
    cursor = node;
    cursorIndex = index;
    return node->kind;
}
