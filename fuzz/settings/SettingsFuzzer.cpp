// fuzz_settings: a settings file of arbitrary bytes, read into every kind of
// entry, written back (sometimes with a write that fails half-way) and read
// again, all through files held in memory. Checks that nothing crashes, that
// a written file is well-formed UTF-16 and reads back as the lines that were
// saved, that a failed write leaves the previous bytes, and that the section
// and key index agrees with a plain scan after the entries' edits, and that a
// file read in small pieces gives the lines of the whole.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "platform/FileSystem.h"
#include "settings/iniFile.h"
#include "tests/core/CoreTestSupport.h"

namespace
{
const char16_t* const kPath = u"fuzz.ini";

// The searches of iniLines, done as a plain scan with its own folding.
bool SameFolded(std::u16string_view a, std::u16string_view b)
{
    auto fold = [](char16_t ch) { return (ch >= u'a' && ch <= u'z') ? char16_t(ch - 32) : ch; };
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (fold(a[i]) != fold(b[i]))
            return false;
    return true;
}

int32_t ScanSection(const iniLines& lines, const KelText& name)
{
    const KelText header = u"[" + name + u"]";
    for (int32_t i = 0; i < lines.Count(); ++i)
        if (SameFolded(lines[i].View(), header.View()))
            return i;
    return -1;
}

int32_t ScanKey(const iniLines& lines, int32_t header, const KelText& key)
{
    for (int32_t i = header + 1; i < lines.Count() && lines[i].At(0) != u'['; ++i)
    {
        const std::u16string_view line = lines[i].View();
        const size_t equals = line.find(u'=');
        if (equals != line.npos && SameFolded(line.substr(0, equals), key.View()))
            return i;
    }
    return -1;
}

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
} // namespace

// The index must agree with a plain scan for every name as a section and as a key.
void CheckIndex(const iniLines& lines, const KelText (&names)[6])
{
    for (const KelText& name : names)
    {
        const int32_t header = ScanSection(lines, name);
        const iniLine* found = lines.FindSection(name.View());
        Check(found == (header < 0 ? nullptr : &lines[header]));
        if (header >= 0)
            for (const KelText& key : names)
            {
                const int32_t keyLine = ScanKey(lines, header, key);
                Check(lines.FindKey(found, key.View()) ==
                      (keyLine < 0 ? nullptr : &lines[keyLine]));
            }
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static MemoryFiles files; // installed for the life of the process
    files.files.clear();

    // A flags byte, six names, the choice of names for each entry, then the file.
    FuzzedDataProvider input(data, size);
    const uint8_t flags = input.ConsumeIntegral<uint8_t>();
    KelText names[6];
    for (KelText& name : names)
        name = KelText::FromUtf8(input.ConsumeRandomLengthString(10));
    size_t choices[24];
    for (size_t& choice : choices)
        choice = input.ConsumeIntegralInRange<size_t>(0, 5);
    files.files[kPath] = input.ConsumeRemainingBytesAsString();
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
    // The copy is read in small pieces: its lines are those of the whole file.
    iniFile whole(kPath), copy(kPath);
    whole.Load();
    const size_t pieces[] = {1, 2, 3, 5, 7, 16, 4096, SIZE_MAX};
    files.piece = pieces[(flags >> 3) % 8];
    copy.Load();
    files.piece = SIZE_MAX;
    Check(copy.lines.Count() == whole.lines.Count());
    for (int32_t i = 0; i < whole.lines.Count(); ++i)
        Check(copy.lines[i].View() == whole.lines[i].View());
    if (copy.loaded)
    {
        CheckIndex(copy.lines, names);
        for (int32_t i = file.entries.Count() - 1; i >= 0; --i)
        {
            file.entries[i]->Write(copy.lines);
            CheckIndex(copy.lines, names);
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
    CheckIndex(reread.lines, names);
    reread.Save();
    return 0;
}
