#pragma once
#include <cstdint>

#include "text/KelText.h"

// The language dictionary: every user-visible text by number, in the language
// chosen at load. One per process.
class TextHolder
{
public:
    // The process's dictionary, created empty on first use.
    static TextHolder& Instance();

    // The text of `number` in the current language. Never null unless
    // mayBeAbsent is set: a number the dictionary lacks gives its built-in
    // fallback (47 "Ok", 48 "Cancel", ...) or the shared empty string.
    const char16_t* Text(int32_t number, bool mayBeAbsent = false) const;

    // Whether a dictionary file has been loaded.
    bool IsLoaded() const;
};

// Shorthand for TextHolder::Instance().Text(number).
inline const char16_t* DictText(int32_t number)
{
    return TextHolder::Instance().Text(number);
}
