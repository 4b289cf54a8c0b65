#pragma once
#include <cstdint>
#include <memory>
#include <vector>

#include "text/KelText.h"

// One kind of message that the user can switch off: its number, the
// description shown to the user and the registry value name that keeps its
// on/off state.
struct MsgSwitch
{
    uint32_t code = 0;
    KelText text;
    KelText name;
};

// The switches that the running program knows, in registration order. The
// application object owns one; where the states are stored is its business.
class MsgSwitchList
{
public:
    MsgSwitchList() = default;
    MsgSwitchList(const MsgSwitchList&) = delete;
    MsgSwitchList& operator=(const MsgSwitchList&) = delete;
    ~MsgSwitchList() = default;

    // Adds a switch. A code that is already known keeps its first text and
    // name: the call then answers 0 and changes nothing; otherwise 1.
    int Register(uint32_t code, const KelText& text, const KelText& name);

    // The switch with that code, or null. Walks the whole list and keeps the
    // last match.
    const MsgSwitch* Find(uint32_t code) const;

    // A copy of the switch's description; empty when the code is unknown.
    KelText TextOf(uint32_t code) const;

    int32_t Count() const { return int32_t(switches.size()); }
    // The switch at a 0-based position in registration order; null outside.
    const MsgSwitch* At(int32_t index) const;

    void Clear() { switches.clear(); }

private:
    std::vector<std::unique_ptr<MsgSwitch>> switches;
};
