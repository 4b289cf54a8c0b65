// dictool: builds the dictionary file from the language sources in lang/,
// dumps a dictionary file back into sources, and checks a dictionary for
// texts that a language lacks.
//
//   dictool build <lang-folder> <out.ary> [--narrow]
//   dictool dump  <in.ary> <out-folder>
//   dictool check <lang-folder | in.ary>
//
// Exit codes: 0 done, 1 a problem was found (listed on stderr), 2 bad usage.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "text/Archive.h"
#include "text/TextHolder.h"
#include "tools/dictool/LangSource.h"

namespace
{
namespace fs = std::filesystem;

int Usage()
{
    std::fputs("usage: dictool build <lang-folder> <out.ary> [--narrow]\n"
               "       dictool dump  <in.ary> <out-folder>\n"
               "       dictool check <lang-folder | in.ary>\n",
               stderr);
    return 2;
}

int Report(const Problems& problems)
{
    for (const std::string& problem : problems)
        std::fprintf(stderr, "%s\n", problem.c_str());
    return problems.empty() ? 0 : 1;
}

size_t TextCount(const std::vector<LangSource>& sources)
{
    size_t most = 0;
    for (const LangSource& source : sources)
        most = std::max(most, source.texts.size());
    return most;
}

bool LoadDictionary(const fs::path& file, TextHolder& holder, Problems& problems)
{
    if (holder.Load(PathKelText(file), KelText(u"all"), false))
        return true;
    problems.push_back(PathText(file) + ": cannot be read, or is not an undamaged dictionary file");
    return false;
}

int Build(const fs::path& folder, const fs::path& output, bool narrow)
{
    Problems problems;
    std::vector<LangSource> sources;
    TextHolder holder;
    if (!ReadLangFolder(folder, sources, problems) || !BuildDictionary(sources, holder, problems))
        return Report(problems);
    std::error_code error;
    if (output.has_parent_path())
        fs::create_directories(output.parent_path(), error);
    const uint32_t flags = narrow ? Archive::NarrowTexts | Archive::NarrowUtf8 : 0;
    if (!holder.Save(PathKelText(output), flags))
    {
        problems.push_back(PathText(output) + ": cannot be written");
        return Report(problems);
    }
    std::printf("%s: %zu languages, %d texts\n", PathText(output).c_str(), sources.size(),
                holder.EntryCount());
    return 0;
}

int Dump(const fs::path& input, const fs::path& folder)
{
    Problems problems;
    TextHolder holder;
    if (!LoadDictionary(input, holder, problems))
        return Report(problems);
    std::error_code error;
    fs::create_directories(folder, error);
    for (const LangSource& source : SourcesOf(holder))
    {
        const std::string bytes = FormatLangSource(source);
        const fs::path file =
            folder / fs::path(std::u8string(source.fileName.begin(), source.fileName.end()));
        if (!GetFileSystem().WriteBytes(PathKelText(file), bytes.data(), bytes.size()))
            problems.push_back(PathText(file) + ": cannot be written");
    }
    return Report(problems);
}

int Check(const fs::path& target)
{
    Problems problems;
    std::vector<LangSource> sources;
    std::error_code error;
    if (fs::is_directory(target, error))
    {
        if (!ReadLangFolder(target, sources, problems))
            return Report(problems);
    }
    else
    {
        TextHolder holder;
        if (!LoadDictionary(target, holder, problems))
            return Report(problems);
        sources = SourcesOf(holder);
    }
    if (CheckSources(sources, problems) == 0)
        std::printf("%s: %zu languages, %zu texts each, complete\n", PathText(target).c_str(),
                    sources.size(), TextCount(sources));
    return Report(problems);
}

int Run(const std::vector<fs::path>& args)
{
    if (args.empty())
        return Usage();
    const fs::path& command = args[0];
    if (command == "build" && (args.size() == 3 || (args.size() == 4 && args[3] == "--narrow")))
        return Build(args[1], args[2], args.size() == 4);
    if (command == "dump" && args.size() == 3)
        return Dump(args[1], args[2]);
    if (command == "check" && args.size() == 2)
        return Check(args[1]);
    return Usage();
}
} // namespace

#ifdef _WIN32
int wmain(int argc, wchar_t** argv)
#else
int main(int argc, char** argv)
#endif
{
    std::vector<fs::path> args;
    for (int i = 1; i < argc; ++i)
        args.emplace_back(argv[i]);
    return Run(args);
}
