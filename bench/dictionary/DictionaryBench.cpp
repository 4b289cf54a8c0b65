// Dictionary load and lookup times for a dictionary of 20,000 texts in three
// languages, written once to a temporary file. The load benchmarks also show
// the time to read the same file's bytes (file_read_us), so that the cost of
// decoding can be told apart from the cost of the disk.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "text/FileSystem.h"
#include "text/TextHolder.h"

namespace
{
constexpr int textCount = 20000;

std::filesystem::path TemporaryFile()
{
    return std::filesystem::temp_directory_path() / "kel-bench-diction.ary";
}

const KelText& DictionaryFile()
{
    static const KelText path = []
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
        const KelText target(file.u16string().c_str());
        if (!holder.Save(target))
            std::fprintf(stderr, "cannot write %s\n", file.string().c_str());
        return target;
    }();
    return path;
}

double ReadMicroseconds()
{
    double best = 1e30;
    for (int run = 0; run < 20; ++run)
    {
        const auto start = std::chrono::steady_clock::now();
        std::string bytes;
        GetFileSystem().ReadBytes(DictionaryFile(), bytes);
        benchmark::DoNotOptimize(bytes.data());
        const std::chrono::duration<double, std::micro> took =
            std::chrono::steady_clock::now() - start;
        best = std::min(best, took.count());
    }
    return best;
}

void BM_ReadFileBytes(benchmark::State& state)
{
    std::string bytes;
    for (auto _ : state)
    {
        GetFileSystem().ReadBytes(DictionaryFile(), bytes);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes.size()));
}
BENCHMARK(BM_ReadFileBytes)->Unit(benchmark::kMicrosecond);

void Load(benchmark::State& state, const char16_t* language)
{
    const KelText& file = DictionaryFile();
    TextHolder holder;
    for (auto _ : state)
        benchmark::DoNotOptimize(holder.Load(file, KelText(language), false));
    if (!holder.IsLoaded())
        state.SkipWithError("the dictionary did not load");
    state.counters["file_read_us"] = ReadMicroseconds();
    state.counters["texts"] = double(textCount);
}

void BM_LoadOneLanguage(benchmark::State& state)
{
    Load(state, u"Deutsch");
}
BENCHMARK(BM_LoadOneLanguage)->Unit(benchmark::kMicrosecond);

void BM_LoadForEditing(benchmark::State& state)
{
    Load(state, u"all");
}
BENCHMARK(BM_LoadForEditing)->Unit(benchmark::kMicrosecond);

void BM_TextByNumber(benchmark::State& state)
{
    TextHolder holder;
    holder.Load(DictionaryFile(), KelText(u"Deutsch"), false);
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
    holder.Load(DictionaryFile(), KelText(u"Deutsch"), false);
    for (auto _ : state)
        benchmark::DoNotOptimize(holder.ReferenceText(u"^30001"));
}
BENCHMARK(BM_TextByReference);
} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::error_code error;
    std::filesystem::remove(TemporaryFile(), error);
    return 0;
}
