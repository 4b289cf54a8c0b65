#pragma once
#include <cstdint>
#include <vector>

class CheckBox;
class DialogFrame;

// Check boxes that enable other controls of their page: while a box is
// ticked the controls linked to it (an edit box, its browse button, ...) are
// enabled, while it is clear they are disabled. One handler serves every box
// of the group: a click on any of them runs Update. The page links its boxes
// in InitPage and runs Update once, so that the controls start in the right
// state. The group refers to the boxes by id, so it outlives a page window
// that is made anew (InitPage links again).
class EnableGroup
{
public:
    explicit EnableGroup(DialogFrame& page) : page(page) {}

    // Links `box` to the controls it enables (replacing an earlier link of
    // the same box) and makes its click run Update.
    void Link(CheckBox& box, std::vector<int32_t> controlIds);
    // Enables or disables every linked control as its box says.
    void Update();

private:
    struct Linked
    {
        int32_t boxId;
        std::vector<int32_t> controlIds;
    };
    DialogFrame& page;
    std::vector<Linked> links;
};
