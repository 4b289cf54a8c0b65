#pragma once
// Stand-ins for the platform that the portable-layer tests install for their
// lifetime: files kept in memory and a record of what the application is told.
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/FileSystem.h"
#include "text/AppServices.h"
#include "text/KelText.h"

// Files kept in memory, written through the same safe write as real ones
// (a temporary file moved over the target). With failNextWrite the next write
// stores half of its bytes and fails (a full disk); with unreadable every
// read fails; a path in readOnly has the read-only attribute. Read piece by
// piece, a file comes in pieces of at most `piece` bytes.
class MemoryFiles : public FileSystem
{
public:
    explicit MemoryFiles(size_t piece = SIZE_MAX) : piece(piece), previous(SetFileSystem(this)) {}
    MemoryFiles(const MemoryFiles&) = delete;
    MemoryFiles& operator=(const MemoryFiles&) = delete;
    ~MemoryFiles() override { SetFileSystem(previous); }
    bool ReadBytes(PathRef path, std::string& bytes) override
    {
        const auto found = files.find(std::u16string(path.View()));
        bytes = found == files.end() ? std::string() : found->second;
        return found != files.end() && !unreadable;
    }
    std::unique_ptr<FileReader> OpenReader(PathRef path) override
    {
        std::string bytes;
        if (!ReadBytes(path, bytes))
            return nullptr;
        return std::make_unique<MemoryReader>(std::move(bytes), piece);
    }
    FileState Query(PathRef path) override
    {
        const std::u16string name(path.View());
        return {files.count(name) != 0, false, readOnly.count(name) != 0};
    }
    Step WriteNew(PathRef temporary, const void* data, size_t size) override
    {
        return Store(std::u16string(temporary.View()), data, size) ? Step::Done : Step::Failed;
    }
    Step MoveOver(PathRef temporary, PathRef target) override
    {
        const auto found = files.find(std::u16string(temporary.View()));
        if (found == files.end())
            return Step::Failed;
        files[std::u16string(target.View())] = std::move(found->second);
        files.erase(found);
        return Step::Done;
    }
    bool WriteInPlace(PathRef path, const void* data, size_t size) override
    {
        return Store(std::u16string(path.View()), data, size);
    }
    bool Remove(PathRef path) override
    {
        files.erase(std::u16string(path.View()));
        return true;
    }
    LockAttempt TryLockFile(PathRef lockPath, void*& handle) override
    {
        if (!locked.insert(std::u16string(lockPath.View())).second)
            return LockAttempt::Busy;
        handle = this;
        return LockAttempt::Taken;
    }
    void UnlockFile(PathRef lockPath, void*) override
    {
        locked.erase(std::u16string(lockPath.View()));
    }

    std::map<std::u16string, std::string> files;
    std::set<std::u16string> readOnly;
    std::set<std::u16string> locked;
    bool failNextWrite = false;
    bool unreadable = false;
    int writes = 0;
    size_t piece;

private:
    bool Store(const std::u16string& name, const void* data, size_t size)
    {
        ++writes;
        const bool fail = failNextWrite;
        failNextWrite = false;
        files[name].assign(static_cast<const char*>(data), fail ? size / 2 : size);
        return !fail;
    }
    FileSystem* previous;
};

// Records the errors shown to the user, the program files it can resolve and
// the dictionary notice it was given.
class RecordingServices : public AppServices
{
public:
    RecordingServices() : previous(SetAppServices(this)) {}
    RecordingServices(const RecordingServices&) = delete;
    RecordingServices& operator=(const RecordingServices&) = delete;
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
