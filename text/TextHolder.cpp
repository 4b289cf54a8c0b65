#include "text/TextHolder.h"

namespace
{
struct Fallback
{
    int32_t number;
    const char16_t* text;
};

const Fallback fallbacks[] = {
    {47, u"Ok"},         {48, u"Cancel"},    {65, u"No"},
    {66, u"Yes"},        {274, u"Warning"},  {290, u"Problem"},
    {1492, u"Continue"}, {1786, u"Close"},   {3817, u"Yes to All"},
    {3909, u"Retry"},    {3912, u"No to All"}, {4550, u"Abort"},
    {6069, u"Don't Show This Message Again"}, {6144, u"Quit"},
};
} // namespace

TextHolder& TextHolder::Instance()
{
    static TextHolder holder;
    return holder;
}

const char16_t* TextHolder::Text(int32_t number, bool mayBeAbsent) const
{
    if (mayBeAbsent)
        return nullptr;
    for (const Fallback& fallback : fallbacks)
        if (fallback.number == number)
            return fallback.text;
    return KelText::EmptyText();
}

bool TextHolder::IsLoaded() const
{
    return false;
}
