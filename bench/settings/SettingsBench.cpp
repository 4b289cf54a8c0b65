// Settings files: ReadAll and WriteAll beside inih's parse of the same file
// and beside reading the file's bytes, for files of 100, 10,000 and 100,000
// lines in ANSI, UTF-8 and UTF-16, with 10 and 1,000 entries. The files are
// made in a temporary folder; a summary table is printed at the end.
#include <benchmark/benchmark.h>
#include <ini.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "settings/iniFile.h"
#include "text/EncodedText.h"
#include "text/FileSystem.h"

namespace
{
const int kSizes[] = {100, 10000, 100000};
const char* const kEncodings[] = {"ansi", "utf8", "utf16"};
const int kEntryCounts[] = {10, 1000};

struct SampleFile
{
    std::string name;                              // e.g. "utf8/10000"
    std::string path;                              // read by ReadAll, inih and the raw read
    std::string writePath;                         // rewritten by the WriteAll runs
    std::string inihPath;                          // what inih parses (UTF-8 for the UTF-16 file)
    std::string bytes;                             // the original content
    std::vector<std::u16string> sections;          // section names in file order
    std::vector<std::vector<std::u16string>> keys; // key names per section
};

std::filesystem::path folder;
std::vector<std::unique_ptr<SampleFile>> samples;

std::u16string Number(int value)
{
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

// The text of a file of `count` lines: a section every 40 lines, comments,
// blank lines, duplicate keys, a few 5,000-character lines and non-ASCII
// values that Windows-1252 can hold, so that all three encodings carry the
// same text.
KelText MakeText(int count, SampleFile& sample)
{
    KelText text;
    const int longLines[] = {count / 3, 2 * count / 3 + 1};
    for (int i = 0; i < count; ++i)
    {
        std::u16string line;
        if (i % 40 == 0)
        {
            sample.sections.push_back(u"SECTION " + Number(i / 40));
            sample.keys.emplace_back();
            line = u"[" + sample.sections.back() + u"]";
        }
        else if (i == longLines[0] || i == longLines[1])
            line = u"LONG" + Number(i) + u"=" + std::u16string(5000, u'x');
        else
        {
            switch ((i * 7919) % 20)
            {
            case 0:
                break; // blank
            case 1:
                line = u"; comment line " + Number(i);
                break;
            case 2:
                line = u"# another comment, kept as it is";
                break;
            case 3:
                line = u"DUP=" + Number(i); // the same key several times
                break;
            case 4:
            case 5:
                line = u"NAME" + Number(i % 40) + u" = Müller Straße café 5 €";
                break;
            default:
                sample.keys.back().push_back(u"KEY" + Number(i % 40));
                line = sample.keys.back().back() + u"=value " + Number(i) + u" ünd";
            }
        }
        text += (line + u"\r\n").c_str();
    }
    return text;
}

void WriteFile(const std::string& path, const std::string& bytes)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
        std::abort();
    std::fclose(file);
}

std::string Utf8WithMark(const KelText& text)
{
    std::string bytes("\xEF\xBB\xBF");
    bytes += text.ToUtf8();
    return bytes;
}

void MakeSamples()
{
    folder = std::filesystem::temp_directory_path() /
             ("kel-settings-bench-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    for (const int size : kSizes)
        for (const char* encoding : kEncodings)
        {
            auto sample = std::make_unique<SampleFile>();
            sample->name = std::string(encoding) + "/" + std::to_string(size);
            const KelText text = MakeText(size, *sample);
            const std::string stem =
                (folder / (std::string(encoding) + std::to_string(size))).string();
            sample->path = stem + ".ini";
            sample->writePath = stem + "-w.ini";
            sample->inihPath = sample->path;
            const std::string encoding_ = encoding;
            if (encoding_ == "ansi")
            {
                const EncodedText ansi(text, EncodedText::Ansi);
                sample->bytes.assign(ansi.Bytes(), size_t(ansi.Length()));
            }
            else if (encoding_ == "utf8")
                sample->bytes = Utf8WithMark(text);
            else
            {
                sample->bytes = "\xFF\xFE";
                for (char16_t unit : text.View())
                {
                    sample->bytes += char(unit & 0xFF);
                    sample->bytes += char(unit >> 8);
                }
                // inih reads 8-bit text: it gets the same content in UTF-8.
                sample->inihPath = stem + "-inih.ini";
                WriteFile(sample->inihPath, Utf8WithMark(text));
            }
            WriteFile(sample->path, sample->bytes);
            samples.push_back(std::move(sample));
        }
}

// Entries as a page would make them, spread over the file's sections; about
// one in ten names a key or a section the file lacks.
struct Bindings
{
    std::vector<KelText> texts;
    std::vector<int32_t> numbers;
    std::vector<double> reals;
    TextPtrArray names, values;

    void Attach(iniFile& file, const SampleFile& sample, int count)
    {
        static const char16_t* const noYes[] = {u"NO", u"YES"};
        texts.resize(size_t(count));
        numbers.resize(size_t(count));
        reals.resize(size_t(count));
        const int sections = int(sample.sections.size());
        for (int i = 0; i < count; ++i)
        {
            const int s = int((int64_t(i) * sections) / count);
            const auto& keys = sample.keys[size_t(s)];
            KelText section = sample.sections[size_t(s)].c_str();
            KelText key =
                keys.empty() ? KelText(u"KEY1") : KelText(keys[size_t(i) % keys.size()].c_str());
            if (i % 10 == 9)
                key = (u"MISSING" + Number(i)).c_str();
            if (i == count - 1)
                section = u"NEW SECTION";
            switch (i % 4)
            {
            case 0:
                file.Add(new iniString(section, key, &texts[size_t(i)], u""));
                break;
            case 1:
                file.Add(new iniInteger(section, key, &numbers[size_t(i)], 0));
                break;
            case 2:
                file.Add(new iniStrOpt(section, key, noYes, &numbers[size_t(i)], 2, 0));
                break;
            default:
                file.Add(new iniReal(section, key, &reals[size_t(i)], nullptr));
            }
        }
        file.Add(new iniEquBlock(sample.sections.back().c_str(), &names, &values, u"", u""));
    }
};

void ReadAllBench(benchmark::State& state, const SampleFile* sample, int entries)
{
    Bindings bindings;
    iniFile file(KelText::FromUtf8(sample->path));
    bindings.Attach(file, *sample, entries);
    for (auto _ : state)
        benchmark::DoNotOptimize(file.ReadAll());
}

void WriteAllBench(benchmark::State& state, const SampleFile* sample, int entries)
{
    Bindings bindings;
    WriteFile(sample->writePath, sample->bytes);
    iniFile file(KelText::FromUtf8(sample->writePath));
    bindings.Attach(file, *sample, entries);
    file.ReadAll();
    for (auto _ : state)
    {
        // Every pass starts from the original file (in its own encoding).
        state.PauseTiming();
        WriteFile(sample->writePath, sample->bytes);
        state.ResumeTiming();
        benchmark::DoNotOptimize(file.WriteAll());
    }
}

int CountPairs(void* user, const char*, const char*, const char*)
{
    ++*static_cast<long*>(user);
    return 1;
}

void InihBench(benchmark::State& state, const SampleFile* sample)
{
    for (auto _ : state)
    {
        long pairs = 0;
        benchmark::DoNotOptimize(ini_parse(sample->inihPath.c_str(), CountPairs, &pairs));
        benchmark::DoNotOptimize(pairs);
    }
}

void RawReadBench(benchmark::State& state, const SampleFile* sample)
{
    const KelText path = KelText::FromUtf8(sample->path);
    std::string bytes;
    for (auto _ : state)
        benchmark::DoNotOptimize(GetFileSystem().ReadBytes(path, bytes));
}

// Prints the runs as usual and keeps their CPU times for the summary.
class SummaryReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (!run.error_occurred && run.run_type == Run::RT_Iteration)
                times[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }

    void PrintSummary() const
    {
        auto at = [this](const std::string& name)
        {
            const auto found = times.find(name);
            return found == times.end() ? -1.0 : found->second;
        };
        std::printf("\nSummary: CPU microseconds per call (steadier than wall time on a shared "
                    "machine);\ninih parses the UTF-8 form of the UTF-16 file.\n");
        std::printf("%-13s %10s %10s %10s %10s %10s %10s %8s %8s\n", "file", "raw read", "inih",
                    "Read 10", "Write 10", "Read 1000", "Write 1000", "R10/inih", "W10/inih");
        for (const auto& sample : samples)
        {
            const std::string& n = sample->name;
            if (at("inih/" + n) < 0 || at("ReadAll/" + n + "/10") < 0)
                continue; // filtered out of this run
            const double inih = at("inih/" + n);
            const double read10 = at("ReadAll/" + n + "/10");
            const double write10 = at("WriteAll/" + n + "/10");
            std::printf("%-13s %10.1f %10.1f %10.1f %10.1f %10.1f %10.1f %8.2f %8.2f\n", n.c_str(),
                        at("raw/" + n), inih, read10, write10, at("ReadAll/" + n + "/1000"),
                        at("WriteAll/" + n + "/1000"), read10 / inih, write10 / inih);
        }
        std::printf("\nGrowth from 10,000 to 100,000 lines (x10 lines):\n");
        for (const char* encoding : kEncodings)
        {
            const std::string small = std::string(encoding) + "/10000";
            const std::string large = std::string(encoding) + "/100000";
            if (at("inih/" + small) < 0 || at("inih/" + large) < 0)
                continue;
            auto ratio = [&](const std::string& prefix, const std::string& suffix)
            { return at(prefix + large + suffix) / at(prefix + small + suffix); };
            std::printf("%-6s inih x%.1f  Read 10 x%.1f  Write 10 x%.1f  Read 1000 x%.1f  Write "
                        "1000 x%.1f\n",
                        encoding, ratio("inih/", ""), ratio("ReadAll/", "/10"),
                        ratio("WriteAll/", "/10"), ratio("ReadAll/", "/1000"),
                        ratio("WriteAll/", "/1000"));
        }
    }

private:
    std::map<std::string, double> times;
};
} // namespace

int main(int argc, char** argv)
{
    MakeSamples();
    for (const auto& sample : samples)
    {
        const SampleFile* s = sample.get();
        benchmark::RegisterBenchmark(("raw/" + s->name).c_str(), RawReadBench, s)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("inih/" + s->name).c_str(), InihBench, s)
            ->Unit(benchmark::kMicrosecond);
        for (const int entries : kEntryCounts)
        {
            std::string suffix("/");
            suffix += std::to_string(entries);
            benchmark::RegisterBenchmark(("ReadAll/" + s->name + suffix).c_str(), ReadAllBench, s,
                                         entries)
                ->Unit(benchmark::kMicrosecond);
            benchmark::RegisterBenchmark(("WriteAll/" + s->name + suffix).c_str(), WriteAllBench, s,
                                         entries)
                ->Unit(benchmark::kMicrosecond);
        }
    }
    benchmark::Initialize(&argc, argv);
    SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintSummary();
    benchmark::Shutdown();
    std::filesystem::remove_all(folder);
    return 0;
}
