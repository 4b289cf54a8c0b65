#pragma once
#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "text/KelText.h"

// The outcome of reading a typed value.
enum class RegistryRead
{
    Ok,        // the value exists with the expected type; the target was set
    Absent,    // no such value (or the key is not open); the target is unchanged
    OtherType, // the value exists with another type; the target is unchanged
};

// A value as stored: its name, type and data bytes, whatever the type.
struct RegistryValue
{
    KelText name;
    DWORD type = 0;
    std::string data;
};

// How many sub-keys and values a key holds.
struct RegistryKeyInfo
{
    uint32_t subKeys = 0;
    uint32_t values = 0;
};

// An open registry key, closed when the object goes. Every registry access of
// the program goes through this class. Keys are named by their full text, as
// GetRegistryKeyPath builds it: a root ("HKEY_CURRENT_USER",
// "HKEY_LOCAL_MACHINE", ... or the short forms "HKCU", "HKLM"), "\", and the
// path below it; a trailing "\" is allowed.
class RegistryKey
{
public:
    enum class Access
    {
        Read,  // KEY_READ only
        Write, // reading and writing
    };

    RegistryKey() = default;
    // Opens (see Open); test IsOpen afterwards.
    explicit RegistryKey(const KelText& path, Access access = Access::Read);
    ~RegistryKey();
    RegistryKey(RegistryKey&& other) noexcept;
    RegistryKey& operator=(RegistryKey&& other) noexcept;
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    // Opens an existing key. False (and closed) when it does not exist, the
    // path names no known root, or access is refused.
    bool Open(const KelText& path, Access access = Access::Read);
    // Opens the key for writing, creating it and any missing parents. Below a
    // volatile key the system allows only volatile keys: with
    // `volatileBelowVolatile` such a key is then created volatile (as a key
    // put back there was before) instead of failing.
    bool Create(const KelText& path, bool volatileBelowVolatile = false);
    void Close();
    bool IsOpen() const { return key != nullptr; }
    HKEY Handle() const { return key; }

    // A REG_SZ or REG_EXPAND_SZ value (the latter with its environment
    // variables expanded). `typeFound`, when given, receives the stored type
    // whenever the value exists.
    RegistryRead ReadString(const KelText& name, KelText& value, DWORD* typeFound = nullptr) const;
    // A REG_DWORD value.
    RegistryRead ReadDword(const KelText& name, uint32_t& value, DWORD* typeFound = nullptr) const;

    bool WriteString(const KelText& name, const KelText& value);
    bool WriteDword(const KelText& name, uint32_t value);
    // False when the value could not be deleted; a missing value counts as deleted.
    bool DeleteValue(const KelText& name);

    // A value with its type and data exactly as stored. Absent when there is
    // no such value.
    RegistryRead ReadRaw(const KelText& name, RegistryValue& value) const;
    // Stores data of any type as it is.
    bool WriteRaw(const KelText& name, DWORD type, const std::string& data);
    // Every value with its type and data. False when the key is not open or
    // a value could not be read.
    bool ReadValues(std::vector<RegistryValue>& values) const;
    // The names of the key's sub-keys. False when the key is not open or the
    // list could not be read.
    bool SubKeyNames(std::vector<KelText>& names) const;
    // How many sub-keys and values the key holds. False when not open.
    bool QueryInfo(RegistryKeyInfo& info) const;

    // The names of the key's values. The order is whatever the system gives
    // (alphabetical under Wine, creation order on Windows): never rely on it.
    std::vector<KelText> ValueNames() const;

    // Splits a full key text into its root and the path below it (without
    // leading or trailing "\"). False when the root is not known.
    static bool SplitPath(const KelText& path, HKEY& root, KelText& subPath);
    // Whether the key exists (opened for reading).
    static bool Exists(const KelText& path);
    // Deletes a key with all its sub-keys and values. Refuses a bare root.
    static bool DeleteTree(const KelText& path);
    // Deletes a key only when it holds neither values nor sub-keys.
    static bool DeleteIfEmpty(const KelText& path);

    // The full text the key was opened or created with (empty when closed).
    const KelText& Path() const { return path; }

    // A test's stand-in for keys the user may not change: while installed,
    // every key path for which `refuses` answers true behaves as a key whose
    // permissions allow reading only (creating it, opening it for writing,
    // writing and deleting its values fail). Answers the one it replaces;
    // an empty function removes it.
    using WriteRefusal = std::function<bool(const KelText& keyPath)>;
    static WriteRefusal SetWriteRefusal(WriteRefusal refuses);

private:
    bool Refused() const;

    HKEY key = nullptr;
    KelText path;
};
