#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class iniLine;

// The lines of a settings file, in order, without their line ends, together
// with an index of its sections and keys.
//
// Line grammar (nothing else is recognised):
// - A line whose first character is "[" ends the section before it; it is a
//   section header for the name N when the whole line equals "[N]" (ASCII
//   letters folded, nothing trimmed).
// - A line inside a section is a key line for the key K when the text before
//   its first "=" equals K (ASCII letters folded, nothing trimmed). A line
//   without any "=" is no key line: it never matches a key, not even an empty
//   one. A line that begins with "[" is never a key line (it ends the section).
// - Every other line is kept verbatim; there is no comment syntax.
//
// Lines are named by pointer: a line stays where it is in memory while others
// are inserted or removed around it, so an edit costs the same wherever it
// happens and a write of many entries stays linear in the size of the file.
// Positions (operator[]) are available too; after an insertion or removal
// the first positional access costs one walk over the document.
//
// The searches answer what a scan from the top would find (the first matching
// header; the first matching key line between that header and the next line
// that begins with "["), but through an index: the headers are found by hash,
// and a section's keys are hashed once the section has been searched a few
// times (until then it is scanned).
// Every edit keeps the index right. The edits that settings entries make (a
// line inserted directly after its header or after another inserted line, a
// key line rewritten with the same key, a section's body removed, a new
// section put at the top) update it in place; unusual ones drop the affected
// part, which is rebuilt on the next search.
//
// Memory: the text of a loaded file is kept in one buffer (the lines point
// into it), and each line takes one fixed-size record; the texts of lines
// inserted or replaced later are kept in blocks of many. A replaced text's
// place is used again by the line when its new text fits; otherwise it is
// given back with the document.
class iniLines
{
public:
    iniLines();
    ~iniLines();
    iniLines(const iniLines&) = delete;
    iniLines& operator=(const iniLines&) = delete;

    int32_t Count() const { return count; }
    bool IsEmpty() const { return count == 0; }
    // The first line, null when the document is empty (iniLine::Next walks on).
    const iniLine* First() const { return head; }
    // The line at pos; an empty line outside the document.
    const iniLine& operator[](int32_t pos) const;

    // Replaces the document with the lines of a decoded file of `size` units
    // (with room for one unit more after them): split at LF, a CR directly
    // before the LF dropped, a last line without LF kept when it is not
    // empty, every NUL read as U+FFFD. The lines keep pointing into the text,
    // which the document takes over.
    void Assign(std::unique_ptr<char16_t[]> text, size_t size);
    // Inserts text as a new line after `at` (null: at the top) and answers it.
    const iniLine* InsertAfter(const iniLine* at, std::u16string_view text);
    // Gives `line` a new text; it keeps its place.
    void Replace(const iniLine* line, std::u16string_view text);
    // Deletes up to count lines that follow `at` (null: from the top).
    void RemoveAfter(const iniLine* at, int32_t count);
    // Deletes every line.
    void Clear();

    // The first header line of section, null when there is none.
    const iniLine* FindSection(std::u16string_view section) const;
    // The first key line for key after `header` and before the next line that
    // begins with "[", null when there is none. `header` may be any line of
    // the document.
    const iniLine* FindKey(const iniLine* header, std::u16string_view key) const;

    // The text before the first "=" of line; false when it has no "=".
    static bool KeyOf(std::u16string_view line, std::u16string_view& key);
    // Whether a and b are equal with the ASCII letters folded.
    static bool SameFolded(std::u16string_view a, std::u16string_view b);

private:
    friend class iniLine;
    struct Segment;
    // An open-addressing hash table of lines by a name drawn from each line
    // (a header's whole text, a key line's key). It stores the hash of the
    // folded name beside the line; a lookup confirms a hit on the text.
    struct Table
    {
        struct Slot
        {
            uint64_t hash;
            iniLine* line; // null: free
        };
        std::vector<Slot> slots; // a power of two in size, or empty
        uint32_t used = 0;
    };

    iniLine* NewLine(std::u16string_view text);
    void FreeText(iniLine* line);
    // Room for `units` units of text, which lasts as long as the document.
    char16_t* TextRoom(size_t units);
    void SetText(iniLine* line, std::u16string_view text);
    void LinkAfter(iniLine* at, iniLine* line);
    void DropIndex() const;
    void BuildIndex() const;
    // A new segment started by header; its number is the last in segments.
    Segment* NewSegment(iniLine* header) const;
    // Starts a segment at a line that begins with "[" while the index is
    // built, and indexes it as a section header when it is one; answers the
    // segment's number.
    int32_t OpenSegment(iniLine* line) const;
    Segment* SegmentOf(const iniLine* line) const;
    void BuildKeys(Segment& segment) const;
    static void Forget(Segment& segment);
    void BuildOrder() const;

    iniLine* head = nullptr;
    int32_t count = 0;
    // The text of the loaded file, which its lines point into.
    std::unique_ptr<char16_t[]> loadedText;
    // Line records come from blocks that hold many each (one allocation per
    // block rather than per line); removed records are used again.
    std::vector<std::unique_ptr<iniLine[]>> blocks;
    int32_t blockSize = 0;
    int32_t blockUsed = 0;
    iniLine* freeLines = nullptr;
    // The texts of lines inserted or replaced, in blocks of many; textNext
    // points at the room left in the block being filled.
    std::vector<std::unique_ptr<char16_t[]>> textBlocks;
    char16_t* textNext = nullptr;
    size_t textLeft = 0;

    mutable bool indexed = false;
    mutable std::vector<std::unique_ptr<Segment>> segments;
    // Header lines by their folded text: the first one of each name.
    mutable Table headers;
    // The lines by position, rebuilt on demand after an insertion or removal.
    mutable bool ordered = false;
    mutable std::vector<const iniLine*> order;
};

// One line of a settings document: its text without line end, followed by a
// 0 unit. Lines are made and owned by iniLines; a pointer to one stays valid
// until the line is removed or the document cleared or loaded again.
class iniLine
{
public:
    std::u16string_view View() const { return std::u16string_view(text, size_t(length)); }
    const char16_t* c_str() const { return text; }
    int32_t Length() const { return int32_t(length); }
    bool IsEmpty() const { return length == 0; }
    // 0-based; 0 outside the line.
    char16_t At(int32_t index) const { return index >= 0 && index < Length() ? text[index] : 0; }
    // Whether the line begins with "[" (and so ends the section before it).
    bool IsBoundary() const { return text[0] == u'['; }
    // The next line of the document, null after the last one.
    const iniLine* Next() const { return next; }

private:
    friend class iniLines;
    iniLine() = default;

    const char16_t* text = u"";
    iniLine* next = nullptr;
    uint32_t length : 31 = 0;
    // Whether text is a copy of the line's own rather than part of the loaded text.
    uint32_t owned : 1 = 0;
    // The number of the segment the line belongs to (for a line that begins
    // with "[", the one it starts); -1 before the first such line. Valid
    // while the document is indexed.
    int32_t segment = -1;
};
