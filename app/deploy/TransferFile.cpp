#include "app/deploy/TransferFile.h"

#include "app/deploy/TransferTexts.h"

namespace
{
// Decodes strict UTF-8 (no overlong forms, no surrogates, nothing above
// U+10FFFF, no NUL) into UTF-16. False and the line of the first bad sequence
// otherwise.
bool DecodeUtf8(const std::string& bytes, size_t from, std::u16string& out, int32_t& badLine)
{
    int32_t line = 1;
    size_t at = from;
    while (at < bytes.size())
    {
        const auto lead = uint8_t(bytes[at]);
        uint32_t code = 0;
        size_t extra = 0;
        uint32_t least = 0;
        if (lead < 0x80)
            code = lead;
        else if ((lead & 0xE0) == 0xC0)
            code = lead & 0x1F, extra = 1, least = 0x80;
        else if ((lead & 0xF0) == 0xE0)
            code = lead & 0x0F, extra = 2, least = 0x800;
        else if ((lead & 0xF8) == 0xF0)
            code = lead & 0x07, extra = 3, least = 0x10000;
        else
            code = 0, extra = 0, least = 1; // a stray continuation or an invalid lead
        bool good = least == 0 || lead < 0x80 || at + extra < bytes.size();
        for (size_t i = 1; good && i <= extra; ++i)
        {
            const auto next = uint8_t(bytes[at + i]);
            good = (next & 0xC0) == 0x80;
            code = (code << 6) | (next & 0x3F);
        }
        if (lead >= 0x80)
            good = good && extra > 0 && code >= least && code <= 0x10FFFF &&
                   (code < 0xD800 || code > 0xDFFF);
        if (!good || code == 0)
        {
            badLine = line;
            return false;
        }
        if (code == u'\n')
            ++line;
        if (code >= 0x10000)
        {
            code -= 0x10000;
            out += char16_t(0xD800 + (code >> 10));
            out += char16_t(0xDC00 + (code & 0x3FF));
        }
        else
            out += char16_t(code);
        at += extra + 1;
    }
    return true;
}

KelText Trimmed(const KelText& text)
{
    KelText trimmed(text);
    trimmed.Trim();
    return trimmed;
}
} // namespace

bool DecodeTransferBytes(const std::string& bytes, KelText& text, int32_t& badLine)
{
    badLine = 0;
    std::u16string units;
    if (bytes.size() >= 2 && uint8_t(bytes[0]) == 0xFF && uint8_t(bytes[1]) == 0xFE)
    {
        for (size_t at = 2; at + 1 < bytes.size(); at += 2)
            units += char16_t(uint8_t(bytes[at]) | (uint8_t(bytes[at + 1]) << 8));
        if (units.find(u'\0') != std::u16string::npos)
        {
            badLine = 1;
            return false;
        }
    }
    else
    {
        const bool marked = bytes.size() >= 3 && bytes.starts_with("\xEF\xBB\xBF");
        if (!DecodeUtf8(bytes, marked ? 3 : 0, units, badLine))
            return false;
    }
    text = KelText(units.c_str(), int32_t(units.size()));
    return true;
}

std::vector<TransferSection> ParseTransferText(const KelText& text,
                                               std::vector<TransferProblem>& problems)
{
    std::vector<TransferSection> sections;
    const std::u16string_view all = text.View();
    int32_t lineNumber = 0;
    size_t at = 0;
    while (at < all.size())
    {
        size_t end = all.find(u'\n', at);
        if (end == std::u16string_view::npos)
            end = all.size();
        std::u16string_view raw = all.substr(at, end - at);
        at = end + 1;
        ++lineNumber;
        if (!raw.empty() && raw.back() == u'\r')
            raw.remove_suffix(1);
        const KelText line = Trimmed(KelText(raw.data(), int32_t(raw.size())));
        if (line.IsEmpty() || line.At(0) == u'#')
            continue;

        if (line.At(0) == u'[')
        {
            const KelText name = Trimmed(line.Sub(2, line.Length() - 2));
            if (line.At(line.Length() - 1) != u']' || name.IsEmpty())
                problems.push_back({lineNumber, TransferMessage(kTextCfgMalformedLine)});
            else
                sections.push_back({lineNumber, name, {}});
            continue;
        }

        const int32_t equals = line.Find(u'=');
        const KelText key = equals > 0 ? Trimmed(line.Sub(1, equals - 1)) : KelText();
        if (key.IsEmpty())
        {
            problems.push_back({lineNumber, TransferMessage(kTextCfgMalformedLine)});
            continue;
        }
        if (sections.empty())
        {
            problems.push_back({lineNumber, TransferMessage(kTextCfgValueOutsideSection)});
            continue;
        }
        sections.back().values.push_back(
            {lineNumber, key, Trimmed(line.Sub(equals + 1, line.Length() - equals))});
    }
    return sections;
}

void TransferWriter::Line(const KelText& line)
{
    text += line;
    text += u"\r\n";
}

void TransferWriter::Comment(const KelText& comment)
{
    // One comment line per line of the text.
    const std::u16string_view all = comment.View();
    size_t at = 0;
    do
    {
        size_t end = all.find(u'\n', at);
        if (end == std::u16string_view::npos)
            end = all.size();
        const KelText line(all.data() + at, int32_t(end - at));
        Line(line.IsEmpty() ? KelText(u"#") : u"# " + line);
        at = end + 1;
    } while (at <= all.size());
}

void TransferWriter::Section(const KelText& name)
{
    if (anySection)
        Blank();
    anySection = true;
    Line(u"[" + name + u"]");
}

void TransferWriter::Value(const KelText& key, const KelText& value)
{
    Line(key + u" = " + value);
}

void TransferWriter::CommentedValue(const KelText& key, const KelText& value, const KelText& note)
{
    Line(u"# " + key + u" =" + (value.IsEmpty() ? KelText() : u" " + value) + u"   (" + note +
         u")");
}

void TransferWriter::Blank()
{
    Line(KelText());
}
