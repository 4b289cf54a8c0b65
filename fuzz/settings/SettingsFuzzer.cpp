// fuzz_settings: a settings file of arbitrary bytes, read into every kind of
// entry, edited, written back (sometimes with a write that fails half-way) and
// read again, all through files held in memory. Checks that nothing crashes,
// that the section and key index agrees with a plain scan after each of the
// entries' edits, that a failed write leaves the previous bytes, and that a
// written file is well-formed UTF-16 and reads back as the lines that were
// saved. Reading alone (every encoding, files read in pieces) is
// fuzz_settings_parse's job, which runs many times faster.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "fuzz/settings/IndexCheck.h"
#include "platform/FileSystem.h"
#include "settings/iniFile.h"
#include "tests/core/CoreTestSupport.h"

namespace
{
const char16_t* const kPath = u"fuzz.ini";

// Whether bytes are what Save writes for lines (minus trailing empty ones).
bool WrittenAs(const std::string& bytes, const iniLines& lines)
{
    if (bytes.size() < 2 || !bytes.starts_with("\xFF\xFE") || bytes.size() % 2)
        return false;
    std::u16string expected;
    int32_t count = lines.Count();
    while (count > 0 && lines[count - 1].IsEmpty())
        --count;
    for (int32_t i = 0; i < count; ++i)
        (expected += lines[i].View()) += u"\r\n";
    return bytes.size() - 2 == expected.size() * 2 &&
           std::memcmp(bytes.data() + 2, expected.data(), bytes.size() - 2) == 0;
}

// The names the entries use: chosen from the file's own section names and
// keys (so that entries find what they read and rewrite it) and from a few
// of their own (so that they add sections and keys too).
std::vector<KelText> NamePool(const iniLines& lines)
{
    std::vector<KelText> pool{u"GENERAL", u"SUPPORT", u"New Section", u"", u"a=b", u"[x]"};
    for (const iniLine* line = lines.First(); line && pool.size() < 32; line = line->Next())
    {
        const std::u16string_view text = line->View();
        if (text.size() >= 2 && text.front() == u'[' && text.back() == u']')
            pool.emplace_back(text.data() + 1, int32_t(text.size() - 2));
        else if (const size_t equals = text.find(u'='); equals != text.npos)
            pool.emplace_back(text.data(), int32_t(equals));
    }
    return pool;
}

std::vector<std::u16string_view> Views(const KelText (&names)[6])
{
    std::vector<std::u16string_view> views;
    for (const KelText& name : names)
        views.push_back(name.View());
    return views;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static MemoryFiles files; // installed for the life of the process
    files.files.clear();

    // The file, then (taken from its end) a flags byte, the choice of six
    // names and the choice of names for each entry. A real settings file is
    // a good input as it is: its last bytes become the choices.
    FuzzedDataProvider input(data, size);
    const uint8_t flags = input.ConsumeIntegral<uint8_t>();
    uint8_t nameChoices[6];
    for (uint8_t& choice : nameChoices)
        choice = input.ConsumeIntegral<uint8_t>();
    size_t choices[24];
    for (size_t& choice : choices)
        choice = input.ConsumeIntegralInRange<size_t>(0, 5);
    files.files[kPath] = input.ConsumeRemainingBytesAsString();

    iniFile whole(kPath);
    whole.Load();
    const std::vector<KelText> pool = NamePool(whole.lines);
    KelText names[6];
    for (size_t i = 0; i < 6; ++i)
        names[i] = pool[nameChoices[i] % pool.size()];
    const std::vector<std::u16string_view> nameViews = Views(names);
    size_t next = 0;
    auto pick = [&]() -> const KelText& { return names[choices[next++]]; };

    static const char16_t* const noYes[] = {u"NO", u"YES"};
    int32_t integer = 0, option = 0, empty = 0;
    uint32_t unsignedInteger = 0, hex = 0, color = 0;
    double real = 0;
    KelText text;
    TextPtrArray equNames, equValues, list;
    TextLinkedList chain;
    iniFile file(kPath);
    file.Add(new iniString(pick(), pick(), &text, u"default"));
    file.Add(new iniInteger(pick(), pick(), &integer, 7));
    file.Add(new iniInteger(pick(), pick(), &unsignedInteger, -7));
    file.Add(new iniHex(pick(), pick(), &hex, 0xFF));
    file.Add(new iniReal(pick(), pick(), &real, nullptr));
    file.Add(new iniColor(pick(), pick(), &color, 0x123456));
    file.Add(new iniStrOpt(pick(), pick(), noYes, &option, 2, 1));
    file.Add(new iniStrOpt(pick(), pick(), nullptr, &empty, 0, 0));
    file.Add(new iniBlock(pick()));
    file.Add(new iniEquBlock(pick(), &equNames, &equValues, u"name", u"value"));
    file.Add(new iniStringArray(pick(), &chain));
    file.Add(new iniStringList(pick(), &list));

    const char16_t* sectionFilter = (flags & 1) ? names[0].c_str() : nullptr;
    const char16_t* keyFilter = (flags & 2) ? names[1].c_str() : nullptr;
    file.ReadAll(sectionFilter, keyFilter);

    // The entries' edits on a loaded copy, the index checked after each one.
    iniFile copy(kPath);
    if (copy.Load())
    {
        fuzzcheck::CheckIndex(copy.lines, nameViews);
        for (int32_t i = file.entries.Count() - 1; i >= 0; --i)
        {
            file.entries[i]->Write(copy.lines);
            fuzzcheck::CheckIndex(copy.lines, nameViews);
        }
    }

    // Write back; a failed write must leave the previous bytes.
    const std::string before = files.files[kPath];
    files.failNextWrite = (flags & 4) != 0;
    file.WriteAll(sectionFilter, keyFilter, 1);
    files.failNextWrite = false;
    const std::string after = files.files[kPath];
    if (flags & 4)
        Check(after == before);

    // Read the written file again: the lines that were saved come back.
    iniFile reread(kPath);
    if (!(flags & 4) && reread.Load())
        Check(WrittenAs(after, reread.lines));

    // The direct operations on the reloaded document.
    TextPtrArray out;
    reread.List(nullptr, nullptr, &out);
    reread.List(names[0].c_str(), nullptr, &out);
    reread.List(names[0].c_str(), names[1].c_str(), &out);
    reread.SetValue(names[2].c_str(), names[3].c_str(), names[4].c_str());
    fuzzcheck::CheckIndex(reread.lines, nameViews);
    reread.Save();
    return 0;
}
