#include "framework/RegistryKey.h"

#include <utility>

#include "text/WideText.h"

namespace
{
struct RootName
{
    const char16_t* name;
    HKEY root;
};

const RootName rootNames[] = {
    {u"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {u"HKCU", HKEY_CURRENT_USER},
    {u"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {u"HKLM", HKEY_LOCAL_MACHINE},
    {u"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {u"HKCR", HKEY_CLASSES_ROOT},
    {u"HKEY_USERS", HKEY_USERS},
    {u"HKU", HKEY_USERS},
    {u"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
    {u"HKCC", HKEY_CURRENT_CONFIG},
};

RegistryKey::WriteRefusal& Refusal()
{
    static RegistryKey::WriteRefusal refusal;
    return refusal;
}

// A refusal tests paths without the trailing "\" that builders add.
bool RefusedPath(const KelText& path)
{
    if (!Refusal())
        return false;
    KelText plain(path);
    while (!plain.IsEmpty() && plain.At(plain.Length() - 1) == u'\\')
        plain.Delete(plain.Length(), 1);
    return Refusal()(plain);
}

KelText ExpandEnvironment(const KelText& text)
{
    DWORD needed = ExpandEnvironmentStringsW(AsWide(text), nullptr, 0);
    if (needed == 0)
        return text;
    std::vector<wchar_t> buffer(needed);
    DWORD written = ExpandEnvironmentStringsW(AsWide(text), buffer.data(), needed);
    if (written == 0 || written > needed)
        return text;
    return FromWide(buffer.data());
}
} // namespace

RegistryKey::RegistryKey(const KelText& path, Access access)
{
    Open(path, access);
}

RegistryKey::~RegistryKey()
{
    Close();
}

RegistryKey::RegistryKey(RegistryKey&& other) noexcept
    : key(std::exchange(other.key, nullptr)), path(std::move(other.path))
{
    other.path = KelText();
}

RegistryKey& RegistryKey::operator=(RegistryKey&& other) noexcept
{
    if (this != &other)
    {
        Close();
        key = std::exchange(other.key, nullptr);
        path = other.path;
        other.path = KelText();
    }
    return *this;
}

bool RegistryKey::SplitPath(const KelText& path, HKEY& root, KelText& subPath)
{
    int32_t cut = path.Find(u'\\');
    KelText rootName = cut ? path.Sub(1, cut - 1) : path;
    root = nullptr;
    for (const RootName& known : rootNames)
        if (rootName == known.name)
            root = known.root;
    if (!root)
        return false;

    subPath = cut ? path.Sub(cut + 1, path.Length() - cut) : KelText();
    while (subPath.At(0) == u'\\')
        subPath.Delete(1, 1);
    while (!subPath.IsEmpty() && subPath.At(subPath.Length() - 1) == u'\\')
        subPath.Delete(subPath.Length(), 1);
    return true;
}

bool RegistryKey::Open(const KelText& keyPath, Access access)
{
    Close();
    HKEY root = nullptr;
    KelText subPath;
    if (!SplitPath(keyPath, root, subPath))
        return false;
    REGSAM rights = access == Access::Read ? KEY_READ : KEY_READ | KEY_WRITE;
    if (access == Access::Write && RefusedPath(keyPath))
        return false;
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, AsWide(subPath), 0, rights, &opened) != ERROR_SUCCESS)
        return false;
    key = opened;
    path = keyPath;
    return true;
}

bool RegistryKey::Create(const KelText& keyPath, bool volatileBelowVolatile)
{
    Close();
    HKEY root = nullptr;
    KelText subPath;
    if (!SplitPath(keyPath, root, subPath) || RefusedPath(keyPath))
        return false;
    HKEY created = nullptr;
    LONG result = RegCreateKeyExW(root, AsWide(subPath), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  KEY_READ | KEY_WRITE, nullptr, &created, nullptr);
    if (result == ERROR_CHILD_MUST_BE_VOLATILE && volatileBelowVolatile)
        result = RegCreateKeyExW(root, AsWide(subPath), 0, nullptr, REG_OPTION_VOLATILE,
                                 KEY_READ | KEY_WRITE, nullptr, &created, nullptr);
    if (result != ERROR_SUCCESS)
        return false;
    key = created;
    path = keyPath;
    return true;
}

void RegistryKey::Close()
{
    if (key)
        RegCloseKey(key);
    key = nullptr;
    path = KelText();
}

bool RegistryKey::Refused() const
{
    return RefusedPath(path);
}

RegistryKey::WriteRefusal RegistryKey::SetWriteRefusal(WriteRefusal refuses)
{
    return std::exchange(Refusal(), std::move(refuses));
}

RegistryRead RegistryKey::ReadString(const KelText& name, KelText& value, DWORD* typeFound) const
{
    if (!key)
        return RegistryRead::Absent;
    DWORD type = 0;
    DWORD size = 0;
    LONG result = RegQueryValueExW(key, AsWide(name), nullptr, &type, nullptr, &size);
    if (result != ERROR_SUCCESS && result != ERROR_MORE_DATA)
        return RegistryRead::Absent;
    if (typeFound)
        *typeFound = type;
    if (type != REG_SZ && type != REG_EXPAND_SZ)
        return RegistryRead::OtherType;

    // The stored data need not end in a terminator, and it may grow between
    // the two calls: keep room for one more unit and retry when it grew.
    std::vector<wchar_t> buffer;
    for (;;)
    {
        buffer.assign(size / sizeof(wchar_t) + 2, L'\0');
        DWORD room = DWORD((buffer.size() - 1) * sizeof(wchar_t));
        result = RegQueryValueExW(key, AsWide(name), nullptr, &type,
                                  reinterpret_cast<BYTE*>(buffer.data()), &room);
        if (result == ERROR_MORE_DATA)
        {
            size = room;
            continue;
        }
        if (result != ERROR_SUCCESS)
            return RegistryRead::Absent;
        if (type != REG_SZ && type != REG_EXPAND_SZ)
            return RegistryRead::OtherType;
        break;
    }
    KelText read = FromWide(buffer.data());
    value = type == REG_EXPAND_SZ ? ExpandEnvironment(read) : read;
    return RegistryRead::Ok;
}

RegistryRead RegistryKey::ReadDword(const KelText& name, uint32_t& value, DWORD* typeFound) const
{
    if (!key)
        return RegistryRead::Absent;
    DWORD type = 0;
    DWORD data = 0;
    DWORD size = sizeof(data);
    LONG result =
        RegQueryValueExW(key, AsWide(name), nullptr, &type, reinterpret_cast<BYTE*>(&data), &size);
    if (result == ERROR_MORE_DATA)
    {
        // Longer than a DWORD: whatever it is, it is not one.
        if (typeFound)
            *typeFound = type;
        return RegistryRead::OtherType;
    }
    if (result != ERROR_SUCCESS)
        return RegistryRead::Absent;
    if (typeFound)
        *typeFound = type;
    if (type != REG_DWORD || size != sizeof(data))
        return RegistryRead::OtherType;
    value = data;
    return RegistryRead::Ok;
}

bool RegistryKey::WriteString(const KelText& name, const KelText& value)
{
    if (!key || Refused())
        return false;
    DWORD bytes = DWORD((value.Length() + 1) * sizeof(wchar_t));
    return RegSetValueExW(key, AsWide(name), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(AsWide(value)), bytes) == ERROR_SUCCESS;
}

bool RegistryKey::WriteDword(const KelText& name, uint32_t value)
{
    if (!key || Refused())
        return false;
    DWORD data = value;
    return RegSetValueExW(key, AsWide(name), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&data),
                          sizeof(data)) == ERROR_SUCCESS;
}

bool RegistryKey::DeleteValue(const KelText& name)
{
    if (!key || Refused())
        return false;
    LONG result = RegDeleteValueW(key, AsWide(name));
    return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND;
}

RegistryRead RegistryKey::ReadRaw(const KelText& name, RegistryValue& value) const
{
    if (!key)
        return RegistryRead::Absent;
    DWORD type = 0;
    DWORD size = 0;
    LONG result = RegQueryValueExW(key, AsWide(name), nullptr, &type, nullptr, &size);
    // The value may grow between the calls: ask again with the new size.
    for (int attempt = 0; attempt < 8 && (result == ERROR_SUCCESS || result == ERROR_MORE_DATA);
         ++attempt)
    {
        std::string data(size_t(size), '\0');
        DWORD room = size;
        result = RegQueryValueExW(key, AsWide(name), nullptr, &type,
                                  reinterpret_cast<BYTE*>(data.data()), &room);
        if (result == ERROR_MORE_DATA)
        {
            size = room;
            continue;
        }
        if (result != ERROR_SUCCESS)
            break;
        data.resize(room);
        value = {name, type, std::move(data)};
        return RegistryRead::Ok;
    }
    return RegistryRead::Absent;
}

bool RegistryKey::WriteRaw(const KelText& name, DWORD type, const std::string& data)
{
    if (!key || Refused())
        return false;
    return RegSetValueExW(key, AsWide(name), 0, type, reinterpret_cast<const BYTE*>(data.data()),
                          DWORD(data.size())) == ERROR_SUCCESS;
}

bool RegistryKey::ReadValues(std::vector<RegistryValue>& values) const
{
    values.clear();
    if (!key)
        return false;
    for (const KelText& name : ValueNames())
    {
        RegistryValue value;
        if (ReadRaw(name, value) != RegistryRead::Ok)
            return false;
        values.push_back(std::move(value));
    }
    // A value that went between listing and reading, or names that could not
    // be listed, show as a count that differs.
    RegistryKeyInfo info;
    return QueryInfo(info) && info.values == values.size();
}

bool RegistryKey::SubKeyNames(std::vector<KelText>& names) const
{
    names.clear();
    DWORD longest = 0;
    if (!key || RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, &longest, nullptr,
                                 nullptr, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return false;
    std::vector<wchar_t> buffer(size_t(longest) + 2);
    for (DWORD index = 0;;)
    {
        DWORD length = DWORD(buffer.size());
        const LONG result =
            RegEnumKeyExW(key, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (result == ERROR_MORE_DATA)
        {
            buffer.resize(buffer.size() * 2);
            continue;
        }
        if (result == ERROR_NO_MORE_ITEMS)
            return true;
        if (result != ERROR_SUCCESS)
            return false;
        names.push_back(FromWide(buffer.data(), int32_t(length)));
        ++index;
    }
}

bool RegistryKey::QueryInfo(RegistryKeyInfo& info) const
{
    DWORD subKeys = 0, values = 0;
    if (!key || RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &subKeys, nullptr, nullptr,
                                 &values, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return false;
    info = {uint32_t(subKeys), uint32_t(values)};
    return true;
}

std::vector<KelText> RegistryKey::ValueNames() const
{
    std::vector<KelText> names;
    if (!key)
        return names;
    DWORD longest = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         &longest, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return names;
    std::vector<wchar_t> buffer(size_t(longest) + 2);
    DWORD index = 0;
    for (;;)
    {
        DWORD length = DWORD(buffer.size());
        LONG result =
            RegEnumValueW(key, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (result == ERROR_MORE_DATA)
        {
            // A longer name was added meanwhile: grow and ask again.
            buffer.resize(buffer.size() * 2);
            continue;
        }
        if (result != ERROR_SUCCESS)
            break;
        names.push_back(FromWide(buffer.data(), int32_t(length)));
        ++index;
    }
    return names;
}

bool RegistryKey::Exists(const KelText& path)
{
    return RegistryKey(path, Access::Read).IsOpen();
}

bool RegistryKey::DeleteTree(const KelText& path)
{
    HKEY root = nullptr;
    KelText subPath;
    if (!SplitPath(path, root, subPath) || subPath.IsEmpty())
        return false;
    LONG result = RegDeleteTreeW(root, AsWide(subPath));
    return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND;
}

bool RegistryKey::DeleteIfEmpty(const KelText& path)
{
    HKEY root = nullptr;
    KelText subPath;
    RegistryKeyInfo info;
    if (!SplitPath(path, root, subPath) || subPath.IsEmpty() || RefusedPath(path) ||
        !RegistryKey(path).QueryInfo(info) || info.subKeys != 0 || info.values != 0)
        return false;
    return RegDeleteKeyW(root, AsWide(subPath)) == ERROR_SUCCESS;
}
