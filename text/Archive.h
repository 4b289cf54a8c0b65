#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "text/PointerList.h"

class Archive;
class FileReader;
class KelText;

// Base of every object kept in an archive. One operation, Serialise, both
// reads and writes the object (Archive::IsReading tells which), so the field
// order of reading and writing cannot drift apart.
class Storable
{
public:
    virtual ~Storable() = default;
    // Reads the object's fields from the archive, or writes them to it, in one
    // fixed order. Answers archive.Ok() afterwards.
    virtual bool Serialise(Archive& archive) = 0;
    // The tag written before the object in its record; never 0.
    virtual uint32_t ClassTag() const = 0;
};

// Makes an empty object for a class tag read from an archive; null when the
// tag names no class known to the caller.
using StorableFactory = Storable* (*)(uint32_t classTag);

// The program's binary archive, held in memory and written to a file through
// the FileSystem seam in one piece. A file is read piece by piece through a
// window that keeps only the bytes being read (so that a large file is never
// held whole), bytes handed over in memory at once.
//
// File layout. All integers are little-endian.
//
//   Header, 16 bytes:
//     offset 0   4 bytes  magic "KELA" (0x4B 0x45 0x4C 0x41)
//     offset 4   u32      version, 1
//     offset 8   u32      flags: bit 0 (NarrowTexts) texts hold narrow units;
//                         bit 1 (NarrowUtf8) those units are UTF-8, otherwise
//                         the system ANSI code page. Other bits are 0.
//     offset 12  u32      reserved, 0
//   Body: the fields of the stored objects, as their Serialise writes them:
//     u32 / i32       4 bytes.
//     u64 / i64       8 bytes.
//     text            u32 count of units INCLUDING the terminating 0, then that
//                     many units: UTF-16 (2 bytes each) or, in a narrow archive,
//                     1 byte each. The last unit is 0 and no other unit is.
//                     The empty text is written as count 1 and the 0 unit;
//                     readers also take count 0, with no units, as empty.
//     block boundary  u32 size: the number of bytes from the end of this field
//                     to the end of the block. A block runs to the next
//                     boundary of the same record or to the end of the record
//                     (or of the body). Readers skip to the end of the block,
//                     so fields appended to a block by a later writer are
//                     ignored by older readers. The writer patches the size
//                     when the block is complete.
//     object record   u32 class tag, u32 size of the object's data, the data
//                     (its Serialise). Tag 0 with size 0 stands for no object.
//                     Readers skip what they did not read of a record.
//     owned list      u32 count, then that many object records.
//
// Reading never trusts the data: every read, count and size is checked against
// the bytes that remain in the enclosing block, record and body, records nest
// at most MaxDepth deep, and counts of following elements are checked against
// what the remaining bytes could hold before anything is allocated. The first
// failure makes the archive fail for good (Ok() false); reads after it give 0
// and empty texts.
class Archive
{
public:
    enum : uint32_t
    {
        NarrowTexts = 1,
        NarrowUtf8 = 2,
    };
    static constexpr uint32_t Version = 1;
    static constexpr uint32_t KnownFlags = NarrowTexts | NarrowUtf8;
    static constexpr size_t HeaderSize = 16;
    static constexpr size_t RecordHeaderSize = 8;
    static constexpr size_t MinTextSize = 4;
    static constexpr int MaxDepth = 32;
    // The most units a wide text may have (the most a KelText can hold).
    static constexpr int32_t MaxTextUnits = INT32_MAX - 16385;

    Archive();
    ~Archive();
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;

    // --- opening --------------------------------------------------------------
    // Starts a new archive for writing with the given flags; the header is
    // written at once.
    void BeginWriting(uint32_t flags = 0);
    // Opens `bytes` for reading with the given settings (0: wide texts). Fails
    // on a bad header (magic, version, unknown flags).
    bool OpenBytes(std::string bytes, uint32_t settings = 0);
    // Opens a file through the FileSystem seam for reading piece by piece.
    bool OpenFile(const KelText& path, uint32_t settings = 0);
    // After opening: the file uses the alternative (narrow) text format while
    // the archive was opened for wide texts, or the other way round. Texts
    // cannot be read then; close and reopen with FileFlags().
    bool IsAlternativeFormat() const;
    // The flags found in the header of the open file.
    uint32_t FileFlags() const { return fileFlags; }
    // Opens the same bytes again from the start with other settings.
    bool Reopen(uint32_t settings);
    // Forgets everything; the archive is then neither reading nor writing.
    void Close();

    bool IsReading() const { return mode == Mode::Reading; }
    bool IsWriting() const { return mode == Mode::Writing; }
    bool Ok() const { return ok; }
    // Marks the archive as failed (for objects that find bad data).
    void Fail() { ok = false; }
    // Size of the whole archive in bytes (header included).
    size_t TotalBytes() const { return IsWriting() ? data.size() : totalSize; }
    // Whether texts are read and written as UTF-16 units (no NarrowTexts setting).
    bool WideTexts() const { return !(settings & NarrowTexts); }

    // --- values: read into the variable, or write it --------------------------
    void Value(uint32_t& value);
    void Value(int32_t& value);
    void Value(uint64_t& value);
    void Value(int64_t& value);
    void Value(KelText& text);
    // Reading only: checks and passes over one text.
    void SkipText();
    // Whether `count` UTF-16 units at `bytes` (any alignment) end with a 0
    // and hold no other: the form of a stored wide text.
    static bool IsWideText(const char* bytes, uint32_t count);

    // --- direct reading, for readers of a known layout --------------------------
    // The next `bytes` bytes, without moving on; they stay valid until the
    // next read. Null, and the archive failed, when fewer remain before the
    // end of the open block, record or body.
    const char* Peek(size_t bytes);
    // Moves on by `bytes` bytes; the archive fails when fewer remain.
    void Skip(size_t bytes);
    // The bytes that remain before the end of the open block, record or body.
    size_t Remaining() const { return Limit() - position; }
    // The bytes from the read position on that are in memory already, up to
    // the end of the open block, record or body, without reading any:
    // `available` says how many. For readers that pass over many small
    // records and take them from memory as long as they are whole there.
    const char* Held(size_t& available) const;

    // A block boundary (see the layout above).
    void Boundary();

    // The count of a sequence that follows, each element taking at least
    // `minimumBytes`. Reading fails when the remaining bytes cannot hold that
    // many elements.
    bool Count(uint32_t& count, size_t minimumBytes);

    // --- object records -----------------------------------------------------
    // Writing: writes object's record (a null object as tag 0).
    // Reading: reads one record, makes its object with `factory` and reads it;
    // null for a record of tag 0 and on failure.
    Storable* ReadObject(StorableFactory factory);
    void WriteObject(Storable* object);
    // Reading: reads one record into an existing object, whose class tag the
    // record must carry; `present` is false for a record of tag 0.
    bool ReadInto(Storable& object, bool& present);

    // An owned list of objects: count and records. Reading empties the list
    // first and makes each object with `factory` (by default: the class T
    // itself, whose tag must match).
    template <typename T>
    bool List(PointerList<T>& list, StorableFactory factory = &Archive::Make<T>);

    template <typename T>
    static Storable* Make(uint32_t classTag)
    {
        return classTag == T::Tag ? new T : nullptr;
    }

    // --- the written result --------------------------------------------------
    // Closes the open blocks and answers the complete archive.
    const std::string& Finish();
    // Finish and write the archive to `path` through the FileSystem seam. When
    // the write fails part-way, the file's previous content is put back.
    bool SaveFile(const KelText& path);

private:
    enum class Mode
    {
        Closed,
        Reading,
        Writing
    };
    struct Frame
    {
        size_t end = 0;    // reading: end of the record or body
        size_t sizeAt = 0; // writing: where the record's size goes
        bool blockOpen = false;
        size_t blockEnd = 0;    // reading: end of the open block
        size_t blockSizeAt = 0; // writing: where the open block's size goes
    };

    // Makes the window hold the bytes from the read position up to the
    // archive position `end`; false when the file cannot supply them.
    bool Fill(size_t end);
    bool BeginRecord(uint32_t& classTag);
    void EndRecord();
    void CloseBlock(Frame& frame);
    size_t Limit() const;
    const char* Take(size_t bytes);
    void Put(const void* bytes, size_t count);
    void Patch(size_t at, size_t value);
    uint32_t ReadU32();
    void WriteU32(uint32_t value);
    void ReadText(KelText* text);

    Mode mode = Mode::Closed;
    bool ok = false;
    uint32_t fileFlags = 0;
    uint32_t settings = 0;
    // Writing: the archive so far. Reading bytes handed over: all of them.
    std::string data;
    size_t position = 0;
    std::vector<Frame> frames;
    // Reading: the bytes at hand (in data, or in the window) begin at archive
    // position heldStart; totalSize is the size of the whole archive.
    const char* held = nullptr;
    size_t heldSize = 0;
    size_t heldStart = 0;
    size_t totalSize = 0;
    // Reading a file: where its bytes come from, and the window they pass through.
    std::unique_ptr<FileReader> source;
    std::unique_ptr<char[]> window;
    size_t windowCapacity = 0;
};

template <typename T>
bool Archive::List(PointerList<T>& list, StorableFactory factory)
{
    if (IsWriting())
    {
        uint32_t count = uint32_t(list.Count());
        Value(count);
        for (T* item : list)
            WriteObject(item);
        return Ok();
    }
    list.Clear();
    uint32_t count = 0;
    if (!Count(count, RecordHeaderSize) || !list.Reserve(int32_t(count)))
        return false;
    for (uint32_t i = 0; i < count && Ok(); ++i)
    {
        Storable* object = ReadObject(factory);
        T* item = dynamic_cast<T*>(object);
        if (object && !item)
        {
            delete object;
            Fail();
            break;
        }
        if (Ok())
            list.Add(item);
        else
            delete item;
    }
    return Ok();
}
