#pragma once
#include <map>
#include <string>

#include "platform/FileSystem.h"

// Holds back the whole-file writes of a piece of work that saves the same
// file several times (an import saves it once per page), so that the file on
// disk changes once, at Commit, in one safe write: a crash or a failure part
// way through leaves the file as it was. While it is installed, the writes go
// to memory, and reads of a file written meanwhile see what was written;
// everything else (the read-only refusal, the update lock, reads of other
// files) reaches the file system it was installed over.
class StagedFiles final : public FileSystem
{
public:
    // Installs itself over the file system installed now.
    StagedFiles();
    // Puts the previous file system back; what was not committed is dropped.
    ~StagedFiles() override;
    StagedFiles(const StagedFiles&) = delete;
    StagedFiles& operator=(const StagedFiles&) = delete;

    // Writes every file written meanwhile, each in one write, and forgets
    // them. The first failure ends it (the files not yet written keep their
    // content on disk); its path is in `failedPath`.
    WriteResult Commit(std::u16string& failedPath);
    // Whether anything is waiting to be written.
    bool Pending() const { return !written.empty(); }

    bool ReadBytes(PathRef path, std::string& bytes) override;
    std::unique_ptr<FileReader> OpenReader(PathRef path) override;
    FileState Query(PathRef path) override;
    std::u16string FinalPath(PathRef path) override { return inner.FinalPath(path); }
    Step WriteNew(PathRef temporary, const void* data, size_t size) override;
    Step MoveOver(PathRef temporary, PathRef target) override;
    bool WriteInPlace(PathRef path, const void* data, size_t size) override;
    bool Remove(PathRef path) override;
    LockAttempt TryLockFile(PathRef lockPath, void*& handle) override
    {
        return inner.TryLockFile(lockPath, handle);
    }
    void UnlockFile(PathRef lockPath, void* handle) override { inner.UnlockFile(lockPath, handle); }

private:
    const std::string* Written(PathRef path) const;

    FileSystem& inner;
    FileSystem* previous;
    // Files written meanwhile (temporary ones too, until they are moved), in
    // the order of their names; the order of writing is kept in `order`.
    std::map<std::u16string, std::string> written;
    std::map<std::u16string, int> order;
    int writes = 0;
};
