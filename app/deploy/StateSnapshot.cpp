#include "app/deploy/StateSnapshot.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "framework/Folders.h"
#include "platform/FileSystem.h"
#include "text/WideText.h"

namespace
{
// Registry names (and file paths) are the same when they differ only in case.
bool SameName(const KelText& left, const KelText& right)
{
    return CompareStringOrdinal(AsWide(left), left.Length(), AsWide(right), right.Length(), TRUE) ==
           CSTR_EQUAL;
}

bool NameBefore(const KelText& left, const KelText& right)
{
    return CompareStringOrdinal(AsWide(left), left.Length(), AsWide(right), right.Length(), TRUE) ==
           CSTR_LESS_THAN;
}

template <typename Item>
const Item* FindNamed(const std::vector<Item>& items, const KelText& name)
{
    for (const Item& item : items)
        if (SameName(item.name, name))
            return &item;
    return nullptr;
}

// The key text without "\" at its end.
KelText WithoutSlash(const KelText& path)
{
    KelText text(path);
    while (!text.IsEmpty() && text.At(text.Length() - 1) == u'\\')
        text.Delete(text.Length(), 1);
    return text;
}

KelText KeyWithSlash(const KelText& path)
{
    return WithoutSlash(path) + u"\\";
}

KelText Child(const KelText& path, const KelText& name)
{
    return WithoutSlash(path) + u"\\" + name;
}

// The key above `path`; empty when `path` is a root (or directly below none).
KelText ParentOf(const KelText& path)
{
    const KelText plain = WithoutSlash(path);
    const size_t slash = plain.View().rfind(u'\\');
    return slash == std::u16string_view::npos ? KelText() : plain.Sub(1, int32_t(slash));
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
    return GetFileSystem().Exists(path);
}

bool IsEmptyKey(const KelText& path)
{
    RegistryKeyInfo info;
    return RegistryKey(path).QueryInfo(info) && info.subKeys == 0 && info.values == 0;
}

// --- the byte form --------------------------------------------------------------------

constexpr char kMagic[] = "EditKel state 1\n";
// Deeper key trees than this are not read from bytes (the registry allows 512
// levels; the trees the pages own are a few levels deep).
constexpr int kDeepest = 512;

class ByteWriter
{
public:
    void Number(uint32_t value)
    {
        for (int shift = 0; shift < 32; shift += 8)
            bytes += char((value >> shift) & 0xFF);
    }
    void Bytes(const std::string& data)
    {
        Number(uint32_t(data.size()));
        bytes += data;
    }
    void Text(const KelText& text)
    {
        Number(uint32_t(text.Length()));
        for (char16_t unit : text.View())
        {
            bytes += char(unit & 0xFF);
            bytes += char(unit >> 8);
        }
    }
    std::string bytes;
};

class ByteReader
{
public:
    explicit ByteReader(const std::string& bytes) : bytes(bytes) {}
    bool Number(uint32_t& value)
    {
        if (bytes.size() - at < 4)
            return false;
        value = 0;
        for (int shift = 0; shift < 32; shift += 8)
            value |= uint32_t(uint8_t(bytes[at++])) << shift;
        return true;
    }
    bool Bytes(std::string& data)
    {
        uint32_t size = 0;
        if (!Number(size) || bytes.size() - at < size)
            return false;
        data = bytes.substr(at, size);
        at += size;
        return true;
    }
    bool Text(KelText& text)
    {
        uint32_t length = 0;
        if (!Number(length) || (bytes.size() - at) / 2 < length)
            return false;
        std::u16string units(length, u'\0');
        for (char16_t& unit : units)
        {
            unit = char16_t(uint8_t(bytes[at]) | (uint8_t(bytes[at + 1]) << 8));
            at += 2;
        }
        text = KelText(units.data(), int32_t(length));
        return true;
    }
    // A count of items that each take at least `least` bytes: never more
    // than the bytes left could hold.
    bool Count(uint32_t& count, size_t least)
    {
        return Number(count) && count <= (bytes.size() - at) / least;
    }
    bool Skip(const char* text)
    {
        const size_t length = strlen(text);
        if (bytes.compare(at, length, text) != 0)
            return false;
        at += length;
        return true;
    }
    bool AtEnd() const { return at == bytes.size(); }

private:
    const std::string& bytes;
    size_t at = 0;
};
} // namespace

void StateSnapshot::AddFile(const KelText& path)
{
    const KelText full = FullPath(path);
    for (const File& file : files)
        if (SameName(file.path, full))
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
    HKEY root = nullptr;
    KelText subPath;
    if (!RegistryKey::SplitPath(path, root, subPath) || subPath.IsEmpty())
        return;
    Tree tree;
    tree.path = path;
    trees.push_back(std::move(tree));
}

bool StateSnapshot::ReadKey(const KelText& path, Key& key)
{
    const RegistryKey open(path);
    std::vector<KelText> subKeys;
    if (!open.ReadValues(key.values) || !open.SubKeyNames(subKeys))
        return false;
    // In name order, so that two snapshots of the same state are the same
    // bytes whatever order the system lists them in.
    std::sort(key.values.begin(), key.values.end(),
              [](const RegistryValue& a, const RegistryValue& b)
              { return NameBefore(a.name, b.name); });
    std::sort(subKeys.begin(), subKeys.end(), NameBefore);
    key.keys.clear();
    for (const KelText& name : subKeys)
    {
        Key sub;
        sub.name = name;
        if (!ReadKey(Child(path, name), sub))
            return false;
        key.keys.push_back(std::move(sub));
    }
    return true;
}

bool StateSnapshot::Take(KelText& unreadable)
{
    for (Tree& tree : trees)
    {
        tree.key = Key();
        tree.existed = RegistryKey::Exists(tree.path);
        if (tree.existed && !ReadKey(tree.path, tree.key))
        {
            unreadable = tree.path;
            return false;
        }
        tree.existingParent = KelText();
        for (KelText parent = ParentOf(tree.path); !ParentOf(parent).IsEmpty();
             parent = ParentOf(parent))
            if (RegistryKey::Exists(parent))
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

bool StateSnapshot::RestoreKey(const KelText& path, const Key* wanted)
{
    if (!wanted)
        return RegistryKey::DeleteTree(path) && !RegistryKey::Exists(path);

    // Below a volatile key only a volatile one can be made (and such a key
    // was volatile before).
    RegistryKey open;
    if (!open.Open(path, RegistryKey::Access::Write) && !open.Create(path, true))
        return false;

    Key now;
    if (!ReadKey(path, now))
        return false;
    bool restored = true;
    for (const RegistryValue& value : now.values)
        if (!FindNamed(wanted->values, value.name))
            restored = open.DeleteValue(value.name) && restored;
    for (const RegistryValue& value : wanted->values)
    {
        const RegistryValue* there = FindNamed(now.values, value.name);
        if (there && there->type == value.type && there->data == value.data)
            continue;
        restored = open.WriteRaw(value.name, value.type, value.data) && restored;
    }
    for (const Key& key : now.keys)
        if (!FindNamed(wanted->keys, key.name))
            restored = RestoreKey(Child(path, key.name), nullptr) && restored;
    for (const Key& key : wanted->keys)
        restored = RestoreKey(Child(path, key.name), &key) && restored;
    return restored;
}

std::vector<KelText> StateSnapshot::Restore() const
{
    std::vector<KelText> failed;
    for (const Tree& tree : trees)
    {
        if (!RestoreKey(tree.path, tree.existed ? &tree.key : nullptr))
        {
            failed.push_back(tree.path);
            continue;
        }
        if (tree.existed)
            continue;
        // The parent keys that the writes brought along go too, while empty.
        for (KelText parent = ParentOf(tree.path);
             !ParentOf(parent).IsEmpty() && !SameName(parent, tree.existingParent);
             parent = ParentOf(parent))
        {
            if (!IsEmptyKey(parent) || !RegistryKey::DeleteIfEmpty(parent))
                break;
        }
    }
    FileSystem& system = GetFileSystem();
    for (const File& file : files)
    {
        if (!file.existed)
        {
            if (FileExists(file.path) && (!system.Remove(file.path) || FileExists(file.path)))
                failed.push_back(file.path);
            continue;
        }
        std::string now;
        if (system.ReadBytes(file.path, now) && now == file.bytes)
            continue;
        if (!system.WriteBytes(file.path, file.bytes.data(), file.bytes.size()) ||
            !system.ReadBytes(file.path, now) || now != file.bytes)
            failed.push_back(file.path);
    }
    return failed;
}

bool StateSnapshot::SameKey(const KelText& path, const Key& wanted)
{
    Key now;
    if (!ReadKey(path, now) || now.values.size() != wanted.values.size() ||
        now.keys.size() != wanted.keys.size())
        return false;
    for (const RegistryValue& value : wanted.values)
    {
        const RegistryValue* there = FindNamed(now.values, value.name);
        if (!there || there->type != value.type || there->data != value.data)
            return false;
    }
    for (const Key& key : wanted.keys)
        if (!FindNamed(now.keys, key.name) || !SameKey(Child(path, key.name), key))
            return false;
    return true;
}

bool StateSnapshot::Unchanged() const
{
    for (const Tree& tree : trees)
    {
        if (!tree.existed)
        {
            if (RegistryKey::Exists(tree.path))
                return false;
            continue;
        }
        if (!SameKey(tree.path, tree.key))
            return false;
    }
    for (const File& file : files)
    {
        if (FileExists(file.path) != file.existed)
            return false;
        std::string now;
        if (file.existed && (!GetFileSystem().ReadBytes(file.path, now) || now != file.bytes))
            return false;
    }
    return true;
}

bool StateSnapshot::FileContent(const KelText& path, bool& existed, std::string& bytes) const
{
    const KelText full = FullPath(path);
    for (const File& file : files)
        if (SameName(file.path, full))
        {
            existed = file.existed;
            bytes = file.bytes;
            return true;
        }
    return false;
}

namespace
{
template <typename Key>
void WriteKey(ByteWriter& out, const Key& key)
{
    out.Text(key.name);
    out.Number(uint32_t(key.values.size()));
    for (const RegistryValue& value : key.values)
    {
        out.Text(value.name);
        out.Number(uint32_t(value.type));
        out.Bytes(value.data);
    }
    out.Number(uint32_t(key.keys.size()));
    for (const Key& sub : key.keys)
        WriteKey(out, sub);
}

template <typename Key>
bool ReadKeyBytes(ByteReader& in, Key& key, int depth)
{
    uint32_t count = 0;
    if (depth > kDeepest || !in.Text(key.name) || !in.Count(count, 12))
        return false;
    key.values.resize(count);
    for (RegistryValue& value : key.values)
    {
        uint32_t type = 0;
        if (!in.Text(value.name) || !in.Number(type) || !in.Bytes(value.data))
            return false;
        value.type = DWORD(type);
    }
    if (!in.Count(count, 12))
        return false;
    key.keys.resize(count);
    for (Key& sub : key.keys)
        if (!ReadKeyBytes(in, sub, depth + 1))
            return false;
    return true;
}
} // namespace

std::string StateSnapshot::ToBytes() const
{
    ByteWriter out;
    out.bytes = kMagic;
    out.Number(uint32_t(files.size()));
    for (const File& file : files)
    {
        out.Text(file.path);
        out.Number(file.existed ? 1 : 0);
        out.Bytes(file.bytes);
    }
    out.Number(uint32_t(trees.size()));
    for (const Tree& tree : trees)
    {
        out.Text(tree.path);
        out.Number(tree.existed ? 1 : 0);
        out.Text(tree.existingParent);
        WriteKey(out, tree.key);
    }
    return out.bytes;
}

bool StateSnapshot::FromBytes(const std::string& bytes)
{
    files.clear();
    trees.clear();
    ByteReader in(bytes);
    uint32_t count = 0;
    bool good = in.Skip(kMagic) && in.Count(count, 12);
    for (uint32_t i = 0; good && i < count; ++i)
    {
        File file;
        uint32_t existed = 0;
        good = in.Text(file.path) && in.Number(existed) && existed <= 1 && in.Bytes(file.bytes);
        file.existed = existed == 1;
        files.push_back(std::move(file));
    }
    good = good && in.Count(count, 24);
    for (uint32_t i = 0; good && i < count; ++i)
    {
        Tree tree;
        uint32_t existed = 0;
        HKEY root = nullptr;
        KelText subPath;
        good = in.Text(tree.path) && in.Number(existed) && existed <= 1 &&
               in.Text(tree.existingParent) && ReadKeyBytes(in, tree.key, 0) &&
               RegistryKey::SplitPath(tree.path, root, subPath) && !subPath.IsEmpty();
        tree.existed = existed == 1;
        trees.push_back(std::move(tree));
    }
    if (good && in.AtEnd())
        return true;
    files.clear();
    trees.clear();
    return false;
}
