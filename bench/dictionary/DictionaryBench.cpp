// Dictionary load and lookup times for a dictionary of 20,000 texts in three
// languages, written once to a temporary file, and for the shipped
// dictionary. Each load is set beside reading the same file's bytes into
// fresh memory (stat, malloc, fread: the least any load must do), so that the
// cost of decoding can be told apart from the cost of the disk; the heap a
// load takes at the most is set beside the file's size.
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/support/HeapCounter.h"
#include "bench/support/Summary.h"
#include "text/TextHolder.h"

namespace
{
constexpr int textCount = 20000;

std::filesystem::path TemporaryFile()
{
    return std::filesystem::temp_directory_path() /
           ("kel-bench-diction-" + std::to_string(::getpid()) + ".ary");
}

const std::string& DictionaryFile()
{
    static const std::string path = []
    {
        const std::filesystem::path file = TemporaryFile();
        TextHolder holder;
        const char16_t* const names[] = {u"English", u"Deutsch", u"Français"};
        for (const char16_t* name : names)
            holder.AddLanguage(new TextLanguage(KelText(name)));
        std::mt19937 random(20231); // fixed start value: the same file every run
        for (int i = 0; i < textCount; ++i)
        {
            TextEntry* entry = new TextEntry(uint32_t(i * 3 + 1)); // numbers up to 60,000
            for (int language = 0; language < 3; ++language)
            {
                KelText text = KelText::Formatted(u"Text %i in language %i: ", i, language);
                const int extra = int(random() % 60);
                for (int c = 0; c < extra; ++c)
                    text += char16_t(u'a' + random() % 26);
                entry->SetText(language, text);
            }
            entry->DefaultText() = entry->Text(0);
            holder.AddEntry(entry);
        }
        if (!holder.Save(KelText(file.u16string().c_str())))
            std::fprintf(stderr, "cannot write %s\n", file.string().c_str());
        return file.string();
    }();
    return path;
}

// The dictionary the build makes from lang/ (96 texts in three languages).
const std::string shippedFile = KEL_SHIPPED_DICTIONARY;

size_t FileSize(const std::string& path)
{
    struct stat info = {};
    return ::stat(path.c_str(), &info) == 0 ? size_t(info.st_size) : 0;
}

// The file's bytes in fresh memory, the plainest way.
void ReadBytes(benchmark::State& state, const std::string& path)
{
    for (auto _ : state)
    {
        std::FILE* file = std::fopen(path.c_str(), "rb");
        struct stat info = {};
        if (!file || ::fstat(::fileno(file), &info) != 0)
        {
            state.SkipWithError("cannot read the file");
            break;
        }
        char* bytes = static_cast<char*>(std::malloc(size_t(info.st_size) + 1));
        benchmark::DoNotOptimize(std::fread(bytes, 1, size_t(info.st_size), file));
        benchmark::DoNotOptimize(bytes);
        std::free(bytes);
        (void)std::fclose(file); // read only: nothing to lose
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(FileSize(path)));
}

// The most heap a load takes, as a multiple of the file's size.
double PeakPerFileByte(const std::string& path, const char16_t* language)
{
    HeapCounter::Start();
    {
        TextHolder holder;
        holder.Load(KelText::FromUtf8(path), KelText(language), false);
    }
    const double peak = double(HeapCounter::Peak());
    HeapCounter::Stop();
    return peak / double(FileSize(path));
}

// A load into an empty dictionary, as at start-up: the previous load's
// dictionary is emptied while the clock stands.
void Load(benchmark::State& state, const std::string& path, const char16_t* language)
{
    const KelText file = KelText::FromUtf8(path);
    TextHolder holder;
    for (auto _ : state)
    {
        state.PauseTiming();
        holder.Clear();
        state.ResumeTiming();
        benchmark::DoNotOptimize(holder.Load(file, KelText(language), false));
    }
    if (!holder.IsLoaded())
        state.SkipWithError("the dictionary did not load");
    state.counters["peak_x_file"] = PeakPerFileByte(path, language);
}

// The least that loading one language must do beyond reading the bytes, on
// the file's bytes in memory: follow every text of every entry by its count
// and check each one's units (Archive::IsWideText, the check every load
// makes), trusting all sizes and keeping nothing. Read plus this is the
// floor of a one-language load that keeps its checks.
uint32_t U32(const char* at)
{
    uint32_t value = 0;
    std::memcpy(&value, at, 4);
    return value;
}

bool FollowTexts(const std::string& bytes)
{
    bool good = true;
    const char* at = bytes.data() + Archive::HeaderSize;
    auto text = [&](const char*& place)
    {
        const uint32_t count = U32(place);
        good &= count == 0 || Archive::IsWideText(place + 4, count);
        place += 4 + size_t(count) * 2;
    };
    for (uint32_t names = U32(at), i = (at += 4, 0); i < names; ++i)
        text(at);
    at += 4; // block boundary
    const uint32_t entries = U32(at);
    at += 4;
    for (uint32_t i = 0; i < entries; ++i)
    {
        const char* field = at + Archive::RecordHeaderSize;
        at = field + U32(at + 4);
        for (int own = 0; own < 3; ++own) // default text, note, extra
            text(field);
        field += 4 + 4 + 4 + 8 + 4 + 4; // boundary, number, category, data, attributes, boundary
        for (uint32_t texts = U32(field), t = (field += 4, 0); t < texts; ++t)
            text(field);
    }
    return good;
}

// The floor, and what the one-language load must do beyond it: copy the
// chosen language's texts (each with its terminator) into one pool made
// ready beforehand and note each one's place by number. No check of a size,
// no growth: the least a load that keeps one language's texts can do.
bool FollowAndKeepTexts(const std::string& bytes, int language, std::vector<char16_t>& pool,
                        std::vector<uint32_t>& index)
{
    bool good = true;
    size_t used = 0;
    const char* at = bytes.data() + Archive::HeaderSize;
    auto text = [&](const char*& place)
    {
        const uint32_t count = U32(place);
        good &= count == 0 || Archive::IsWideText(place + 4, count);
        place += 4 + size_t(count) * 2;
        return count;
    };
    for (uint32_t names = U32(at), i = (at += 4, 0); i < names; ++i)
        text(at);
    at += 4;
    const uint32_t entries = U32(at);
    at += 4;
    for (uint32_t i = 0; i < entries; ++i)
    {
        const char* field = at + Archive::RecordHeaderSize;
        at = field + U32(at + 4);
        for (int own = 0; own < 3; ++own)
            text(field);
        const uint32_t number = U32(field + 4);
        field += 4 + 4 + 4 + 8 + 4 + 4;
        for (uint32_t texts = U32(field), t = (field += 4, 0); t < texts; ++t)
        {
            const char* start = field + 4;
            const uint32_t count = text(field);
            if (int(t) == language && count > 0)
            {
                std::memcpy(pool.data() + used, start, size_t(count) * 2);
                index[number] = uint32_t(used) + 1;
                used += count;
            }
        }
    }
    return good;
}

void BM_FollowAndKeepTexts(benchmark::State& state)
{
    std::string bytes;
    if (std::FILE* file = std::fopen(DictionaryFile().c_str(), "rb"))
    {
        bytes.resize(FileSize(DictionaryFile()));
        bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
        (void)std::fclose(file); // read only: nothing to lose
    }
    std::vector<char16_t> pool(bytes.size() / 2);
    std::vector<uint32_t> index(textCount * 3 + 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(FollowAndKeepTexts(bytes, 1, pool, index));
    if (!FollowAndKeepTexts(bytes, 1, pool, index))
        state.SkipWithError("a text did not check");
}
BENCHMARK(BM_FollowAndKeepTexts)->Unit(benchmark::kMicrosecond);

void BM_FollowTexts(benchmark::State& state)
{
    std::string bytes;
    if (std::FILE* file = std::fopen(DictionaryFile().c_str(), "rb"))
    {
        bytes.resize(FileSize(DictionaryFile()));
        bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
        (void)std::fclose(file); // read only: nothing to lose
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(FollowTexts(bytes));
    if (!FollowTexts(bytes))
        state.SkipWithError("a text did not check");
}
BENCHMARK(BM_FollowTexts)->Unit(benchmark::kMicrosecond);

// The least that the editing load must do beyond reading the bytes: make the
// objects it keeps (an entry per number, each text in a string of its own),
// here by copying them from a dictionary already loaded, reading nothing.
void BM_MakeEditingObjects(benchmark::State& state)
{
    TextHolder loaded;
    loaded.Load(KelText::FromUtf8(DictionaryFile()), KelText(u"all"), false);
    PointerList<TextEntry> made;
    for (auto _ : state)
    {
        state.PauseTiming();
        made.Clear();
        state.ResumeTiming();
        made.Reserve(loaded.EntryCount());
        for (int32_t i = 0; i < loaded.EntryCount(); ++i)
        {
            const TextEntry& from = *loaded.Entry(i);
            TextEntry* entry = new TextEntry(from.Number());
            entry->DefaultText() = from.DefaultText();
            entry->EnsureTexts(from.TextCount());
            for (int32_t language = 0; language < from.TextCount(); ++language)
                entry->SetText(language, from.Text(language));
            made.Add(entry);
        }
    }
    if (made.Count() != textCount)
        state.SkipWithError("the dictionary did not load");
}
BENCHMARK(BM_MakeEditingObjects)->Unit(benchmark::kMicrosecond);

void BM_ReadFileBytes(benchmark::State& state)
{
    ReadBytes(state, DictionaryFile());
}
BENCHMARK(BM_ReadFileBytes)->Unit(benchmark::kMicrosecond);

void BM_LoadOneLanguage(benchmark::State& state)
{
    Load(state, DictionaryFile(), u"Deutsch");
}
BENCHMARK(BM_LoadOneLanguage)->Unit(benchmark::kMicrosecond);

void BM_LoadForEditing(benchmark::State& state)
{
    Load(state, DictionaryFile(), u"all");
}
BENCHMARK(BM_LoadForEditing)->Unit(benchmark::kMicrosecond);

void BM_ReadShippedBytes(benchmark::State& state)
{
    ReadBytes(state, shippedFile);
}
BENCHMARK(BM_ReadShippedBytes)->Unit(benchmark::kMicrosecond);

void BM_LoadShippedOneLanguage(benchmark::State& state)
{
    Load(state, shippedFile, u"Deutsch");
}
BENCHMARK(BM_LoadShippedOneLanguage)->Unit(benchmark::kMicrosecond);

void BM_TextByNumber(benchmark::State& state)
{
    TextHolder holder;
    holder.Load(KelText::FromUtf8(DictionaryFile()), KelText(u"Deutsch"), false);
    std::mt19937 random(7);
    int32_t numbers[1024];
    for (int32_t& number : numbers)
        number = int32_t(random() % (textCount * 3 + 100)); // some absent, some out of range
    size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(holder.Text(numbers[i++ & 1023]));
}
BENCHMARK(BM_TextByNumber);

void BM_TextByReference(benchmark::State& state)
{
    TextHolder holder;
    holder.Load(KelText::FromUtf8(DictionaryFile()), KelText(u"Deutsch"), false);
    for (auto _ : state)
        benchmark::DoNotOptimize(holder.ReferenceText(u"^30001"));
}
BENCHMARK(BM_TextByReference);
} // namespace

// An exception that escapes ends the benchmark with the runtime's message.
int main(int argc, char** argv) // NOLINT(bugprone-exception-escape)
{
    HeapCounter::KeepFreedMemory();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    const double read = reporter.Seconds("BM_ReadFileBytes");
    auto ratio = [&](const char* name, double reference)
    {
        const double seconds = reporter.Seconds(name);
        return seconds < 0 || reference <= 0 ? -1 : seconds / reference;
    };
    const double one = ratio("BM_LoadOneLanguage", read);
    const double all = ratio("BM_LoadForEditing", read);
    const double shipped =
        ratio("BM_LoadShippedOneLanguage", reporter.Seconds("BM_ReadShippedBytes"));
    const double follow = reporter.Seconds("BM_FollowTexts");
    const double floor = follow < 0 || read <= 0 ? -1 : (read + follow) / read;
    const double make = reporter.Seconds("BM_MakeEditingObjects");
    const double editingFloor = make < 0 || read <= 0 ? -1 : (read + make) / read;
    const double lookup = reporter.Seconds("BM_TextByNumber");
    std::printf("\nSummary: CPU time of a load / reading the file's bytes into fresh memory\n"
                "  20,000 texts (%zu bytes): one language %.2fx, all languages %.2fx\n"
                "  shipped dictionary (%zu bytes): one language %.2fx\n"
                "  floor of a one-language load (read, then follow and check every text): %.2fx\n"
                "  one-language load / its floor: %.2fx\n"
                "  floor of the editing load (read, then make the objects it keeps): %.2fx\n"
                "Peak heap of a load / file size: one language %.2fx, all languages %.2fx\n\n",
                FileSize(DictionaryFile()), one, all, FileSize(shippedFile), shipped, floor,
                one < 0 || floor < 0 ? -1 : one / floor, editingFloor,
                PeakPerFileByte(DictionaryFile(), u"Deutsch"),
                PeakPerFileByte(DictionaryFile(), u"all"));
    SummaryRow("dictionary: load one language, 20k texts / reading the file's bytes", one, 2.0,
               "x");
    SummaryRow("  its floor: read, then follow and check every text, keeping nothing", floor, 2.0,
               "x");
    const double keep = reporter.Seconds("BM_FollowAndKeepTexts");
    const double keepOverFloor =
        keep < 0 || follow < 0 || read <= 0 ? -1 : (read + keep) / (read + follow);
    // Beyond its floor, the load only copies the chosen texts and fills the index.
    SummaryRow("dictionary: load one language, 20k texts / its floor row",
               one < 0 || floor < 0 ? -1 : one / floor, 1.15, "x");
    SummaryRow(
        "  the floor row plus copying the chosen texts and filling the index / the floor row",
        keepOverFloor, 1.15, "x");
    SummaryRow("dictionary: load all languages, 20k texts / reading the file's bytes", all, 3.0,
               "x");
    SummaryRow("  its floor: read, then make the objects the editing load keeps", editingFloor, 3.0,
               "x");
    SummaryRow("dictionary: peak heap of a one-language load / file size",
               PeakPerFileByte(DictionaryFile(), u"Deutsch"), 1.2, "x");
    SummaryRow("dictionary: text by number", lookup < 0 ? -1 : lookup * 1e9, 5.0, "ns");
    benchmark::Shutdown();
    std::error_code error;
    std::filesystem::remove(TemporaryFile(), error);
    return 0;
}
