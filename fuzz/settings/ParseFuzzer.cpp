// fuzz_settings_parse: a settings file of arbitrary bytes (the whole input is
// the file), read as every kind of entry reads it. Checks that nothing
// crashes, that the file read in small pieces gives the lines of the whole,
// and that the section and key index agrees with a plain scan for the file's
// own section names and keys. Only reads: the edits, saves and failed saves
// are fuzz_settings' job.
#include <cstdint>
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

// The names the index is asked for: the first sections of the file and the
// first keys of their bodies, and a name that no line has. Six are enough for
// a section's keys to be hashed rather than scanned (that happens from its
// third search on); every name more adds a search in every section found.
std::vector<std::u16string_view> NamesOf(const iniLines& lines)
{
    constexpr size_t kMostNames = 6;
    std::vector<std::u16string_view> names{u"NO SUCH NAME"};
    for (const iniLine* line = lines.First(); line && names.size() < kMostNames;
         line = line->Next())
    {
        const std::u16string_view text = line->View();
        if (text.size() >= 2 && text.front() == u'[' && text.back() == u']')
            names.push_back(text.substr(1, text.size() - 2));
        else if (const size_t equals = text.find(u'='); equals != text.npos)
            names.push_back(text.substr(0, equals));
    }
    return names;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static MemoryFiles files; // installed for the life of the process
    files.files.clear();
    files.files[kPath].assign(reinterpret_cast<const char*>(data), size);

    // The whole file; and for one input in eight (the input's length picks)
    // the file handed out in pieces of a size the length picks too, which
    // must give the same lines. Reading every input twice would halve the
    // rate for a check that needs only some inputs of every shape.
    iniFile whole(kPath), pieces(kPath);
    files.piece = SIZE_MAX;
    Check(whole.Load() == 1);
    iniFile* read = &whole;
    if (size % 8 == 0)
    {
        const size_t pieceSizes[] = {1, 2, 3, 5, 7, 16, 4096};
        files.piece = pieceSizes[(size / 8) % 7];
        Check(pieces.Load() == 1);
        files.piece = SIZE_MAX;
        Check(pieces.lines.Count() == whole.lines.Count());
        for (const iniLine *a = whole.lines.First(), *b = pieces.lines.First(); a;
             a = a->Next(), b = b->Next())
            Check(b && a->View() == b->View());
        read = &pieces;
    }

    const std::vector<std::u16string_view> names = NamesOf(whole.lines);
    fuzzcheck::CheckIndex(whole.lines, names);

    // The direct reads, on the copy read in pieces where there is one.
    // Each name is made a text once: the entries below name the same few.
    std::vector<KelText> texts;
    texts.reserve(names.size());
    for (const std::u16string_view view : names)
        texts.emplace_back(view.data(), int32_t(view.size()));
    auto name = [&](size_t i) -> const KelText& { return texts[i % texts.size()]; };
    TextPtrArray out;
    read->List(nullptr, nullptr, &out);
    read->List(name(1).c_str(), nullptr, &out);
    read->List(name(1).c_str(), name(2).c_str(), &out);

    // Every kind of entry reads the file's own names, so that values are
    // found rather than defaulted; the document is loaded already.
    static const char16_t* const noYes[] = {u"NO", u"YES"};
    int32_t integer = 0, option = 0;
    uint32_t unsignedInteger = 0, hex = 0, color = 0;
    double real = 0;
    KelText text;
    TextPtrArray equNames, equValues, list;
    TextLinkedList chain;
    iniFile& file = whole;
    file.Add(new iniString(name(1), name(2), &text, u""));
    file.Add(new iniInteger(name(1), name(3), &integer, 0));
    file.Add(new iniInteger(name(1), name(4), &unsignedInteger, 0));
    file.Add(new iniHex(name(1), name(5), &hex, 0));
    file.Add(new iniReal(name(1), name(6), &real, nullptr));
    file.Add(new iniColor(name(1), name(7), &color, 0));
    file.Add(new iniStrOpt(name(1), name(8), noYes, &option, 2, 0));
    file.Add(new iniBlock(name(9)));
    file.Add(new iniEquBlock(name(1), &equNames, &equValues, u"name", u"value"));
    file.Add(new iniStringArray(name(10), &chain));
    file.Add(new iniStringList(name(11), &list));
    Check(file.ReadAll() == 1);
    Check(equNames.Count() == equValues.Count());
    return 0;
}
