#include "app/deploy/StateSnapshot.h"

#include <algorithm>

#include "framework/Folders.h"
#include "framework/RegistryKey.h"
#include "platform/FileSystem.h"
#include "text/WideText.h"

namespace
{
// Registry names are the same when they differ only in case.
bool SameName(const std::wstring& left, const std::wstring& right)
{
    return CompareStringOrdinal(left.c_str(), int(left.size()), right.c_str(), int(right.size()),
                                TRUE) == CSTR_EQUAL;
}

template <typename Item>
const Item* FindNamed(const std::vector<Item>& items, const std::wstring& name)
{
    for (const Item& item : items)
        if (SameName(item.name, name))
            return &item;
    return nullptr;
}

std::wstring Wide(const KelText& text)
{
    return std::wstring(AsWide(text), size_t(text.Length()));
}

std::wstring ParentOf(const std::wstring& path)
{
    const size_t slash = path.rfind(L'\\');
    return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
}

// The key text with one "\" at its end, for telling trees apart.
KelText KeyWithSlash(const KelText& path)
{
    KelText text(path);
    if (text.IsEmpty() || text.At(text.Length() - 1) != u'\\')
        text += u"\\";
    return text;
}

bool StartsWithFolded(const KelText& text, const KelText& prefix)
{
    return text.Length() >= prefix.Length() &&
           CompareStringOrdinal(AsWide(text), prefix.Length(), AsWide(prefix), prefix.Length(),
                                TRUE) == CSTR_EQUAL;
}

KelText FullPath(const KelText& path)
{
    wchar_t buffer[4096];
    const DWORD length = GetFullPathNameW(AsWide(WithBackslashes(path)), 4096, buffer, nullptr);
    return length > 0 && length < 4096 ? FromWide(buffer, int32_t(length)) : path;
}

bool FileExists(const KelText& path)
{
    return GetFileAttributesW(AsWide(path)) != INVALID_FILE_ATTRIBUTES;
}

class OpenKey
{
public:
    OpenKey() = default;
    ~OpenKey()
    {
        if (handle)
            RegCloseKey(handle);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    HKEY handle = nullptr;
};

bool IsEmptyKey(HKEY root, const std::wstring& path)
{
    OpenKey key;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key.handle) != ERROR_SUCCESS)
        return false;
    DWORD subKeys = 0, values = 0;
    return RegQueryInfoKeyW(key.handle, nullptr, nullptr, nullptr, &subKeys, nullptr, nullptr,
                            &values, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           subKeys == 0 && values == 0;
}

bool KeyExists(HKEY root, const std::wstring& path)
{
    OpenKey key;
    return RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key.handle) == ERROR_SUCCESS;
}
} // namespace

void StateSnapshot::AddFile(const KelText& path)
{
    const KelText full = FullPath(path);
    for (const File& file : files)
        if (StartsWithFolded(file.path, full) && file.path.Length() == full.Length())
            return;
    files.push_back({full, false, {}});
}

void StateSnapshot::AddRegistryTree(const KelText& keyPath)
{
    const KelText path = KeyWithSlash(keyPath);
    for (const Tree& tree : trees)
        if (StartsWithFolded(path, tree.path))
            return;
    trees.erase(std::remove_if(trees.begin(), trees.end(),
                               [&path](const Tree& tree)
                               { return StartsWithFolded(tree.path, path); }),
                trees.end());
    Tree tree;
    tree.path = path;
    KelText subPath;
    if (!RegistryKey::SplitPath(path, tree.root, subPath) || subPath.IsEmpty())
        return;
    tree.subPath = Wide(subPath);
    trees.push_back(std::move(tree));
}

bool StateSnapshot::ReadKey(HKEY root, const std::wstring& path, Key& key)
{
    OpenKey open;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &open.handle) != ERROR_SUCCESS)
        return false;
    DWORD subKeys = 0, longestKey = 0, valueCount = 0, longestName = 0, longestData = 0;
    if (RegQueryInfoKeyW(open.handle, nullptr, nullptr, nullptr, &subKeys, &longestKey, nullptr,
                         &valueCount, &longestName, &longestData, nullptr,
                         nullptr) != ERROR_SUCCESS)
        return false;

    key.values.clear();
    key.keys.clear();
    std::wstring name(size_t(longestName) + 1, L'\0');
    std::string data(size_t(longestData) + 1, '\0');
    for (DWORD i = 0; i < valueCount; ++i)
    {
        DWORD nameLength = DWORD(name.size());
        DWORD dataLength = DWORD(data.size());
        DWORD type = 0;
        if (RegEnumValueW(open.handle, i, name.data(), &nameLength, nullptr, &type,
                          reinterpret_cast<BYTE*>(data.data()), &dataLength) != ERROR_SUCCESS)
            return false;
        key.values.push_back({name.substr(0, nameLength), type, data.substr(0, dataLength)});
    }
    std::wstring keyName(size_t(longestKey) + 1, L'\0');
    for (DWORD i = 0; i < subKeys; ++i)
    {
        DWORD length = DWORD(keyName.size());
        if (RegEnumKeyExW(open.handle, i, keyName.data(), &length, nullptr, nullptr, nullptr,
                          nullptr) != ERROR_SUCCESS)
            return false;
        Key sub;
        sub.name = keyName.substr(0, length);
        if (!ReadKey(root, path + L"\\" + sub.name, sub))
            return false;
        key.keys.push_back(std::move(sub));
    }
    return true;
}

bool StateSnapshot::Take(KelText& unreadable)
{
    for (Tree& tree : trees)
    {
        tree.existed = KeyExists(tree.root, tree.subPath);
        if (tree.existed && !ReadKey(tree.root, tree.subPath, tree.key))
        {
            unreadable = tree.path;
            return false;
        }
        tree.existingParent.clear();
        for (std::wstring parent = ParentOf(tree.subPath); !parent.empty();
             parent = ParentOf(parent))
            if (KeyExists(tree.root, parent))
            {
                tree.existingParent = parent;
                break;
            }
    }
    for (File& file : files)
    {
        file.existed = FileExists(file.path);
        file.bytes.clear();
        if (file.existed && !GetFileSystem().ReadBytes(file.path, file.bytes))
        {
            unreadable = file.path;
            return false;
        }
    }
    return true;
}

bool StateSnapshot::RestoreKey(HKEY root, const std::wstring& path, const Key* wanted)
{
    if (!wanted)
    {
        const LONG result = RegDeleteTreeW(root, path.c_str());
        return (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND) &&
               !KeyExists(root, path);
    }

    OpenKey open;
    LONG result = RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | KEY_WRITE, &open.handle);
    if (result == ERROR_FILE_NOT_FOUND)
    {
        result = RegCreateKeyExW(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                 KEY_READ | KEY_WRITE, nullptr, &open.handle, nullptr);
        // Below a volatile key only a volatile one can be made (and such a
        // key was volatile before).
        if (result == ERROR_CHILD_MUST_BE_VOLATILE)
            result = RegCreateKeyExW(root, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                                     KEY_READ | KEY_WRITE, nullptr, &open.handle, nullptr);
    }
    if (result != ERROR_SUCCESS)
        return false;

    Key now;
    if (!ReadKey(root, path, now))
        return false;
    bool restored = true;
    for (const Value& value : now.values)
        if (!FindNamed(wanted->values, value.name))
            restored =
                RegDeleteValueW(open.handle, value.name.c_str()) == ERROR_SUCCESS && restored;
    for (const Value& value : wanted->values)
    {
        const Value* there = FindNamed(now.values, value.name);
        if (there && there->type == value.type && there->data == value.data)
            continue;
        restored = RegSetValueExW(open.handle, value.name.c_str(), 0, value.type,
                                  reinterpret_cast<const BYTE*>(value.data.data()),
                                  DWORD(value.data.size())) == ERROR_SUCCESS &&
                   restored;
    }
    for (const Key& key : now.keys)
        if (!FindNamed(wanted->keys, key.name))
            restored = RestoreKey(root, path + L"\\" + key.name, nullptr) && restored;
    for (const Key& key : wanted->keys)
        restored = RestoreKey(root, path + L"\\" + key.name, &key) && restored;
    return restored;
}

std::vector<KelText> StateSnapshot::Restore() const
{
    std::vector<KelText> failed;
    for (const Tree& tree : trees)
    {
        if (!RestoreKey(tree.root, tree.subPath, tree.existed ? &tree.key : nullptr))
        {
            failed.push_back(tree.path);
            continue;
        }
        if (tree.existed)
            continue;
        // The parent keys that the writes brought along go too, while empty.
        for (std::wstring parent = ParentOf(tree.subPath);
             !parent.empty() && !SameName(parent, tree.existingParent); parent = ParentOf(parent))
        {
            if (!IsEmptyKey(tree.root, parent) ||
                RegDeleteKeyW(tree.root, parent.c_str()) != ERROR_SUCCESS)
                break;
        }
    }
    for (const File& file : files)
    {
        if (!file.existed)
        {
            if (FileExists(file.path))
                DeleteFileW(AsWide(file.path));
            if (FileExists(file.path))
                failed.push_back(file.path);
            continue;
        }
        std::string now;
        FileSystem& system = GetFileSystem();
        if (system.ReadBytes(file.path, now) && now == file.bytes)
            continue;
        if (!system.WriteBytes(file.path, file.bytes.data(), file.bytes.size()) ||
            !system.ReadBytes(file.path, now) || now != file.bytes)
            failed.push_back(file.path);
    }
    return failed;
}

bool StateSnapshot::SameKey(HKEY root, const std::wstring& path, const Key& wanted)
{
    Key now;
    if (!ReadKey(root, path, now) || now.values.size() != wanted.values.size() ||
        now.keys.size() != wanted.keys.size())
        return false;
    for (const Value& value : wanted.values)
    {
        const Value* there = FindNamed(now.values, value.name);
        if (!there || there->type != value.type || there->data != value.data)
            return false;
    }
    for (const Key& key : wanted.keys)
        if (!FindNamed(now.keys, key.name) || !SameKey(root, path + L"\\" + key.name, key))
            return false;
    return true;
}

bool StateSnapshot::Unchanged() const
{
    for (const Tree& tree : trees)
    {
        if (!tree.existed)
        {
            if (KeyExists(tree.root, tree.subPath))
                return false;
            continue;
        }
        if (!SameKey(tree.root, tree.subPath, tree.key))
            return false;
    }
    for (const File& file : files)
    {
        if (FileExists(file.path) != file.existed)
            return false;
        std::string now;
        if (file.existed &&
            (!GetFileSystem().ReadBytes(file.path, now) || now != file.bytes))
            return false;
    }
    return true;
}
