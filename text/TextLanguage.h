#pragma once
#include <cstdint>
#include <utility>

#include "text/Archive.h"
#include "text/KelText.h"

// One language of the dictionary.
//
// Record: name, description; block boundary; the two attributes (u32 each);
// block boundary; the owned list of sub-objects.
//
// The dictionary's sources use the description for the language's source file
// name and the attributes for its Windows language identifier and ANSI code
// page; the dictionary itself only carries them through load and save.
class TextLanguage : public Storable
{
public:
    static constexpr uint32_t Tag = 3;

    TextLanguage() = default;
    explicit TextLanguage(KelText name) : name(std::move(name)) {}

    // The name users pick, e.g. "Deutsch".
    KelText& Name() { return name; }
    const KelText& Name() const { return name; }
    KelText& Description() { return description; }
    const KelText& Description() const { return description; }
    uint32_t FirstAttribute() const { return firstAttribute; }
    uint32_t SecondAttribute() const { return secondAttribute; }
    void SetAttributes(uint32_t first, uint32_t second)
    {
        firstAttribute = first;
        secondAttribute = second;
    }
    PointerList<Storable>& SubObjects() { return subObjects; }

    bool Serialise(Archive& archive) override;
    uint32_t ClassTag() const override { return Tag; }

private:
    KelText name;
    KelText description;
    PointerList<Storable> subObjects;
    uint32_t firstAttribute = 0;
    uint32_t secondAttribute = 0;
};
