#pragma once
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "settings/iniFile.h"
#include "tests/core/CoreTestSupport.h"

using Lines = std::vector<std::u16string>;

// The form iniFile writes: UTF-16LE with its mark, every line ended by CR LF.
inline std::string Utf16File(const Lines& lines)
{
    std::u16string text = u"\uFEFF";
    for (const std::u16string& line : lines)
        text += line + u"\r\n";
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2);
}

// The lines of a file in that form; fails the test when the form is wrong.
inline Lines LinesOf(const std::string& bytes)
{
    std::u16string text(bytes.size() / 2, u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * 2);
    Lines lines;
    EXPECT_TRUE(bytes.size() % 2 == 0 && text.starts_with(u"\uFEFF") &&
                (text.size() == 1 || text.ends_with(u"\r\n")));
    for (size_t start = 1, end = 0; (end = text.find(u"\r\n", start)) != text.npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

// The lines that `file` holds loaded.
inline Lines LoadedLines(const iniFile& file)
{
    Lines lines;
    for (int32_t i = 0; i < file.lines.Count(); ++i)
        lines.emplace_back(file.lines[i].View());
    return lines;
}
