#pragma once
// Helpers of the application-object tests. Every test uses names of its own
// (process id and a counter), because other test programs share the prefix's
// registry and folders while they run.
#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "framework/AppEntry.h"
#include "framework/Folders.h"
#include "framework/RegistryKey.h"
#include "text/WideText.h"

inline KelText UniqueName(const char16_t* stem)
{
    static int counter = 0;
    return KelText::Formatted(u"%s%u_%i", stem, unsigned(GetCurrentProcessId()), ++counter);
}

// Deletes registry keys when the test starts and again when it ends.
class RegistryCleanup
{
public:
    explicit RegistryCleanup(std::vector<KelText> keyPaths) : paths(std::move(keyPaths))
    {
        for (const KelText& path : paths)
            RegistryKey::DeleteTree(path);
    }
    RegistryCleanup(const RegistryCleanup&) = delete;
    RegistryCleanup& operator=(const RegistryCleanup&) = delete;
    ~RegistryCleanup()
    {
        for (const KelText& path : paths)
            RegistryKey::DeleteTree(path);
    }

private:
    std::vector<KelText> paths;
};

// A folder tree of the test's own under the temporary folder, removed at the end.
class TempTree
{
public:
    TempTree() : root(ReadTempFolder() + UniqueName(u"kelapp") + u"/") { CreateFolderPath(root); }
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;
    ~TempTree() { RemoveAll(root); }

    // Creates (with parents) and answers root + relative + "/".
    KelText Folder(const KelText& relative) const
    {
        KelText folder = NormaliseFolder(root + relative);
        CreateFolderPath(folder);
        return folder;
    }
    const KelText& Root() const { return root; }

    static void RemoveAll(const KelText& folder)
    {
        WIN32_FIND_DATAW found;
        HANDLE search = FindFirstFileW(AsWide(folder + u"*"), &found);
        if (search != INVALID_HANDLE_VALUE)
        {
            do
            {
                KelText name = FromWide(found.cFileName);
                if (name.SameAs(u".") || name.SameAs(u".."))
                    continue;
                if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                    RemoveAll(folder + name + u"/");
                else
                    DeleteFileW(AsWide(folder + name));
            } while (FindNextFileW(search, &found));
            FindClose(search);
        }
        RemoveDirectoryW(AsWide(folder));
    }

private:
    KelText root;
};

// Plain writes and reads of registry values. GetString answers "<absent>"
// ("<other type>" for a value that is no string); GetDword answers -1 when
// absent, -2 for a value of another type.
inline void PutString(const KelText& key, const KelText& name, const KelText& value)
{
    RegistryKey written;
    ASSERT_TRUE(written.Create(key));
    ASSERT_TRUE(written.WriteString(name, value));
}
inline void PutDword(const KelText& key, const KelText& name, uint32_t value)
{
    RegistryKey written;
    ASSERT_TRUE(written.Create(key));
    ASSERT_TRUE(written.WriteDword(name, value));
}
inline KelText GetString(const KelText& key, const KelText& name)
{
    KelText value;
    const RegistryRead read = RegistryKey(key).ReadString(name, value);
    if (read == RegistryRead::Ok)
        return value;
    return KelText(read == RegistryRead::OtherType ? u"<other type>" : u"<absent>");
}
inline int64_t GetDword(const KelText& key, const KelText& name)
{
    uint32_t value = 0;
    const RegistryRead read = RegistryKey(key).ReadDword(name, value);
    return read == RegistryRead::Ok ? int64_t(value) : read == RegistryRead::OtherType ? -2 : -1;
}

// Runs the current directory elsewhere for the lifetime of the object.
class CurrentDirectoryScope
{
public:
    explicit CurrentDirectoryScope(const KelText& folder) : previous(ReadCurrentDirectory())
    {
        changed = SetCurrentDirectoryW(AsWide(WithBackslashes(folder))) != 0;
    }
    CurrentDirectoryScope(const CurrentDirectoryScope&) = delete;
    CurrentDirectoryScope& operator=(const CurrentDirectoryScope&) = delete;
    ~CurrentDirectoryScope() { SetCurrentDirectoryW(AsWide(WithBackslashes(previous))); }
    bool Changed() const { return changed; }

private:
    KelText previous;
    bool changed = false;
};

// Removes what registering a release of the test's own leaves behind: its
// registry branches and its data folders.
class ReleaseCleanup
{
public:
    explicit ReleaseCleanup(const KelText& releaseName)
        : release(releaseName),
          registry({u"HKEY_CURRENT_USER\\Software\\Orvantix\\Brindlecove " + releaseName,
                    u"HKEY_LOCAL_MACHINE\\Software\\Orvantix\\Brindlecove " + releaseName})
    {
    }
    ReleaseCleanup(const ReleaseCleanup&) = delete;
    ReleaseCleanup& operator=(const ReleaseCleanup&) = delete;
    ~ReleaseCleanup()
    {
        for (int csidl : {28, 26})
        {
            KelText root = KnownFolder(csidl);
            if (!root.IsEmpty())
                TempTree::RemoveAll(root + u"Orvantix/Brindlecove " + release + u"/");
        }
    }

private:
    KelText release;
    RegistryCleanup registry;
};
