#include "platform/StagedFiles.h"

#include <algorithm>
#include <vector>

StagedFiles::StagedFiles() : inner(GetFileSystem()), previous(SetFileSystem(this)) {}

StagedFiles::~StagedFiles()
{
    SetFileSystem(previous);
}

const std::string* StagedFiles::Written(PathRef path) const
{
    const auto found = written.find(std::u16string(path.View()));
    return found == written.end() ? nullptr : &found->second;
}

bool StagedFiles::ReadBytes(PathRef path, std::string& bytes)
{
    if (const std::string* held = Written(path))
    {
        bytes = *held;
        return true;
    }
    return inner.ReadBytes(path, bytes);
}

std::unique_ptr<FileReader> StagedFiles::OpenReader(PathRef path)
{
    if (const std::string* held = Written(path))
        return std::make_unique<MemoryReader>(*held);
    return inner.OpenReader(path);
}

FileState StagedFiles::Query(PathRef path)
{
    FileState state = inner.Query(path);
    if (Written(path))
        state.exists = true;
    return state;
}

FileSystem::Step StagedFiles::WriteNew(PathRef temporary, const void* data, size_t size)
{
    written[std::u16string(temporary.View())].assign(static_cast<const char*>(data), size);
    return Step::Done;
}

FileSystem::Step StagedFiles::MoveOver(PathRef temporary, PathRef target)
{
    const auto found = written.find(std::u16string(temporary.View()));
    if (found == written.end())
        return Step::Failed;
    const std::u16string name(target.View());
    written[name] = std::move(found->second);
    written.erase(found);
    order[name] = ++writes;
    return Step::Done;
}

bool StagedFiles::WriteInPlace(PathRef path, const void* data, size_t size)
{
    const std::u16string name(path.View());
    written[name].assign(static_cast<const char*>(data), size);
    order[name] = ++writes;
    return true;
}

bool StagedFiles::Remove(PathRef path)
{
    // Only what was written meanwhile can go (a temporary file); files on
    // disk are never removed by held-back work.
    written.erase(std::u16string(path.View()));
    return true;
}

WriteResult StagedFiles::Commit(std::u16string& failedPath)
{
    std::vector<std::pair<int, std::u16string>> names;
    names.reserve(written.size());
    for (const auto& [name, bytes] : written)
        names.emplace_back(order.count(name) ? order[name] : 0, name);
    std::sort(names.begin(), names.end());
    WriteResult result;
    for (const auto& [when, name] : names)
    {
        const std::string& bytes = written[name];
        result = inner.WriteBytes(name.c_str(), bytes.data(), bytes.size());
        if (!result)
        {
            failedPath = name;
            break;
        }
    }
    written.clear();
    order.clear();
    return result;
}
