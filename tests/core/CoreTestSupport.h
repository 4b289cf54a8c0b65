#pragma once
// Stand-ins for the platform that the portable-layer tests install for their
// lifetime: files kept in memory and a record of what the application is told.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "text/AppServices.h"
#include "text/FileSystem.h"
#include "text/KelText.h"

// Files kept in memory. With failNextWrite the next write stores half of its
// bytes and fails (a full disk); with unreadable every read fails. Read piece
// by piece, a file comes in pieces of at most `piece` bytes.
class MemoryFiles : public FileSystem
{
public:
    explicit MemoryFiles(size_t piece = SIZE_MAX) : piece(piece), previous(SetFileSystem(this)) {}
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
    size_t piece;

private:
    FileSystem* previous;
};

// Records the errors shown to the user, the program files it can resolve and
// the dictionary notice it was given.
class RecordingServices : public AppServices
{
public:
    RecordingServices() : previous(SetAppServices(this)) {}
    ~RecordingServices() override { SetAppServices(previous); }
    void ReportError(const KelText& message, const KelText& context) override
    {
        errors.emplace_back(message.View(), context.View());
    }
    bool ResolveProgramFile(const KelText& name, KelText& fullPath) override
    {
        const auto found = programFiles.find(name.ToUtf8());
        if (found == programFiles.end())
            return false;
        fullPath = KelText::FromUtf8(found->second);
        return true;
    }
    void SetDictionaryNotice(const KelText& text) override
    {
        notice = text.ToUtf8();
        ++notices;
    }

    std::vector<std::pair<std::u16string, std::u16string>> errors;
    std::map<std::string, std::string> programFiles;
    std::string notice;
    int notices = 0;

private:
    AppServices* previous;
};
