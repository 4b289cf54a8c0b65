#include "framework/EditMsgManager.h"

#include "framework/AppEntry.h"
#include "framework/FrameworkResources.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

EditMsgManager::EditMsgManager(Window* owner)
    : PropertyPage(owner, kMessageSwitchTemplate,
                   DictTextOr(kTextSwitchesTitle, u"Message Prompts"))
{
}

EditMsgManager::~EditMsgManager() = default;

int32_t EditMsgManager::InitPage()
{
    AddControl<StaticText>(kMessageSwitchTextId)
        .SetText(DictTextOr(kTextSwitchesExplanation,
                            u"Select which Types of Messages will be Prompted For"));
    tree = &AddControl<CheckTreeView>(kMessageSwitchTreeId);

    filling.Clear();
    if (AppEntry* app = GetAppEntry())
    {
        const MsgSwitchList& switches = app->MessageSwitches();
        for (int32_t i = 0; i < switches.Count(); ++i)
        {
            const MsgSwitch* known = switches.At(i);
            if (!known)
                continue;
            tree->AddItem(known->text, LPARAM(known->code), app->IsSwitchShown(known->code));
            filling.Append(known->code);
        }
    }
    rows = std::move(filling);

    SetLayout(kMessageSwitchTextId, kLayoutGrowWidth);
    SetLayout(kMessageSwitchTreeId, kLayoutGrow);
    return 0;
}

uint32_t EditMsgManager::RowCode(int32_t row)
{
    uint32_t* code = rows.At(row);
    return code ? *code : 0;
}

int32_t EditMsgManager::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    int32_t answer = PropertyPage::ApplyPage(pageIndex, reason, flags);
    if (answer != 0)
        return answer;
    AppEntry* app = GetAppEntry();
    if (!app || !tree || !tree->Handle())
        return 0;
    int32_t row = 0;
    for (HTREEITEM item : tree->Items())
    {
        uint32_t code = RowCode(row++);
        // A switch that is gone has nowhere to keep its state.
        if (!app->MessageSwitches().Find(code))
            continue;
        // Every row is stored, also one the user left alone, so that OK
        // leaves each switch as a REG_DWORD (a value kept as some other type
        // becomes one). Registry failures leave the old state; the page still
        // closes.
        app->SetSwitchShown(code, tree->IsChecked(item));
    }
    return 0;
}
