#include "text/AccessKey.h"

namespace
{
char16_t UpperCase(char16_t unit)
{
    if (unit >= u'a' && unit <= u'z')
        return char16_t(unit - u'a' + u'A');
    // Latin-1 lower-case letters (à to þ, not the division sign).
    if (unit >= 0xE0 && unit <= 0xFE && unit != 0xF7)
        return char16_t(unit - 0x20);
    return unit;
}
} // namespace

KelText WithoutAccessKey(const KelText& caption)
{
    std::u16string shown;
    const std::u16string_view text = caption.View();
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == u'&' && i + 1 < text.size())
            ++i;
        shown += text[i];
    }
    return KelText(shown.c_str(), int32_t(shown.size()));
}

char16_t AccessKeyOf(const KelText& caption)
{
    const std::u16string_view text = caption.View();
    for (size_t i = 0; i + 1 < text.size(); ++i)
    {
        if (text[i] != u'&')
            continue;
        if (text[i + 1] != u'&')
            return UpperCase(text[i + 1]);
        ++i;
    }
    return 0;
}
