#include "framework/Folders.h"

#include <shlobj.h>

#include <vector>

#include "text/WideText.h"

namespace
{
KelText Replaced(const KelText& path, char16_t from, char16_t to)
{
    KelText copy(path);
    char16_t* units = copy.Buffer();
    for (int32_t i = 0; units && i < copy.Length(); ++i)
        if (units[i] == from)
            units[i] = to;
    return copy;
}

// Calls `read(size, buffer)` as the Win32 "fill this buffer" functions work:
// the answer is the length written, or the size needed when the buffer was too
// small (0 on failure). The first buffer holds MAX_PATH units.
template <typename Read>
KelText ReadGrowing(Read read)
{
    std::vector<wchar_t> buffer(MAX_PATH);
    DWORD length = read(DWORD(buffer.size()), buffer.data());
    while (length >= buffer.size())
    {
        buffer.resize(size_t(length) + 1);
        length = read(DWORD(buffer.size()), buffer.data());
    }
    return FromWide(buffer.data(), int32_t(length));
}
} // namespace

KelText NormaliseFolder(const KelText& path)
{
    KelText folder = Replaced(path, u'\\', u'/');
    if (!folder.IsEmpty() && folder.At(folder.Length() - 1) != u'/')
        folder += u'/';
    return folder;
}

KelText WithBackslashes(const KelText& path)
{
    return Replaced(path, u'/', u'\\');
}

void SplitFilePath(const KelText& path, KelText& folder, KelText& name)
{
    int32_t cut = path.Length();
    while (cut > 0 && path.At(cut - 1) != u'/' && path.At(cut - 1) != u'\\')
        --cut;
    folder = NormaliseFolder(path.Sub(1, cut));
    name = path.Sub(cut + 1, path.Length() - cut);
}

bool CreateFolderPath(const KelText& folder)
{
    KelText path = WithBackslashes(folder);
    while (path.Length() > 1 && path.At(path.Length() - 1) == u'\\')
        path.Delete(path.Length(), 1);
    if (path.IsEmpty())
        return false;

    // Create each level in turn. Levels that exist (the drive, the share of a
    // UNC path, folders made earlier) simply fail to be created again.
    for (int32_t i = 1; i < path.Length(); ++i)
    {
        if (path.At(i) != u'\\' || path.At(i - 1) == u'\\' || path.At(i - 1) == u':')
            continue;
        KelText level = path.Sub(1, i);
        CreateDirectoryW(AsWide(level), nullptr);
    }
    CreateDirectoryW(AsWide(path), nullptr);
    DWORD attributes = GetFileAttributesW(AsWide(path));
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

KelText KnownFolder(int csidl)
{
    wchar_t buffer[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathW(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, buffer)))
        return KelText();
    return NormaliseFolder(FromWide(buffer));
}

KelText ReadCurrentDirectory()
{
    return NormaliseFolder(ReadGrowing(
        [](DWORD size, wchar_t* buffer)
        {
            DWORD length = GetCurrentDirectoryW(size, buffer);
            // Too small: the answer is the size needed, terminator included.
            return length > size ? length - 1 : length;
        }));
}

KelText ReadTempFolder()
{
    return NormaliseFolder(ReadGrowing(
        [](DWORD size, wchar_t* buffer)
        {
            DWORD length = GetTempPathW(size, buffer);
            return length > size ? length - 1 : length;
        }));
}

KelText ReadModulePath(HMODULE module)
{
    return ReadGrowing(
        [module](DWORD size, wchar_t* buffer)
        {
            DWORD length = GetModuleFileNameW(module, buffer, size);
            // A cut-off name fills the whole buffer: ask for twice the room.
            return length >= size ? size * 2 : length;
        });
}
