#include "text/MessageSwitches.h"

int MsgSwitchList::Register(uint32_t code, const KelText& text, const KelText& name)
{
    if (Find(code))
        return 0;
    auto record = std::make_unique<MsgSwitch>();
    record->code = code;
    record->text = text;
    record->name = name;
    switches.push_back(std::move(record));
    return 1;
}

const MsgSwitch* MsgSwitchList::Find(uint32_t code) const
{
    const MsgSwitch* found = nullptr;
    for (const auto& record : switches)
        if (record->code == code)
            found = record.get();
    return found;
}

KelText MsgSwitchList::TextOf(uint32_t code) const
{
    const MsgSwitch* record = Find(code);
    return record ? record->text : KelText();
}

const MsgSwitch* MsgSwitchList::At(int32_t index) const
{
    if (index < 0 || index >= Count())
        return nullptr;
    return switches[size_t(index)].get();
}
