#pragma once
#include <cstdint>
#include <utility>
#include <vector>

#include "text/Archive.h"
#include "text/KelText.h"

// A group of dictionary texts: its number, its name and the text numbers that
// belong to it.
//
// Record: number (u32), name; block boundary; count of members (u32) and the
// members (u32 each).
class TextCatagory : public Storable
{
public:
    static constexpr uint32_t Tag = 2;

    TextCatagory() = default;
    TextCatagory(uint32_t number, KelText name) : number(number), name(std::move(name)) {}

    uint32_t Number() const { return number; }
    void SetNumber(uint32_t value) { number = value; }
    KelText& Name() { return name; }
    const KelText& Name() const { return name; }
    std::vector<uint32_t>& Members() { return members; }
    const std::vector<uint32_t>& Members() const { return members; }

    bool Serialise(Archive& archive) override;
    uint32_t ClassTag() const override { return Tag; }

private:
    uint32_t number = 0;
    KelText name;
    std::vector<uint32_t> members;
};
