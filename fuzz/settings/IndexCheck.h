#pragma once
// The settings targets' check of the section and key index: what FindSection
// and FindKey answer must be what a plain scan from the top finds. One walk
// over the document finds the first header of every name; one walk over each
// such section finds the first key line of every name, so a check costs a
// few passes over the file however many names it covers.
#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "settings/iniLines.h"

namespace fuzzcheck
{
// ASCII letters folded, everything else exact: the scan's own comparison.
inline bool SameFolded(std::u16string_view a, std::u16string_view b)
{
    auto fold = [](char16_t ch) { return (ch >= u'a' && ch <= u'z') ? char16_t(ch - 32) : ch; };
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (fold(a[i]) != fold(b[i]))
            return false;
    return true;
}

inline bool IsHeaderOf(std::u16string_view line, std::u16string_view name)
{
    return line.size() == name.size() + 2 && line.front() == u'[' && line.back() == u']' &&
           SameFolded(line.substr(1, name.size()), name);
}

// Checks FindSection for every name, and FindKey for every name as a key in
// every section that one of the names finds.
inline void CheckIndex(const iniLines& lines, const std::vector<std::u16string_view>& names)
{
    std::vector<const iniLine*> headers(names.size(), nullptr);
    for (const iniLine* line = lines.First(); line; line = line->Next())
        if (line->IsBoundary())
            for (size_t i = 0; i < names.size(); ++i)
                if (!headers[i] && IsHeaderOf(line->View(), names[i]))
                    headers[i] = line;

    std::vector<const iniLine*> keys(names.size());
    for (size_t i = 0; i < names.size(); ++i)
    {
        Check(lines.FindSection(names[i]) == headers[i]);
        if (!headers[i])
            continue;
        std::fill(keys.begin(), keys.end(), nullptr);
        for (const iniLine* line = headers[i]->Next(); line && !line->IsBoundary();
             line = line->Next())
        {
            const std::u16string_view text = line->View();
            const size_t equals = text.find(u'=');
            if (equals == text.npos)
                continue;
            for (size_t k = 0; k < names.size(); ++k)
                if (!keys[k] && SameFolded(text.substr(0, equals), names[k]))
                    keys[k] = line;
        }
        for (size_t k = 0; k < names.size(); ++k)
            Check(lines.FindKey(headers[i], names[k]) == keys[k]);
    }
}
} // namespace fuzzcheck
