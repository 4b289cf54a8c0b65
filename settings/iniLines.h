#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "text/KelText.h"

// The lines of a settings file, in order, without their line ends: an owning
// array of texts together with an index of its sections and keys.
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
// The searches answer what a scan from the top would find (the first matching
// header; the first matching key line between that header and the next line
// that begins with "["), but through an index built once per load, so that
// looking up many entries in a large file does not rescan it each time. Every
// edit goes through Insert, Replace or Remove, which keep the index right: the
// common edits (a key line inserted directly after its header, a key line
// rewritten with the same key, a section's body removed, a new section put at
// the top) update it in place; unusual ones drop the affected part, which is
// rebuilt on the next search.
class iniLines
{
public:
    iniLines() = default;
    ~iniLines();
    iniLines(const iniLines&) = delete;
    iniLines& operator=(const iniLines&) = delete;

    int32_t Count() const { return int32_t(items.size()); }
    bool IsEmpty() const { return items.empty(); }
    // The line at pos; the shared empty text outside the document.
    const KelText& Line(int32_t pos) const;
    const KelText& operator[](int32_t pos) const { return Line(pos); }

    // Inserts text as the line at pos (clamped to 0..Count()).
    void Insert(int32_t pos, KelText text);
    void Append(KelText text) { Insert(Count(), std::move(text)); }
    // Replaces the line at pos; nothing happens outside the document.
    void Replace(int32_t pos, KelText text);
    // Deletes count lines from pos on (clamped to the document).
    void Remove(int32_t pos, int32_t count);
    // Deletes every line.
    void Clear();

    // Position of the first header line of section, -1 when there is none.
    int32_t FindSection(const KelText& section) const;
    // Position of the first key line for key after the line at header and
    // before SectionEnd(header), -1 when there is none.
    int32_t FindKey(int32_t header, const KelText& key) const;
    // Position of the first line after header that begins with "[", or
    // Count() when none follows.
    int32_t SectionEnd(int32_t header) const;

    // Whether line begins with "[" (and so ends the section before it).
    static bool IsBoundary(const KelText& line) { return line.At(0) == u'['; }
    // The text before the first "=" of line; false when it has no "=".
    static bool KeyOf(const KelText& line, std::u16string_view& key);
    // Whether a and b are equal with the ASCII letters folded.
    static bool SameFolded(std::u16string_view a, std::u16string_view b);

private:
    // The lines from one line that begins with "[" up to the next one.
    struct Segment
    {
        explicit Segment(int32_t position) : start(position) {}
        int32_t start;
        // Folded key -> distance of its first key line from the segment's end.
        // Counted from the end so that inserting a line directly after the
        // header (the usual edit) leaves every entry right.
        std::unordered_map<std::u16string, int32_t> keys;
        bool keysBuilt = false;
    };
    using SegmentList = std::vector<std::unique_ptr<Segment>>;

    void BuildIndex() const;
    void DropIndex() const;
    // The first segment that starts at or after pos.
    SegmentList::iterator FirstFrom(int32_t pos) const;
    int32_t EndOf(SegmentList::iterator segment) const;
    void BuildKeys(SegmentList::iterator segment) const;
    static void Forget(Segment* segment);
    static std::u16string Folded(std::u16string_view text);

    // The lines are owned here. Their objects come from blocks that hold many
    // lines each (one allocation per block rather than per line, which matters
    // when a large file is read); a removed line's slot is used again.
    struct alignas(KelText) Slot
    {
        unsigned char raw[sizeof(KelText)];
    };
    KelText* MakeLine(KelText&& text);
    void DestroyLine(KelText* line);

    std::vector<KelText*> items;
    std::vector<std::unique_ptr<Slot[]>> blocks;
    int32_t blockSize = 0;
    int32_t blockUsed = 0;
    std::vector<KelText*> freeSlots;
    mutable bool indexed = false;
    // Sorted by start; the lines before the first one belong to no section.
    mutable SegmentList segments;
    // Folded header line ("[NAME]") -> the first segment it starts.
    mutable std::unordered_map<std::u16string, Segment*> headers;
};
