#pragma once
// Helpers shared by the string-layer tests.
#include <cstdio>
#include <string>
#include <string_view>

#include "text/KelText.h"

// UTF-16 text made readable for failure messages: printable ASCII as it is,
// every other unit as \uXXXX (so lone surrogates stay visible).
inline std::string Show(std::u16string_view text)
{
    std::string shown;
    for (const char16_t unit : text)
    {
        if (unit >= 0x20 && unit < 0x7F && unit != u'\\')
            shown += char(unit);
        else
        {
            char escape[8];
            (void)std::snprintf(escape, sizeof escape, "\\u%04X", unsigned(unit));
            shown += escape;
        }
    }
    return shown;
}

inline std::string Show(const KelText& text)
{
    return Show(text.View());
}

inline std::string Show(const char16_t* text)
{
    return Show(std::u16string_view(text ? text : u""));
}
