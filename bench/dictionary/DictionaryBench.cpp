// Dictionary load and lookup times for a dictionary of 20,000 texts in three
// languages, written once to a temporary file, and for the shipped
// dictionary. Each load is set beside reading the same file's bytes into
// fresh memory (stat, malloc, fread: the least any load must do), so that the
// cost of decoding can be told apart from the cost of the disk; the heap a
// load takes at the most is set beside the file's size.
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
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

// The file's bytes read whole into fresh memory, the plainest way (stat,
// malloc, fread), handed to `use`; false when the file cannot be read.
template <typename Use>
bool WithFileBytes(const std::string& path, Use use)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    struct stat info = {};
    if (!file || ::fstat(::fileno(file), &info) != 0)
    {
        if (file)
            (void)std::fclose(file); // read only: nothing to lose
        return false;
    }
    char* bytes = static_cast<char*>(std::malloc(size_t(info.st_size) + 1));
    const bool good = bytes &&
                      std::fread(bytes, 1, size_t(info.st_size), file) == size_t(info.st_size) &&
                      use(bytes);
    std::free(bytes);
    (void)std::fclose(file);
    return good;
}

void ReadBytes(benchmark::State& state, const std::string& path)
{
    for (auto _ : state)
        if (!WithFileBytes(path,
                           [](char* bytes)
                           {
                               benchmark::DoNotOptimize(bytes);
                               return true;
                           }))
        {
            state.SkipWithError("cannot read the file");
            break;
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

// One text: its count, then its units, checked.
bool FollowText(const char*& place)
{
    const uint32_t count = U32(place);
    const bool good = count == 0 || Archive::IsWideText(place + 4, count);
    place += 4 + size_t(count) * 2;
    return good;
}

// The language names at the file's start; gives where the first entry
// record starts and how many there are.
const char* FollowNames(const char* bytes, uint32_t& entries, bool& good)
{
    const char* at = bytes + Archive::HeaderSize;
    for (uint32_t names = U32(at), i = (at += 4, 0); i < names; ++i)
        good &= FollowText(at);
    at += 4; // block boundary
    entries = U32(at);
    return at + 4;
}

// What a one-language load keeps: the chosen language's texts, each with its
// terminator, one after another in one pool made ready beforehand, and each
// one's place by number. No check of a size, no growth.
struct KeptTexts
{
    int language = 1;
    char16_t* pool = nullptr;
    uint32_t* index = nullptr;
    size_t used = 0;
};

// One entry record's texts; gives where the next record starts. When
// keeping, the chosen language's text is copied too and its place noted.
template <bool keep>
const char* FollowRecord(const char* at, bool& good, KeptTexts* kept)
{
    const char* field = at + Archive::RecordHeaderSize;
    const char* next = field + U32(at + 4);
    for (int own = 0; own < 3; ++own) // default text, note, extra
        good &= FollowText(field);
    const uint32_t number = U32(field + 4);
    field += 4 + 4 + 4 + 8 + 4 + 4; // boundary, number, category, data, attributes, boundary
    for (uint32_t texts = U32(field), t = (field += 4, 0); t < texts; ++t)
    {
        const char* start = field;
        good &= FollowText(field);
        if (keep && int(t) == kept->language && U32(start) > 0)
        {
            std::memcpy(kept->pool + kept->used, start + 4, size_t(U32(start)) * 2);
            kept->index[number] = uint32_t(kept->used) + 1;
            kept->used += U32(start);
        }
    }
    return next;
}

template <bool keep = false>
bool FollowTexts(const char* bytes, KeptTexts* kept = nullptr)
{
    bool good = true;
    uint32_t entries = 0;
    const char* at = FollowNames(bytes, entries, good);
    for (uint32_t i = 0; i < entries; ++i)
        at = FollowRecord<keep>(at, good, kept);
    return good;
}

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
        benchmark::DoNotOptimize(FollowTexts(bytes.data()));
    if (!FollowTexts(bytes.data()))
        state.SkipWithError("a text did not check");
}
BENCHMARK(BM_FollowTexts)->Unit(benchmark::kMicrosecond);

// CPU seconds this thread has used, the system's share (copying the file)
// included.
double ThreadSeconds()
{
    timespec now = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

// The floor of a one-language load as one piece of work: the file's bytes
// read whole into fresh memory (stat, malloc, fread), then every text
// followed and checked.
bool ReadWholeAndFollow(const std::string& path)
{
    return WithFileBytes(path, [](const char* bytes) { return FollowTexts(bytes); });
}

// The same floor read the way the load reads: the file in pieces of a
// megabyte into one window of fresh memory, each piece's whole records
// followed and checked while the piece is still in the cache, a record cut
// off at the window's end carried to its start for the next piece. Tighter
// than reading the whole file first, whose bytes have left the nearer caches
// by the time they are followed.
template <bool keep = false>
bool ReadInPiecesAndFollow(const std::string& path)
{
    constexpr size_t windowBytes = size_t(1024) * 1024;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file)
        return false;
    std::unique_ptr<char[]> window(new char[windowBytes]);
    // When keeping: a pool large enough for every text, and the index.
    std::unique_ptr<char16_t[]> pool(keep ? new char16_t[FileSize(path) / 2] : nullptr);
    std::vector<uint32_t> index(keep ? textCount * 3 + 1 : 0);
    KeptTexts kept{1, pool.get(), index.data()};
    size_t held = std::fread(window.get(), 1, windowBytes, file);
    bool good = held > Archive::HeaderSize;
    uint32_t entries = 0;
    const char* at = good ? FollowNames(window.get(), entries, good) : nullptr;
    for (uint32_t i = 0; good && i < entries;)
    {
        const char* end = window.get() + held;
        for (; i < entries && size_t(end - at) >= Archive::RecordHeaderSize &&
               U32(at + 4) <= size_t(end - at) - Archive::RecordHeaderSize;
             ++i)
            at = FollowRecord<keep>(at, good, &kept);
        if (i == entries)
            break;
        const size_t kept = size_t(end - at);
        std::memmove(window.get(), at, kept);
        const size_t got = std::fread(window.get() + kept, 1, windowBytes - kept, file);
        good &= got > 0; // a record larger than the window ends it too
        held = kept + got;
        at = window.get();
    }
    (void)std::fclose(file); // read only: nothing to lose
    return good;
}

// The one-language load, its floors and the least it could do, timed in
// turn with the order rotating every time, so that the machine's changing
// speed (other work, its caches) falls on all alike. Each ratio is the
// median of the ratios of one turn, so that a turn the machine slowed down
// does not count beyond its place: steadier than benchmarks run apart.
void BM_LoadBesideFloor(benchmark::State& state)
{
    const KelText file = KelText::FromUtf8(DictionaryFile());
    TextHolder holder;
    enum
    {
        Load,
        WholeFloor,
        PiecesFloor,
        PiecesKeep,
        Steps
    };
    std::vector<double> seconds[Steps];
    bool good = true;
    int first = 0;
    for (auto _ : state)
    {
        for (int step = 0; step < Steps; ++step)
        {
            const int what = (first + step) % Steps;
            holder.Clear();
            const double start = ThreadSeconds();
            switch (what)
            {
            case Load:
                good &= holder.Load(file, KelText(u"Deutsch"), false);
                break;
            case WholeFloor:
                good &= ReadWholeAndFollow(DictionaryFile());
                break;
            case PiecesFloor:
                good &= ReadInPiecesAndFollow(DictionaryFile());
                break;
            default:
                good &= ReadInPiecesAndFollow<true>(DictionaryFile());
                break;
            }
            seconds[what].push_back(ThreadSeconds() - start);
        }
        first = (first + 1) % Steps;
    }
    if (!good || seconds[Load].empty())
    {
        state.SkipWithError("the dictionary did not load");
        return;
    }
    auto median = [](std::vector<double> values)
    {
        std::nth_element(values.begin(), values.begin() + std::ptrdiff_t(values.size() / 2),
                         values.end());
        return values[values.size() / 2];
    };
    auto ratio = [&](int what, int reference)
    {
        std::vector<double> ratios;
        ratios.reserve(seconds[what].size());
        for (size_t turn = 0; turn < seconds[what].size(); ++turn)
            ratios.push_back(seconds[what][turn] / std::max(seconds[reference][turn], 1e-9));
        return median(ratios);
    };
    state.counters["load_us"] = median(seconds[Load]) * 1e6;
    state.counters["floor_us"] = median(seconds[WholeFloor]) * 1e6;
    state.counters["pieces_us"] = median(seconds[PiecesFloor]) * 1e6;
    state.counters["keep_us"] = median(seconds[PiecesKeep]) * 1e6;
    state.counters["load_per_floor"] = ratio(Load, WholeFloor);
    state.counters["load_per_pieces"] = ratio(Load, PiecesFloor);
    state.counters["keep_per_pieces"] = ratio(PiecesKeep, PiecesFloor);
}
BENCHMARK(BM_LoadBesideFloor)->Unit(benchmark::kMicrosecond);

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
                "  one-language load / that floor: %.2fx apart, %.2fx timed in turn; / the floor "
                "read in the load's pieces: %.2fx\n"
                "  floor of the editing load (read, then make the objects it keeps): %.2fx\n"
                "Peak heap of a load / file size: one language %.2fx, all languages %.2fx\n\n",
                FileSize(DictionaryFile()), one, all, FileSize(shippedFile), shipped, floor,
                one < 0 || floor < 0 ? -1 : one / floor,
                reporter.Counter("BM_LoadBesideFloor", "load_per_floor"),
                reporter.Counter("BM_LoadBesideFloor", "load_per_pieces"), editingFloor,
                PeakPerFileByte(DictionaryFile(), u"Deutsch"),
                PeakPerFileByte(DictionaryFile(), u"all"));
    SummaryRow("dictionary: load one language, 20k texts / reading the file's bytes", one, NoTarget,
               "x");
    SummaryRow("  its floor: read, then follow and check every text, keeping nothing", floor,
               NoTarget, "x");
    // Beyond its floor, the load only has to copy the chosen texts and fill
    // the index (and check the sizes the floor trusts). All timed in turn,
    // rather than taken from the benchmarks above, which run apart.
    auto inTurn = [&](const char* counter)
    { return reporter.Counter("BM_LoadBesideFloor", counter); };
    SummaryRow("dictionary: load one language, 20k texts / its floor row (read in the load's "
               "1 MB pieces, follow and check every text), timed in turn",
               inTurn("load_per_pieces"), 1.15, "x");
    SummaryRow("  that floor plus copying the chosen texts and filling the index / that floor",
               inTurn("keep_per_pieces"), 1.15, "x");
    SummaryRow("  the load / the floor read whole before it is followed, timed in turn",
               inTurn("load_per_floor"), NoTarget, "x");
    // The editing load serves only the dictionary tool: reported, not bounded.
    SummaryRow("dictionary: load all languages, 20k texts / reading the file's bytes", all,
               NoTarget, "x");
    SummaryRow("  its floor: read, then make the objects the editing load keeps", editingFloor,
               NoTarget, "x");
    SummaryRow("dictionary: peak heap of a one-language load / file size",
               PeakPerFileByte(DictionaryFile(), u"Deutsch"), 1.2, "x");
    SummaryRow("dictionary: text by number", lookup < 0 ? -1 : lookup * 1e9, 5.0, "ns");
    benchmark::Shutdown();
    std::error_code error;
    std::filesystem::remove(TemporaryFile(), error);
    return 0;
}
