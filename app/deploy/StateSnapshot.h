#pragma once
#include <windows.h>

#include <string>
#include <vector>

#include "text/KelText.h"

// Everything that an import may write, as it was before the first write: the
// bytes of settings files (or that a file did not exist) and whole registry
// key trees of the current user (every sub-key and value with its type and
// data, or that the key did not exist). Restore puts back exactly that state
// and touches nothing that did not change: values that differ are written
// back, values and keys that were added are deleted, and a key tree that did
// not exist is removed together with the parent keys it brought along.
//
// The registry is read and written through the system's functions rather than
// RegistryKey, which reads only typed values and cannot list sub-keys.
class StateSnapshot
{
public:
    // A settings file (full path).
    void AddFile(const KelText& path);
    // A key tree, named by its full text ("HKEY_CURRENT_USER\...\"). A tree
    // inside one already added is covered by it.
    void AddRegistryTree(const KelText& keyPath);

    // Reads everything. False, and what could not be read, when a file or key
    // that exists cannot be read: nothing may then be written.
    bool Take(KelText& unreadable);
    // Puts everything back; answers what could not be put back (empty: all was).
    std::vector<KelText> Restore() const;

    // Whether the state now is the one taken (files compared byte by byte,
    // keys value by value).
    bool Unchanged() const;

private:
    struct Value
    {
        std::wstring name;
        DWORD type = 0;
        std::string data;
    };
    struct Key
    {
        std::wstring name;
        std::vector<Value> values;
        std::vector<Key> keys;
    };
    struct Tree
    {
        KelText path;
        HKEY root = nullptr;
        std::wstring subPath;
        bool existed = false;
        Key key;
        // The nearest key above it that existed (empty: the root).
        std::wstring existingParent;
    };
    struct File
    {
        KelText path;
        bool existed = false;
        std::string bytes;
    };

    static bool ReadKey(HKEY root, const std::wstring& path, Key& key);
    static bool RestoreKey(HKEY root, const std::wstring& path, const Key* wanted);
    static bool SameKey(HKEY root, const std::wstring& path, const Key& wanted);

    std::vector<Tree> trees;
    std::vector<File> files;
};
