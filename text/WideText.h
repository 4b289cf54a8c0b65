#pragma once
// The one place where KelText meets the Win32 wide-character interfaces. On
// Windows wchar_t and char16_t are both UTF-16 units of the same size.
#ifndef _WIN32
#error "WideText.h is for Windows builds only"
#endif
#include "text/KelText.h"

static_assert(sizeof(wchar_t) == sizeof(char16_t), "wchar_t must hold UTF-16 units");

inline const wchar_t* AsWide(const KelText& text)
{
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

inline const wchar_t* AsWide(const char16_t* text)
{
    return reinterpret_cast<const wchar_t*>(text);
}

inline wchar_t* AsWide(char16_t* text)
{
    return reinterpret_cast<wchar_t*>(text);
}

inline KelText FromWide(const wchar_t* text)
{
    return KelText(reinterpret_cast<const char16_t*>(text));
}

inline KelText FromWide(const wchar_t* text, int32_t count)
{
    return KelText(reinterpret_cast<const char16_t*>(text), count);
}
