#include "settings/TextLinkedList.h"

TextLinkedList::~TextLinkedList()
{
    Clear();
}

TextLinkedList::Node* TextLinkedList::NodeAt(int32_t index) const
{
    if (index < 0 || index >= count)
        return nullptr;
    // Walk from the nearer end.
    if (index < count / 2)
    {
        Node* node = head;
        while (index-- > 0)
            node = node->next;
        return node;
    }
    Node* node = tail;
    for (int32_t i = count - 1; i > index; --i)
        node = node->previous;
    return node;
}

const KelText* TextLinkedList::At(int32_t index) const
{
    const Node* node = NodeAt(index);
    return node ? &node->text : nullptr;
}

void TextLinkedList::InsertAt(int32_t index, const KelText& text)
{
    Node* fresh = new Node{text};
    Node* before = NodeAt(index < 0 ? 0 : index); // null: append
    if (!before)
    {
        fresh->previous = tail;
        (tail ? tail->next : head) = fresh;
        tail = fresh;
    }
    else
    {
        fresh->next = before;
        fresh->previous = before->previous;
        (before->previous ? before->previous->next : head) = fresh;
        before->previous = fresh;
    }
    ++count;
}

void TextLinkedList::Clear()
{
    Node* node = head;
    while (node)
    {
        Node* next = node->next;
        delete node;
        node = next;
    }
    head = tail = current = nullptr;
    count = 0;
}

const KelText* TextLinkedList::First()
{
    current = head;
    return Current();
}

const KelText* TextLinkedList::Next()
{
    if (current)
        current = current->next;
    return Current();
}

const KelText* TextLinkedList::Current() const
{
    return current ? &current->text : nullptr;
}
