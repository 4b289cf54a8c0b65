#pragma once
#include <string>
#include <vector>

#include "framework/RegistryKey.h"
#include "text/KelText.h"

// Everything that a save may write, as it was at one moment: the bytes of
// settings files (or that a file did not exist) and whole registry key trees
// of the current user (every sub-key and value with its type and data, or
// that the key did not exist). Restore puts back exactly that state and
// touches nothing that did not change: values that differ are written back,
// values and keys that were added are deleted, and a key tree that did not
// exist is removed together with the parent keys it brought along.
//
// Files are read and written through the installed file system, keys through
// RegistryKey. A snapshot can be kept as bytes (ToBytes, FromBytes), so that a
// state can be put back long after it was taken.
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

    // The snapshot as bytes, and back: FromBytes answers false (and leaves an
    // empty snapshot) for bytes that are not a whole snapshot.
    std::string ToBytes() const;
    bool FromBytes(const std::string& bytes);
    // Whether two snapshots hold the same places with the same contents.
    bool operator==(const StateSnapshot& other) const { return ToBytes() == other.ToBytes(); }

    // What the snapshot holds of a file: false when it does not cover it;
    // otherwise whether the file existed, and its bytes.
    bool FileContent(const KelText& path, bool& existed, std::string& bytes) const;

private:
    struct Key
    {
        KelText name;
        std::vector<RegistryValue> values;
        std::vector<Key> keys;
    };
    struct Tree
    {
        KelText path; // ends in "\"
        bool existed = false;
        Key key;
        // The nearest key above it that existed (empty: the root).
        KelText existingParent;
    };
    struct File
    {
        KelText path;
        bool existed = false;
        std::string bytes;
    };

    static bool ReadKey(const KelText& path, Key& key);
    static bool RestoreKey(const KelText& path, const Key* wanted);
    static bool SameKey(const KelText& path, const Key& wanted);

    std::vector<Tree> trees;
    std::vector<File> files;
};
