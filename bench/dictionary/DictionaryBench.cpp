// Dictionary load and lookup times for a dictionary of 20,000 texts in three
// languages, written once to a temporary file, and for the shipped
// dictionary. Each load is set beside reading the same file's bytes into
// fresh memory (stat, malloc, fread: the least any load must do), so that the
// cost of decoding can be told apart from the cost of the disk; the heap a
// load takes at the most is set beside the file's size.
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

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
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 ? size_t(info.st_size) : 0;
}

// The file's bytes in fresh memory, the plainest way.
void ReadBytes(benchmark::State& state, const std::string& path)
{
    for (auto _ : state)
    {
        std::FILE* file = std::fopen(path.c_str(), "rb");
        struct stat info;
        if (!file || ::fstat(::fileno(file), &info) != 0)
        {
            state.SkipWithError("cannot read the file");
            break;
        }
        char* bytes = static_cast<char*>(std::malloc(size_t(info.st_size) + 1));
        benchmark::DoNotOptimize(std::fread(bytes, 1, size_t(info.st_size), file));
        benchmark::DoNotOptimize(bytes);
        std::free(bytes);
        std::fclose(file);
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

int main(int argc, char** argv)
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
    const double lookup = reporter.Seconds("BM_TextByNumber");
    std::printf("\nSummary: CPU time of a load / reading the file's bytes into fresh memory\n"
                "  20,000 texts (%zu bytes): one language %.2fx, all languages %.2fx\n"
                "  shipped dictionary (%zu bytes): one language %.2fx\n"
                "Peak heap of a load / file size: one language %.2fx, all languages %.2fx\n\n",
                FileSize(DictionaryFile()), one, all, FileSize(shippedFile), shipped,
                PeakPerFileByte(DictionaryFile(), u"Deutsch"),
                PeakPerFileByte(DictionaryFile(), u"all"));
    SummaryRow("dictionary: load one language, 20k texts / reading the file's bytes", one, 2.0,
               "x");
    SummaryRow("dictionary: load all languages, 20k texts / reading the file's bytes", all, 3.0,
               "x");
    SummaryRow("dictionary: peak heap of a one-language load / file size",
               PeakPerFileByte(DictionaryFile(), u"Deutsch"), 1.2, "x");
    SummaryRow("dictionary: text by number", lookup < 0 ? -1 : lookup * 1e9, 5.0, "ns");
    benchmark::Shutdown();
    std::error_code error;
    std::filesystem::remove(TemporaryFile(), error);
    return 0;
}
