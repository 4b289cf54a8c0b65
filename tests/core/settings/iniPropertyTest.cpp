#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/CodePage.h"
#include "settings/iniFile.h"
#include "tests/core/settings/SettingsTestSupport.h"
#include "text/EncodedText.h"

// Randomised checks with fixed start values: every run sees the same cases.

namespace
{
std::u16string Folded(std::u16string text)
{
    for (char16_t& ch : text)
        ch = KelText::Fold(ch);
    return text;
}

// The searches as a plain scan from the top does them.
int32_t ScanSection(const Lines& lines, const std::u16string& name)
{
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [&](const std::u16string& line)
                                    { return Folded(line) == Folded(u"[" + name + u"]"); });
    return found == lines.end() ? -1 : int32_t(found - lines.begin());
}

int32_t ScanEnd(const Lines& lines, int32_t header)
{
    size_t i = size_t(header) + 1;
    while (i < lines.size() && !lines[i].starts_with(u'['))
        ++i;
    return int32_t(i);
}

int32_t ScanKey(const Lines& lines, int32_t header, const std::u16string& key)
{
    for (int32_t i = header + 1; i < ScanEnd(lines, header); ++i)
    {
        const size_t equals = lines[size_t(i)].find(u'=');
        if (equals != lines[size_t(i)].npos &&
            Folded(lines[size_t(i)].substr(0, equals)) == Folded(key))
            return i;
    }
    return -1;
}

template <typename Text, size_t N>
const Text& Pick(std::mt19937& random, const Text (&pool)[N])
{
    return pool[random() % N];
}
} // namespace

// The line before position pos (null at the top), as the edits name it.
const iniLine* Before(const iniLines& lines, int32_t pos)
{
    return pos > 0 ? &lines[pos - 1] : nullptr;
}

TEST(iniLinesIndex, AgreesWithAPlainScanAfterEveryEdit)
{
    std::mt19937 random(7);
    const std::u16string pool[] = {u"[A]", u"[a]", u"[B]", u"[C]", u"[", u"[A]x", u"k=1",  u"K=2",
                                   u"k",   u"=v",  u"j=3", u"",    u"x", u"[B",   u"K =4", u"é=8"};
    const std::u16string names[] = {u"A", u"b", u"C", u"D"};
    const std::u16string keys[] = {u"k", u"K ", u"J", u"", u"x", u"é"};
    iniLines lines;
    Lines model;
    int32_t lastInserted = -1; // position of the line inserted last, to go on after it
    for (int step = 0; step < 6000; ++step)
    {
        const int32_t count = int32_t(model.size());
        const std::u16string& text = Pick(random, pool);
        const unsigned action = random() % 12;
        if (action < 6)
        {
            // Where entries insert: after a header, after the line inserted
            // last (a block's items), at the top; or anywhere.
            int32_t pos = int32_t(random() % uint32_t(count + 1));
            if (action < 2)
                pos = ScanSection(model, Pick(random, names)) + 1;
            else if (action < 4 && lastInserted >= 0 && lastInserted < count)
                pos = lastInserted + 1;
            else if (action < 5)
                pos = std::min(int32_t(random() % 2), count);
            const iniLine* added = lines.InsertAfter(Before(lines, pos), text);
            model.insert(model.begin() + pos, text);
            ASSERT_EQ(added, &lines[pos]);
            lastInserted = pos;
        }
        else if (action < 8 && count)
        {
            const int32_t pos = int32_t(random() % uint32_t(count));
            // Often the same key with another value, as entries rewrite their lines.
            std::u16string replacement = text;
            if (random() % 2 && model[size_t(pos)].find(u'=') != std::u16string::npos)
                replacement = model[size_t(pos)].substr(0, model[size_t(pos)].find(u'=') + 1) +
                              Pick(random, pool);
            lines.Replace(&lines[pos], replacement);
            model[size_t(pos)] = replacement;
        }
        else if (action < 10 && count)
        {
            int32_t pos = int32_t(random() % uint32_t(count + 1)), n = int32_t(random() % 4);
            if (action == 9)
            {
                // A whole section body, as block entries replace it.
                const int32_t header = ScanSection(model, Pick(random, names));
                pos = header + 1;
                n = header < 0 ? 0 : ScanEnd(model, header) - pos;
            }
            lines.RemoveAfter(Before(lines, pos), n);
            model.erase(model.begin() + std::min(pos, count),
                        model.begin() + std::min(pos + n, count));
            lastInserted = -1;
        }
        else if (action == 10 && random() % 4 == 0)
        {
            // A new document from text, line ends of both kinds.
            std::u16string joined;
            model.clear();
            for (int i = int(random() % 12); i > 0; --i)
            {
                model.push_back(Pick(random, pool));
                joined += model.back() + (random() % 2 ? u"\r\n" : u"\n");
            }
            if (!model.empty() && random() % 2)
            {
                // A last line without line end; an empty one is no line.
                joined.resize(joined.size() - (joined.ends_with(u"\r\n") ? 2 : 1));
                if (model.back().empty())
                    model.pop_back();
            }
            std::unique_ptr<char16_t[]> text(new char16_t[joined.size() + 1]);
            std::copy(joined.begin(), joined.end(), text.get());
            lines.Assign(std::move(text), joined.size());
            lastInserted = -1;
        }
        else if (random() % 16 == 0)
        {
            lines.Clear();
            model.clear();
        }
        ASSERT_EQ(lines.Count(), int32_t(model.size()));
        if (random() % 3 == 0)
            continue; // sometimes no search, so that edits also meet unbuilt key tables
        for (const std::u16string& name : names)
        {
            const int32_t header = ScanSection(model, name);
            ASSERT_EQ(lines.FindSection(name), header < 0 ? nullptr : &lines[header])
                << "step " << step;
            // Any line may serve as the start of a key search.
            const int32_t from =
                header >= 0 || model.empty() ? header : int32_t(random() % model.size());
            for (const std::u16string& key : keys)
                if (from >= 0)
                {
                    const int32_t found = ScanKey(model, from, key);
                    ASSERT_EQ(lines.FindKey(&lines[from], key), found < 0 ? nullptr : &lines[found])
                        << "step " << step;
                }
        }
        for (int32_t i = 0; i < int32_t(model.size()); ++i)
            ASSERT_EQ(lines[i].View(), model[size_t(i)]) << "step " << step;
    }
}

TEST(iniFileProperty, LinesNoEntryOwnsComeOutUnchanged)
{
    MemoryFiles files;
    std::mt19937 random(20240611);
    const std::u16string sections[] = {u"A", u"b", u"General", u"PROGRAM PATHS", u"New"};
    const std::u16string keys[] = {u"K1", u"k2", u"Key", u"K"};
    const std::u16string values[] = {u"1", u"  padded\t", u"a=b", u"", u"é€ü", u"中文", u"😀 x"};
    // No "=" here: these may come before the first header, whose lines a new
    // section inserted at the top takes into its body.
    const std::u16string plain[] = {u"",   u"   ", u"\t",   u"# note", u"Key",
                                    u"[A", u"[]",  u"[B]x", u"中文"};
    const std::u16string keyish[] = {u";K1=comment", u"K1 = spaced", u"K10=prefix",
                                     u"=empty",      u"😀=x",         u"a=b=c"};
    auto randomCase = [&random](std::u16string text)
    {
        for (char16_t& ch : text)
            if (random() % 2 && ch >= u'A' && ch <= u'Z')
                ch = char16_t(ch + 32);
        return text;
    };

    for (int round = 0; round < 300; ++round)
    {
        Lines input;
        KelText joined;
        bool seenHeader = false;
        for (int i = int(random() % 40); i > 0; --i)
        {
            const unsigned kind = random() % 10;
            if (kind < 2)
                input.push_back(u"[" + randomCase(Pick(random, sections)) + u"]");
            else if (kind < 6 && seenHeader)
                input.push_back(randomCase(Pick(random, keys)) + u"=" + Pick(random, values));
            else
                input.push_back(kind < 8 && seenHeader ? Pick(random, keyish)
                                                       : Pick(random, plain));
            seenHeader = seenHeader || kind < 2;
            joined += (input.back() + u"\n").c_str();
        }
        // In a random encoding; ANSI only when every character has a byte there.
        const EncodedText ansi(joined, EncodedText::Ansi);
        const unsigned encoding = random() % 3;
        if (encoding == 0 && ansi.ToText().SameAs(joined))
            files.files[u"p.ini"] = std::string(ansi.Bytes(), size_t(ansi.Length()));
        else if (encoding < 2)
            files.files[u"p.ini"] = std::string("\xEF\xBB\xBF") + joined.ToUtf8();
        else
            files.files[u"p.ini"] = Utf16File(input);

        struct Bound
        {
            std::u16string section, key;
            KelText value;
        };
        std::vector<Bound> bound(1 + random() % 5);
        iniFile file(u"p.ini");
        for (Bound& b : bound)
        {
            b.section = randomCase(Pick(random, sections));
            b.key = randomCase(Pick(random, keys));
            file.Add(new iniString(b.section.c_str(), b.key.c_str(), &b.value, u"<d>"));
        }
        ASSERT_EQ(file.ReadAll(), 1);

        // What a plain scan says each entry owns and reads, and which sections it lacks.
        std::vector<bool> owned(input.size());
        std::vector<size_t> newSections; // by the entry that makes each one
        for (size_t e = 0; e < bound.size(); ++e)
        {
            const int32_t header = ScanSection(input, bound[e].section);
            const int32_t key = header < 0 ? -1 : ScanKey(input, header, bound[e].key);
            KelText expected(u"<d>");
            if (key >= 0)
            {
                owned[size_t(key)] = true;
                expected = input[size_t(key)].substr(input[size_t(key)].find(u'=') + 1).c_str();
                expected.Trim();
            }
            EXPECT_EQ(bound[e].value.View(), expected.View()) << "round " << round;
            if (header < 0) // written last to first: the last entry makes it, later ones go above
            {
                std::erase_if(newSections, [&](size_t other)
                              { return Folded(bound[other].section) == Folded(bound[e].section); });
                newSections.push_back(e);
            }
        }
        for (size_t e = 0; e < bound.size(); ++e) // marked, so that their lines can be told apart
            bound[e].value = (u"\u2603" + std::u16string(1, char16_t(u'0' + e))).c_str();
        file.WriteAll();

        Lines expected, output = LinesOf(files.files[u"p.ini"]);
        for (size_t e : newSections)
            expected.insert(expected.end(), {u"", u"[" + bound[e].section + u"]"});
        for (size_t i = 0; i < input.size(); ++i)
            if (!owned[i])
                expected.push_back(input[i]);
        std::erase_if(output,
                      [](const std::u16string& line) { return line.find(u'\u2603') != line.npos; });
        for (Lines* lines : {&expected, &output})
            while (!lines->empty() && lines->back().empty())
                lines->pop_back();
        ASSERT_EQ(output, expected) << "round " << round;
    }
}

TEST(iniFileProperty, FilesReadInPiecesDecodeAsAWhole)
{
    // Bytes that make every kind of trouble at a piece's end: multi-byte and
    // broken UTF-8, high ANSI bytes, CR, LF, NUL, odd UTF-16 lengths.
    const std::string parts[] = {
        "a",       "key=",     "\r\n",         "\n",       "\r",           std::string(1, '\0'),
        "[S]",     "\xC3\xA9", "\xE2\x82\xAC", "\xE2\x82", "\xE2",         "\xF0\x9F\x98\x80",
        "\xF0",    "\xF0\x9F", "\xC3",         "\x80\x80", "\xED\xA0\x80", "\xFF",
        "\x81\x40"};
    MemoryFiles files;
    std::mt19937 random(77);
    for (int round = 0; round < 400; ++round)
    {
        std::string bytes = round % 3 == 1 ? "\xEF\xBB\xBF" : round % 3 == 2 ? "\xFF\xFE" : "";
        for (int i = int(random() % 60); i > 0; --i)
            bytes += Pick(random, parts);

        // As a plain reading of the whole file would decode it.
        std::u16string whole;
        const size_t mark = round % 3 == 1 ? 3 : round % 3 == 2 ? 2 : 0;
        if (round % 3 == 2)
        {
            for (size_t at = mark; at + 1 < bytes.size(); at += 2)
                whole += char16_t(uint8_t(bytes[at]) | uint8_t(bytes[at + 1]) << 8);
            if ((bytes.size() - mark) % 2)
                whole += u'\uFFFD';
        }
        else if (bytes.size() > mark)
        {
            whole.resize(bytes.size() - mark);
            whole.resize(size_t(CodePage::ToWide(round % 3 ? CodePage::Utf8 : CodePage::Ansi,
                                                 bytes.data() + mark, int32_t(bytes.size() - mark),
                                                 whole.data(), int32_t(whole.size()))));
        }
        std::replace(whole.begin(), whole.end(), u'\0', u'\uFFFD');
        Lines expected;
        for (size_t start = 0, end = 0; start < whole.size(); start = end + 1)
        {
            end = std::min(whole.find(u'\n', start), whole.size());
            expected.push_back(whole.substr(start, end - start));
            if (end < whole.size() && expected.back().ends_with(u'\r'))
                expected.back().pop_back();
        }

        files.files[u"p.ini"] = bytes;
        for (size_t piece : {size_t(1), size_t(2), size_t(3), size_t(5), SIZE_MAX})
        {
            files.piece = piece;
            iniFile file(u"p.ini");
            ASSERT_EQ(file.Load(), 1);
            ASSERT_EQ(LoadedLines(file), expected) << "round " << round << ", pieces of " << piece;
        }
    }
}
