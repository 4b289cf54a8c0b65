// libFuzzer target for the dictionary loader: the input is a dictionary file.
// Every input must either load or fail with exactly one error report and leave
// an empty dictionary; a loaded dictionary in editing mode must save and load
// again to the same bytes. The file is handed out in pieces of a size the
// input chooses, so that reading through the archive's window meets every
// place a piece can end. A wide file loads in one language exactly when it
// loads for editing, and then holds each number's text as the editing mode's
// entries give it.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "platform/FileSystem.h"
#include "tests/core/CoreTestSupport.h"
#include "text/AppServices.h"
#include "text/TextHolder.h"

namespace
{
class CountingServices final : public AppServices
{
public:
    void ReportError(const KelText&, const KelText&) override { ++errors; }
    int errors = 0;
};

void Require(bool condition)
{
    if (!condition)
        __builtin_trap();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static MemoryFiles files;
    static CountingServices services;
    SetFileSystem(&files);
    SetAppServices(&services);

    // The last byte picks the language, so that both reading modes are
    // fuzzed, and the size of the pieces the file is read in.
    const char16_t* const languages[] = {u"all", u"Deutsch", u"English", u"#2", u"Fr"};
    const char16_t* language = languages[size ? data[size - 1] % 5 : 0];
    const size_t pieces[] = {1, 3, 8, 64, 4096, size_t(1) << 30};
    files.piece = pieces[size ? (data[size - 1] / 5) % 6 : 0];
    files.files.clear();
    files.files[u"in.ary"].assign(reinterpret_cast<const char*>(data), size);
    services.errors = 0;

    TextHolder holder;
    const bool loaded = holder.Load(KelText(u"in.ary"), KelText(language), true);
    Require(services.errors == (loaded ? 0 : 1));
    const bool wide = size >= 12 && (data[8] & 1) == 0;
    if (wide && (!loaded || holder.LanguageSlot() != TextHolder::AllLanguages))
    {
        // The same file for editing: it loads exactly when the language did,
        // and then gives every number the text that the table holds.
        TextHolder editing;
        Require(editing.Load(KelText(u"in.ary"), KelText(u"all"), true) == loaded);
        Require(editing.Count() == holder.Count());
        for (int32_t i = 0; loaded && i < editing.EntryCount(); ++i)
        {
            const TextEntry* entry = editing.Entry(i);
            if (!entry || entry->Number() > uint32_t(INT32_MAX))
                continue;
            const TextEntry* last = entry;
            while (i + 1 < editing.EntryCount() && editing.Entry(i + 1) &&
                   editing.Entry(i + 1)->Number() == entry->Number())
                last = editing.Entry(++i); // of equal numbers the last one wins
            const char16_t* text = holder.Text(int32_t(entry->Number()), true);
            Require(text && last->TextFor(holder.LanguageSlot()).View() == text);
        }
    }
    if (!loaded)
    {
        Require(holder.Count() == 0 && holder.LanguageCount() == 0 && !holder.IsLoaded());
        Require(KelText(holder.Text(48)) == u"Cancel");
        return 0;
    }
    // 64-bit steps: the count may be INT32_MAX.
    for (int64_t number = -1; number <= holder.Count(); number += 1 + holder.Count() / 64)
        Require(holder.Text(int32_t(number)) != nullptr);
    Require(holder.ReferenceText(u"^47") != nullptr);

    if (holder.LanguageSlot() == TextHolder::AllLanguages)
    {
        Require(holder.Save(KelText(u"out.ary")));
        const std::string first = files.files[u"out.ary"];
        TextHolder again;
        Require(again.Load(KelText(u"out.ary"), KelText(u"all"), true));
        Require(again.Save(KelText(u"out.ary")));
        Require(files.files[u"out.ary"] == first);
    }
    return 0;
}
