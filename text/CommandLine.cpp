#include "text/CommandLine.h"

namespace
{
bool IsBlank(char16_t ch)
{
    return ch == u' ' || ch == u'\t';
}
} // namespace

KelText CommandLineSwitch(const KelText& commandLine, const char16_t* name)
{
    const int32_t nameLength = KelText::Measure(name);
    if (nameLength == 0)
        return KelText();
    const char16_t* at = commandLine.c_str();
    while (*at)
    {
        while (IsBlank(*at))
            ++at;
        if (!*at)
            break;
        // One token: blanks inside quotes belong to it; the quotes are dropped.
        KelText token;
        bool quoted = false;
        for (; *at && (quoted || !IsBlank(*at)); ++at)
        {
            if (*at == u'"')
                quoted = !quoted;
            else
                token += *at;
        }
        if (token.StartsWith(name))
            return token.Sub(nameLength + 1, token.Length() - nameLength);
    }
    return KelText();
}
