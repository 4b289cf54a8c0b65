// fuzz_dictionary_parse: the dictionary loader fed with a dictionary file
// (the whole input), read once in a language that the last byte picks and in
// pieces of a size it picks too, so that reading through the archive's window
// meets every place a piece can end. Every input must either load or fail
// with exactly one error report and leave an empty dictionary. Only reads:
// the cross-checks between the reading modes and the save and reload are
// fuzz_dictionary's job.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/FuzzCheck.h"
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
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static MemoryFiles files;
    static CountingServices services;
    SetFileSystem(&files);
    SetAppServices(&services);

    const uint8_t last = size ? data[size - 1] : 0;
    const char16_t* const languages[] = {u"all", u"Deutsch", u"English", u"#2", u"Fr"};
    const size_t pieces[] = {1, 3, 8, 64, 4096, size_t(1) << 30};
    files.piece = pieces[(last / 5) % 6];
    files.files.clear();
    files.files[u"in.ary"].assign(reinterpret_cast<const char*>(data), size);
    services.errors = 0;

    TextHolder holder;
    const bool loaded = holder.Load(KelText(u"in.ary"), KelText(languages[last % 5]), true);
    Check(services.errors == (loaded ? 0 : 1));
    if (!loaded)
    {
        Check(holder.Count() == 0 && holder.LanguageCount() == 0 && !holder.IsLoaded());
        return 0;
    }
    // 64-bit steps: the count may be INT32_MAX.
    for (int64_t number = -1; number <= holder.Count(); number += 1 + holder.Count() / 16)
        Check(holder.Text(int32_t(number)) != nullptr);
    return 0;
}
