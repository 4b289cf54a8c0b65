// Placeholder: replaced by the full formatting engine.
#include "text/TextFormat.h"

#include <charconv>

int32_t FormatInto(char16_t* out, int32_t capacity, const char16_t* pattern, const FormatArg* args,
                   int32_t count)
{
    if (capacity < 1 || !out)
        return 0;
    int32_t n = 0;
    int32_t next = 0;
    auto put = [&](char16_t ch) {
        if (n < capacity - 1)
            out[n++] = ch;
    };
    for (const char16_t* p = pattern; p && *p; ++p)
    {
        if (*p != u'%')
        {
            put(*p);
            continue;
        }
        ++p;
        int precision = 6;
        if (*p == u'.' && p[1] == u'*')
        {
            precision = next < count ? int(args[next++].asSigned) : 6;
            p += 2;
        }
        const FormatArg arg = next < count ? args[next] : FormatArg();
        char narrow[64];
        std::to_chars_result r{narrow, {}};
        switch (*p)
        {
        case u'%':
            put(u'%');
            continue;
        case u's':
            ++next;
            if (arg.kind == FormatArg::Kind::WideText && arg.asWide)
                for (const char16_t* s = arg.asWide; *s; ++s)
                    put(*s);
            continue;
        case u'c':
            ++next;
            put(char16_t(arg.asUnsigned));
            continue;
        case u'f':
            ++next;
            r = std::to_chars(narrow, narrow + sizeof narrow, arg.asReal, std::chars_format::fixed,
                              precision);
            break;
        default:
            ++next;
            r = arg.kind == FormatArg::Kind::Unsigned
                    ? std::to_chars(narrow, narrow + sizeof narrow, arg.asUnsigned)
                    : std::to_chars(narrow, narrow + sizeof narrow, arg.asSigned);
            break;
        }
        for (char* c = narrow; c < r.ptr; ++c)
            put(char16_t(*c));
        if (!*p)
            break;
    }
    out[n] = 0;
    return n;
}
