#include "tools/dictool/LangSource.h"

#include <algorithm>
#include <set>

#include "platform/FileSystem.h"
#include "text/TextHolder.h"

namespace
{
const char* const englishName = "English";

std::string Where(const std::string& fileName, size_t line)
{
    return fileName + ":" + std::to_string(line) + ": ";
}

// Decimal digits without a leading zero (except "0" itself), at most `limit`.
bool ParseNumber(const std::string& digits, uint64_t limit, uint32_t& value)
{
    if (digits.empty() || digits.size() > 10 || (digits.size() > 1 && digits[0] == '0'))
        return false;
    uint64_t result = 0;
    for (char ch : digits)
    {
        if (ch < '0' || ch > '9')
            return false;
        result = result * 10 + uint64_t(ch - '0');
    }
    if (result > limit)
        return false;
    value = uint32_t(result);
    return true;
}

bool Unescape(const std::string& escaped, std::string& plain)
{
    plain.clear();
    for (size_t i = 0; i < escaped.size(); ++i)
    {
        const char ch = escaped[i];
        if (ch != '\\')
        {
            plain += ch;
            continue;
        }
        if (++i == escaped.size())
            return false;
        switch (escaped[i])
        {
        case 'n':
            plain += '\n';
            break;
        case 't':
            plain += '\t';
            break;
        case 'r':
            plain += '\r';
            break;
        case '\\':
            plain += '\\';
            break;
        default:
            return false;
        }
    }
    return true;
}

std::string Escape(const KelText& text)
{
    std::string escaped;
    for (char ch : text.ToUtf8())
    {
        switch (ch)
        {
        case '\n':
            escaped += "\\n";
            break;
        case '\t':
            escaped += "\\t";
            break;
        case '\r':
            escaped += "\\r";
            break;
        case '\\':
            escaped += "\\\\";
            break;
        default:
            escaped += ch;
        }
    }
    return escaped;
}

// A text from a field of a line: escapes resolved, and valid UTF-8.
bool FieldText(const std::string& field, KelText& text)
{
    std::string plain;
    if (!Unescape(field, plain))
        return false;
    text = KelText::FromUtf8(plain);
    return text.ToUtf8() == plain; // invalid UTF-8 would have become U+FFFD
}

bool HeaderLine(const std::string& line, const char* key, std::string& value)
{
    const std::string prefix = std::string("@") + key + "\t";
    if (!line.starts_with(prefix))
        return false;
    value = line.substr(prefix.size());
    return true;
}

bool IsEnglish(const LangSource& source)
{
    return source.name == KelText::FromUtf8(englishName);
}
} // namespace

std::string PathText(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

KelText PathKelText(const std::filesystem::path& path)
{
    return KelText(path.u16string().c_str());
}

bool ParseLangSource(const std::string& fileName, const std::string& bytes, LangSource& source,
                     Problems& problems)
{
    const size_t before = problems.size();
    source = LangSource();
    source.fileName = fileName;
    if (bytes.starts_with("\xEF\xBB\xBF"))
        problems.push_back(fileName +
                           ": starts with a byte-order mark; save it as UTF-8 without one");
    if (bytes.empty() || bytes.back() != '\n')
        problems.push_back(fileName + ": the last line must end with a line feed");
    if (bytes.find('\r') != std::string::npos)
        problems.push_back(fileName +
                           ": holds carriage returns; lines must end with a line feed only");
    if (problems.size() != before)
        return false;

    std::vector<std::string> lines;
    for (size_t start = 0; start < bytes.size();)
    {
        const size_t end = bytes.find('\n', start);
        lines.push_back(bytes.substr(start, end - start));
        start = end + 1;
    }

    const char* const keys[] = {"language", "langid", "codepage"};
    for (size_t i = 0; i < 3; ++i)
    {
        std::string value;
        if (i >= lines.size() || !HeaderLine(lines[i], keys[i], value))
        {
            problems.push_back(Where(fileName, i + 1) + "expected the header line @" + keys[i] +
                               "<TAB>value");
            return false;
        }
        if (i == 0 && (!FieldText(value, source.name) || source.name.IsEmpty()))
            problems.push_back(Where(fileName, 1) +
                               "the language name is empty or not valid UTF-8");
        if (i == 1 && !ParseNumber(value, 0xFFFF, source.languageId))
            problems.push_back(Where(fileName, 2) +
                               "the language identifier must be a number below 65536");
        if (i == 2 && !ParseNumber(value, 0xFFFF, source.codePage))
            problems.push_back(Where(fileName, 3) + "the code page must be a number below 65536");
    }

    int64_t previous = -1;
    for (size_t i = 3; i < lines.size(); ++i)
    {
        const std::string& line = lines[i];
        const size_t tab = line.find('\t');
        uint32_t number = 0;
        KelText text;
        if (tab == std::string::npos || !ParseNumber(line.substr(0, tab), UINT32_MAX, number))
        {
            problems.push_back(Where(fileName, i + 1) +
                               "expected number<TAB>text (a number from 0 to 4294967295 without "
                               "leading zeros)");
            continue;
        }
        if (!FieldText(line.substr(tab + 1), text))
            problems.push_back(Where(fileName, i + 1) +
                               "the text is not valid UTF-8 or has an escape other than \\n \\t "
                               "\\r \\\\");
        else if (text.IsEmpty())
            problems.push_back(Where(fileName, i + 1) + "the text is empty (leave the line out)");
        if (int64_t(number) <= previous)
            problems.push_back(Where(fileName, i + 1) + "text " + std::to_string(number) +
                               " is out of order or repeated; numbers must ascend");
        previous = std::max<int64_t>(previous, number);
        source.texts[number] = text;
    }
    return problems.size() == before;
}

std::string FormatLangSource(const LangSource& source)
{
    std::string out = "@language\t" + Escape(source.name) + "\n";
    out += "@langid\t" + std::to_string(source.languageId) + "\n";
    out += "@codepage\t" + std::to_string(source.codePage) + "\n";
    for (const auto& [number, text] : source.texts)
        out += std::to_string(number) + "\t" + Escape(text) + "\n";
    return out;
}

bool ReadLangFolder(const std::filesystem::path& folder, std::vector<LangSource>& sources,
                    Problems& problems)
{
    const size_t before = problems.size();
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& item : std::filesystem::directory_iterator(folder, error))
        if (item.is_regular_file() && item.path().extension() == ".txt")
            files.push_back(item.path());
    if (error)
    {
        problems.push_back("cannot read the folder " + PathText(folder));
        return false;
    }
    std::sort(files.begin(), files.end());
    sources.clear();
    for (const auto& file : files)
    {
        std::string bytes;
        const std::string name = PathText(file.filename());
        if (!GetFileSystem().ReadBytes(PathKelText(file), bytes))
        {
            problems.push_back(name + ": cannot be read");
            continue;
        }
        LangSource source;
        if (ParseLangSource(name, bytes, source, problems))
            sources.push_back(std::move(source));
    }
    std::stable_partition(sources.begin(), sources.end(), IsEnglish);
    if (problems.size() == before && (sources.empty() || !IsEnglish(sources.front())))
        problems.push_back(std::string("no language file names the language ") + englishName +
                           ", whose texts are the default texts");
    for (size_t i = 1; i < sources.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            if (sources[i].name == sources[j].name)
                problems.push_back(sources[i].fileName + ": the language " +
                                   sources[i].name.ToUtf8() + " is also in " + sources[j].fileName);
    return problems.size() == before;
}

bool BuildDictionary(const std::vector<LangSource>& sources, TextHolder& holder, Problems& problems)
{
    if (sources.empty() || !IsEnglish(sources.front()))
    {
        problems.push_back(std::string("the first language must be ") + englishName);
        return false;
    }
    std::set<uint32_t> numbers;
    for (const LangSource& source : sources)
    {
        TextLanguage* language = new TextLanguage(source.name);
        language->Description() = KelText::FromUtf8(source.fileName);
        language->SetAttributes(source.languageId, source.codePage);
        holder.AddLanguage(language);
        for (const auto& item : source.texts)
            numbers.insert(item.first);
    }
    for (uint32_t number : numbers)
    {
        TextEntry* entry = new TextEntry(number);
        for (size_t i = 0; i < sources.size(); ++i)
        {
            const auto found = sources[i].texts.find(number);
            if (found != sources[i].texts.end())
                entry->SetText(int32_t(i), found->second);
        }
        entry->EnsureTexts(int32_t(sources.size()));
        entry->DefaultText() = entry->Text(0);
        holder.AddEntry(entry);
    }
    return true;
}

std::vector<LangSource> SourcesOf(const TextHolder& holder)
{
    std::vector<LangSource> sources;
    for (int32_t i = 0; i < holder.LanguageObjectCount(); ++i)
    {
        const TextLanguage* language = holder.Language(i);
        LangSource source;
        if (language)
        {
            source.name = language->Name();
            source.fileName = language->Description().ToUtf8();
            source.languageId = language->FirstAttribute();
            source.codePage = language->SecondAttribute();
        }
        if (source.fileName.empty() || source.fileName.find_first_of("/\\:") != std::string::npos)
            source.fileName = "Language" + std::to_string(i + 1) + ".txt";
        for (int32_t e = 0; e < holder.EntryCount(); ++e)
        {
            const TextEntry* entry = holder.Entry(e);
            if (entry && !entry->Text(i).IsEmpty())
                source.texts[entry->Number()] = entry->Text(i);
        }
        sources.push_back(std::move(source));
    }
    return sources;
}

std::string PlaceholdersOf(const KelText& text)
{
    std::string letters;
    const std::u16string_view units = text.View();
    for (size_t i = 0; i < units.size(); ++i)
    {
        if (units[i] != u'%')
            continue;
        size_t j = i + 1;
        while (j < units.size() &&
               std::u16string_view(u"-+ #0123456789.*hlLIwzjt").find(units[j]) !=
                   std::u16string_view::npos)
            ++j;
        if (j == units.size())
            break;
        if (units[j] != u'%')
            letters += units[j] == u'd' ? 'i' : char(units[j] < 0x80 ? units[j] : '?');
        i = j;
    }
    return letters;
}

size_t CheckSources(const std::vector<LangSource>& sources, Problems& problems)
{
    const size_t before = problems.size();
    std::set<uint32_t> all;
    for (const LangSource& source : sources)
        for (const auto& item : source.texts)
            all.insert(item.first);
    const LangSource* english = nullptr;
    for (const LangSource& source : sources)
        if (IsEnglish(source))
            english = &source;

    for (const LangSource& source : sources)
    {
        const std::string label = source.fileName + " (" + source.name.ToUtf8() + ")";
        std::string missing;
        size_t missingCount = 0;
        for (uint32_t number : all)
            if (!source.texts.count(number))
            {
                // Appended in two steps: GCC 12 warns falsely about " " + std::string.
                missing += ' ';
                missing += std::to_string(number);
                ++missingCount;
            }
        if (missingCount)
        {
            std::string problem = label;
            problem.append(": lacks ").append(std::to_string(missingCount)).append(" text");
            problem.append(missingCount == 1 ? "" : "s").append(":").append(missing);
            problems.push_back(std::move(problem));
        }
        if (!english || &source == english)
            continue;
        for (const auto& [number, text] : source.texts)
        {
            const auto reference = english->texts.find(number);
            if (reference == english->texts.end())
                continue;
            const std::string own = PlaceholdersOf(text);
            const std::string wanted = PlaceholdersOf(reference->second);
            if (own != wanted)
            {
                std::string problem = label;
                problem.append(": text ").append(std::to_string(number));
                problem.append(" has the placeholders \"").append(own);
                problem.append("\" where English has \"").append(wanted).append("\"");
                problems.push_back(std::move(problem));
            }
        }
    }
    if (!english)
        problems.emplace_back("no language is named English");
    return problems.size() - before;
}
