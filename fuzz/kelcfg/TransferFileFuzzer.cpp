// fuzz_kelcfg: kelcfg's settings file reader (app/deploy/TransferFile) fed
// with arbitrary files, as it meets them on shares that many people edit.
// Checks that nothing crashes; that valid UTF-8 decodes to text that encodes
// back to the same bytes and invalid input names a line the input has; that
// every section, key and value comes out trimmed, in line order, with the
// problems on lines of their own; and that the writer's file of what was read
// (through UTF-8 and through UTF-16) reads back as the same sections, keys and
// values, while comments of any text read as nothing.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/deploy/TransferFile.h"
#include "fuzz/FuzzCheck.h"

namespace
{
bool IsBlank(char16_t unit)
{
    return unit == u' ' || unit == u'\t';
}

bool Trimmed(const KelText& text)
{
    const std::u16string_view view = text.View();
    return view.empty() || (!IsBlank(view.front()) && !IsBlank(view.back()));
}

int32_t LineCount(const std::string& bytes)
{
    int32_t lines = 1;
    for (const char byte : bytes)
        lines += byte == '\n';
    return lines;
}

std::string Utf16Bytes(const KelText& text)
{
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : text.View())
    {
        bytes += char(unit & 0xFF);
        bytes += char(unit >> 8);
    }
    return bytes;
}

void CheckSections(const std::vector<TransferSection>& sections,
                   const std::vector<TransferProblem>& problems, int32_t lines)
{
    int32_t previous = 0;
    for (const TransferSection& section : sections)
    {
        Check(section.line > previous && section.line <= lines);
        Check(!section.name.IsEmpty() && Trimmed(section.name));
        previous = section.line;
        for (const TransferValue& value : section.values)
        {
            Check(value.line > previous && value.line <= lines);
            previous = value.line;
            Check(!value.key.IsEmpty() && Trimmed(value.key) && value.key.Find(u'=') == 0);
            Check(Trimmed(value.value));
        }
    }
    previous = 0;
    for (const TransferProblem& problem : problems)
    {
        Check(problem.line > previous && problem.line <= lines);
        Check(!problem.text.IsEmpty());
        previous = problem.line;
    }
}

bool SameSections(const std::vector<TransferSection>& a, const std::vector<TransferSection>& b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
    {
        if (!a[i].name.SameAs(b[i].name) || a[i].values.size() != b[i].values.size())
            return false;
        for (size_t j = 0; j < a[i].values.size(); ++j)
            if (!a[i].values[j].key.SameAs(b[i].values[j].key) ||
                !a[i].values[j].value.SameAs(b[i].values[j].value))
                return false;
    }
    return true;
}

// Reads `bytes` again and checks that they give `expected` without problems.
void CheckReadsBack(const std::string& bytes, const std::vector<TransferSection>& expected)
{
    KelText text;
    int32_t badLine = 0;
    Check(DecodeTransferBytes(bytes, text, badLine));
    std::vector<TransferProblem> problems;
    const std::vector<TransferSection> again = ParseTransferText(text, problems);
    Check(problems.empty());
    Check(SameSections(again, expected));
}

bool HasLoneSurrogate(const KelText& text)
{
    const std::u16string_view view = text.View();
    for (size_t i = 0; i < view.size(); ++i)
    {
        const char16_t unit = view[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < view.size() && view[i + 1] >= 0xDC00 &&
            view[i + 1] <= 0xDFFF)
            ++i;
        else if (unit >= 0xD800 && unit <= 0xDFFF)
            return true;
    }
    return false;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    KelText text;
    int32_t badLine = 0;
    if (!DecodeTransferBytes(bytes, text, badLine))
    {
        Check(badLine >= 1 && badLine <= LineCount(bytes));
        return 0;
    }
    Check(badLine == 0);
    Check(text.View().find(u'\0') == std::u16string_view::npos);
    const bool utf16 = size >= 2 && data[0] == 0xFF && data[1] == 0xFE;
    if (!utf16)
    {
        // Strict UTF-8: the text is exactly what the bytes (after their mark) say.
        const bool marked = bytes.starts_with("\xEF\xBB\xBF");
        Check(text.ToUtf8() == bytes.substr(marked ? 3 : 0));
    }

    std::vector<TransferProblem> problems;
    const std::vector<TransferSection> sections = ParseTransferText(text, problems);
    CheckSections(sections, problems, LineCount(bytes));

    // What was read, written again, reads back the same; comments around it
    // add nothing.
    TransferWriter writer;
    writer.Comment(text);
    for (const TransferSection& section : sections)
    {
        writer.Section(section.name);
        for (const TransferValue& value : section.values)
        {
            writer.Value(value.key, value.value);
            writer.CommentedValue(value.key, value.value, section.name);
        }
    }
    CheckReadsBack(Utf16Bytes(writer.Text()), sections);
    if (!HasLoneSurrogate(writer.Text()))
        CheckReadsBack(writer.Text().ToUtf8(), sections);
    return 0;
}
