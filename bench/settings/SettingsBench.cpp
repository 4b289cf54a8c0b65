// Settings files: ReadAll and WriteAll beside inih's parse of the same file
// and beside reading the file's bytes, for files of 100, 10,000 and 100,000
// lines in ANSI, UTF-8 and UTF-16, with 10 and 1,000 entries; at 100,000
// lines also writes that insert many lines (a 30,000-item block, and that
// block with new sections and new keys besides), and the heap a loaded
// document holds per line. The files are made in a temporary folder; a
// summary table is printed at the end.
#include <benchmark/benchmark.h>
#include <ini.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/support/HeapCounter.h"
#include "bench/support/Summary.h"
#include "platform/FileSystem.h"
#include "settings/iniFile.h"
#include "text/EncodedText.h"

namespace
{
const int kSizes[] = {100, 10000, 100000};
const char* const kEncodings[] = {"ansi", "utf8", "utf16"};
const int kEntryCounts[] = {10, 1000};
// Writes that insert many lines into the largest files.
const int kBlockItems = 30000;
const int kNewSections = 100, kKeysPerNewSection = 10, kNewKeysInOldSections = 1000;

// How a write changes the file besides the 10 or 1,000 entries.
enum class Inserts
{
    None,  // only the entries (and an empty block)
    Block, // a block of kBlockItems items
    Mixed, // the block, new sections with keys, new keys in existing sections
};

struct SampleFile
{
    std::string name;                              // e.g. "utf8/10000"
    std::string path;                              // read by ReadAll, inih and the raw read
    std::string writePath;                         // rewritten by the WriteAll runs
    std::string inihPath;                          // what inih parses (UTF-8 for the UTF-16 file)
    std::string bytes;                             // the original content
    std::vector<std::u16string> sections;          // section names in file order
    std::vector<std::vector<std::u16string>> keys; // key names per section
    int lines = 0;
    // Heap held per line beyond the lines' own UTF-16 text: by the document
    // after Load, and at the most during a ReadAll with 1,000 entries.
    double heldPerLine = -1, peakPerLine = -1;
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
    if (std::fclose(file) != 0)
        std::abort();
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
            sample->lines = size;
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

    void Attach(iniFile& file, const SampleFile& sample, int count, Inserts inserts = Inserts::None)
    {
        static const char16_t* const noYes[] = {u"NO", u"YES"};
        const int extra = inserts == Inserts::Mixed
                              ? kNewSections * kKeysPerNewSection + kNewKeysInOldSections
                              : 0;
        texts.resize(size_t(count) + size_t(extra));
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
        if (inserts == Inserts::Mixed)
        {
            size_t next = size_t(count);
            for (int n = 0; n < kNewSections; ++n)
                for (int k = 0; k < kKeysPerNewSection; ++k)
                {
                    KelText* text = &texts[next++];
                    *text = (u"new value " + Number(k)).c_str();
                    file.Add(new iniString((u"ADDED SECTION " + Number(n)).c_str(),
                                           (u"ADDED" + Number(k)).c_str(), text, u""));
                }
            for (int k = 0; k < kNewKeysInOldSections; ++k)
            {
                KelText* text = &texts[next++];
                *text = u"added";
                const size_t s = size_t(k) * size_t(sections) / kNewKeysInOldSections;
                file.Add(new iniString(sample.sections[s].c_str(), (u"ADDED" + Number(k)).c_str(),
                                       text, u""));
            }
        }
        // The block in the first section: its items go in near the top of the file.
        file.Add(new iniEquBlock(sample.sections.front().c_str(), &names, &values, u"", u""));
    }

    // The block's items for the writes that insert many lines.
    void FillBlock()
    {
        names.Clear();
        values.Clear();
        for (int i = 0; i < kBlockItems; ++i)
        {
            names.Add(new KelText((u"ITEM" + Number(i)).c_str()));
            values.Add(new KelText((u"value of item " + Number(i)).c_str()));
        }
    }
};

// The heap a document holds per line beyond its text, after Load and at the
// most during a ReadAll with 1,000 entries (the bound variables included).
void MeasureMemory(SampleFile& sample)
{
    const KelText path = KelText::FromUtf8(sample.path);
    int64_t textBytes = 0;
    int32_t lines = 0;
    {
        HeapCounter::Start();
        iniFile file(path);
        file.Load();
        const int64_t held = HeapCounter::Live();
        HeapCounter::Stop();
        lines = file.lines.Count();
        for (int32_t i = 0; i < lines; ++i)
            textBytes += 2 * int64_t(file.lines[i].Length());
        sample.heldPerLine = double(held - textBytes) / lines;
    }
    HeapCounter::Start();
    {
        Bindings bindings;
        iniFile file(path);
        bindings.Attach(file, sample, 1000);
        file.ReadAll();
    }
    sample.peakPerLine = double(HeapCounter::Peak() - textBytes) / lines;
    HeapCounter::Stop();
}

void ReadAllBench(benchmark::State& state, const SampleFile* sample, int entries)
{
    Bindings bindings;
    iniFile file(KelText::FromUtf8(sample->path));
    bindings.Attach(file, *sample, entries);
    for (auto _ : state)
        benchmark::DoNotOptimize(file.ReadAll());
    state.counters["held_B_per_line"] = sample->heldPerLine;
    state.counters["peak_B_per_line"] = sample->peakPerLine;
}

void WriteAllBench(benchmark::State& state, const SampleFile* sample, int entries, Inserts inserts)
{
    Bindings bindings;
    WriteFile(sample->writePath, sample->bytes);
    iniFile file(KelText::FromUtf8(sample->writePath));
    bindings.Attach(file, *sample, entries, inserts);
    file.ReadAll();
    if (inserts != Inserts::None)
        bindings.FillBlock();
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
class SummaryReporter : public MedianReporter
{
public:
    void PrintSummary() const
    {
        auto at = [this](const std::string& name) { return Microseconds(name); };
        std::printf("\nSummary: CPU microseconds per call (steadier than wall time on a shared "
                    "machine);\ninih parses the UTF-8 form of the UTF-16 file. Heap: bytes per "
                    "line beyond the\nlines' UTF-16 text, held after Load and at the most during "
                    "ReadAll with 1,000 entries.\n");
        std::printf("%-13s %9s %9s %9s %9s %9s %9s %8s %8s %6s %6s\n", "file", "raw read", "inih",
                    "Read 10", "Write 10", "Read 1000", "Write1000", "R10/inih", "W10/inih", "held",
                    "peak");
        for (const auto& sample : samples)
        {
            const std::string& n = sample->name;
            if (at("inih/" + n) < 0 || at("ReadAll/" + n + "/10") < 0)
                continue; // filtered out of this run
            const double inih = at("inih/" + n);
            const double read10 = at("ReadAll/" + n + "/10");
            const double write10 = at("WriteAll/" + n + "/10");
            std::printf("%-13s %9.1f %9.1f %9.1f %9.1f %9.1f %9.1f %8.2f %8.2f %6.1f %6.1f\n",
                        n.c_str(), at("raw/" + n), inih, read10, write10,
                        at("ReadAll/" + n + "/1000"), at("WriteAll/" + n + "/1000"), read10 / inih,
                        write10 / inih, sample->heldPerLine, sample->peakPerLine);
        }
        std::printf("\nGrowth from 10,000 to 100,000 lines (x10 lines):\n");
        for (const char* encoding : kEncodings)
        {
            const std::string small = std::string(encoding) + "/10000";
            const std::string large = std::string(encoding) + "/100000";
            if (at("inih/" + small) < 0 || at("inih/" + large) < 0)
                continue;
            auto ratio = [&](const std::string& prefix, const std::string& suffix)
            {
                std::string larger = prefix, smaller = prefix;
                larger.append(large).append(suffix);
                smaller.append(small).append(suffix);
                return at(larger) / at(smaller);
            };
            std::printf("%-6s inih x%.1f  Read 10 x%.1f  Write 10 x%.1f  Read 1000 x%.1f  Write "
                        "1000 x%.1f\n",
                        encoding, ratio("inih/", ""), ratio("ReadAll/", "/10"),
                        ratio("WriteAll/", "/10"), ratio("ReadAll/", "/1000"),
                        ratio("WriteAll/", "/1000"));
        }

        std::printf("\nWrites that insert lines, 100,000-line files (the 10 entries besides):\n");
        std::printf("%-6s %10s %12s %12s %8s %8s\n", "file", "plain", "+block", "+mixed",
                    "block/pl", "mixed/pl");
        Worst block, mixed, read10, read1000, held, peak;
        for (const char* encoding : kEncodings)
        {
            const std::string n = std::string(encoding) + "/100000";
            const double plain = at("WriteAll/" + n + "/10");
            const double withBlock = at("WriteAll/" + n + "/10+block");
            const double withMixed = at("WriteAll/" + n + "/10+mixed");
            if (plain > 0 && withBlock > 0 && withMixed > 0)
            {
                std::printf("%-6s %10.1f %12.1f %12.1f %8.2f %8.2f\n", encoding, plain, withBlock,
                            withMixed, withBlock / plain, withMixed / plain);
                block.Add(encoding, withBlock / plain);
                mixed.Add(encoding, withMixed / plain);
            }
            const double inih = at("inih/" + n);
            if (inih > 0 && at("ReadAll/" + n + "/10") > 0)
            {
                read10.Add(encoding, at("ReadAll/" + n + "/10") / inih);
                read1000.Add(encoding, at("ReadAll/" + n + "/1000") / inih);
            }
            for (const auto& sample : samples)
                if (sample->name == n)
                {
                    held.Add(encoding, sample->heldPerLine);
                    peak.Add(encoding, sample->peakPerLine);
                }
        }
        std::printf("\n");
        SummaryRow("settings: WriteAll 100k lines + 30,000-item block / plain WriteAll" +
                       block.Which(),
                   block.value, 2.0, "x");
        SummaryRow("settings: WriteAll 100k lines + block, 100 new sections, 2,000 new keys / "
                   "plain" +
                       mixed.Which(),
                   mixed.value, 2.0, "x");
        SummaryRow("settings: ReadAll 100k lines, 10 entries / inih parse" + read10.Which(),
                   read10.value, 1.0, "x");
        SummaryRow("settings: ReadAll 100k lines, 1,000 entries / inih parse" + read1000.Which(),
                   read1000.value, 1.0, "x");
        SummaryRow("settings: heap held per line beyond its text, after Load" + held.Which(),
                   held.value, 80, "B");
        SummaryRow("settings: heap per line beyond its text, peak of ReadAll" + peak.Which(),
                   peak.value, 80, "B");
    }

private:
    // The largest of one measure over the encodings, and which one it was.
    struct Worst
    {
        double value = -1;
        std::string encoding;
        void Add(const char* name, double measured)
        {
            if (measured > value)
            {
                value = measured;
                encoding = name;
            }
        }
        std::string Which() const { return encoding.empty() ? "" : " (worst: " + encoding + ")"; }
    };
};
} // namespace

int main(int argc, char** argv)
{
    HeapCounter::KeepFreedMemory();
    MakeSamples();
    for (const auto& sample : samples)
        MeasureMemory(*sample);
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
                                         entries, Inserts::None)
                ->Unit(benchmark::kMicrosecond);
        }
        if (s->lines == kSizes[std::size(kSizes) - 1])
        {
            benchmark::RegisterBenchmark(("WriteAll/" + s->name + "/10+block").c_str(),
                                         WriteAllBench, s, 10, Inserts::Block)
                ->Unit(benchmark::kMicrosecond);
            benchmark::RegisterBenchmark(("WriteAll/" + s->name + "/10+mixed").c_str(),
                                         WriteAllBench, s, 10, Inserts::Mixed)
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
