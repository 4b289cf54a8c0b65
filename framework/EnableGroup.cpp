#include "framework/EnableGroup.h"

#include <utility>

#include "framework/Control.h"
#include "framework/DialogFrame.h"

void EnableGroup::Link(CheckBox& box, std::vector<int32_t> controlIds)
{
    std::erase_if(links, [&box](const Linked& link) { return link.boxId == box.Id(); });
    links.push_back({box.Id(), std::move(controlIds)});
    box.OnClick([this] { Update(); });
}

void EnableGroup::Update()
{
    for (const Linked& link : links)
    {
        const bool ticked = page.IsControlChecked(link.boxId);
        for (int32_t id : link.controlIds)
            page.EnableControl(id, ticked);
    }
}
