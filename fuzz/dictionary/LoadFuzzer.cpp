// libFuzzer target for the dictionary loader: the input is a dictionary file.
// Every input must either load or fail with exactly one error report and leave
// an empty dictionary; a loaded dictionary in editing mode must save and load
// again to the same bytes.
#include <cstddef>
#include <cstdint>
#include <string>

#include "text/AppServices.h"
#include "text/FileSystem.h"
#include "text/TextHolder.h"

namespace
{
class MemoryFile final : public FileSystem
{
public:
    bool ReadBytes(const KelText& path, std::string& bytes) override
    {
        if (!(path == u"in.ary" || path == u"out.ary"))
            return false;
        bytes = path == u"in.ary" ? input : output;
        return true;
    }
    bool WriteBytes(const KelText& path, const void* data, size_t size) override
    {
        if (!(path == u"out.ary"))
            return false;
        output.assign(static_cast<const char*>(data), size);
        return true;
    }
    bool Exists(const KelText& path) override { return path == u"in.ary" || path == u"out.ary"; }

    std::string input;
    std::string output;
};

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
    static MemoryFile files;
    static CountingServices services;
    SetFileSystem(&files);
    SetAppServices(&services);

    // The last byte picks the language, so that both reading modes are fuzzed.
    const char16_t* const languages[] = {u"all", u"Deutsch", u"English", u"#2", u"Fr"};
    const char16_t* language = languages[size ? data[size - 1] % 5 : 0];
    files.input.assign(reinterpret_cast<const char*>(data), size);
    services.errors = 0;

    TextHolder holder;
    const bool loaded = holder.Load(KelText(u"in.ary"), KelText(language), true);
    Require(services.errors == (loaded ? 0 : 1));
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
        const std::string first = files.output;
        TextHolder again;
        Require(again.Load(KelText(u"out.ary"), KelText(u"all"), true));
        Require(again.Save(KelText(u"out.ary")));
        Require(files.output == first);
    }
    return 0;
}
