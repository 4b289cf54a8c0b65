#pragma once
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "text/AppServices.h"
#include "text/FileSystem.h"
#include "text/KelText.h"

using Lines = std::vector<std::u16string>;

// Files kept in memory, installed for the lifetime of the object. With
// failNextWrite the next write stores half of its bytes and fails (a full disk).
// Read piece by piece, a file comes in pieces of at most `piece` bytes.
class MemoryFiles : public FileSystem
{
public:
    MemoryFiles() : previous(SetFileSystem(this)) {}
    ~MemoryFiles() override { SetFileSystem(previous); }
    bool ReadBytes(const KelText& path, std::string& bytes) override
    {
        const auto found = files.find(std::u16string(path.View()));
        bytes = found == files.end() ? std::string() : found->second;
        return found != files.end() && !unreadable;
    }
    bool WriteBytes(const KelText& path, const void* data, size_t size) override
    {
        ++writes;
        const bool fail = failNextWrite;
        failNextWrite = false;
        files[std::u16string(path.View())].assign(static_cast<const char*>(data),
                                                  fail ? size / 2 : size);
        return !fail;
    }
    bool Exists(const KelText& path) override { return files.count(std::u16string(path.View())); }
    std::unique_ptr<FileReader> OpenReader(const KelText& path) override
    {
        std::string bytes;
        if (!ReadBytes(path, bytes))
            return nullptr;
        return std::make_unique<MemoryReader>(std::move(bytes), piece);
    }

    std::map<std::u16string, std::string> files;
    bool failNextWrite = false;
    bool unreadable = false;
    int writes = 0;
    size_t piece = SIZE_MAX;

private:
    FileSystem* previous;
};

// Records the errors shown to the user.
class RecordedReports : public AppServices
{
public:
    RecordedReports() : previous(SetAppServices(this)) {}
    ~RecordedReports() override { SetAppServices(previous); }
    void ReportError(const KelText& message, const KelText& context) override
    {
        reports.push_back({std::u16string(message.View()), std::u16string(context.View())});
    }
    std::vector<std::pair<std::u16string, std::u16string>> reports;

private:
    AppServices* previous;
};

// The form iniFile writes: UTF-16LE with its mark, every line ended by CR LF.
inline std::string Utf16File(const Lines& lines)
{
    std::u16string text = u"\uFEFF";
    for (const std::u16string& line : lines)
        text += line + u"\r\n";
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2);
}

// The lines of a file in that form; fails the test when the form is wrong.
inline Lines LinesOf(const std::string& bytes)
{
    std::u16string text(bytes.size() / 2, u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * 2);
    Lines lines;
    EXPECT_TRUE(bytes.size() % 2 == 0 && text.starts_with(u"\uFEFF") &&
                (text.size() == 1 || text.ends_with(u"\r\n")));
    for (size_t start = 1, end; (end = text.find(u"\r\n", start)) != text.npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    return lines;
}
