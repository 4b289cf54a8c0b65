#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "text/TextFormat.h"

// The system's string of UTF-16 units.
//
// A null buffer is the empty string: a default-constructed or emptied KelText
// holds no storage, and every reader treats a null buffer as "". Comparisons
// fold the ASCII letters only, so "abc" == "ABC" but "é" != "É". Positions are
// 1-based (CharAt, Find, Mid, InsertChars, Pad). Storage grows in granules
// (see Reserve) and comes from the shared TextHeap.
class KelText
{
public:
    KelText() noexcept : buffer(nullptr), length(0), capacity(0) {}
    KelText(const char16_t* text);
    // The first `count` units of `text` (fewer when it ends earlier).
    KelText(const char16_t* text, int32_t count);
    KelText(const KelText& other);
    KelText(KelText&& other) noexcept;
    // Releases the storage when the text is not empty, then leaves the poison
    // value 0x12345678 in the buffer field so that a use after destruction
    // points at an unmistakable bad address. An empty text with storage (left
    // by Reserve or Sync) keeps it: callers that reserve also fill.
    virtual ~KelText();

    KelText& operator=(const char16_t* text);
    KelText& operator=(const KelText& other);
    KelText& operator=(KelText&& other) noexcept;

    // --- access ---------------------------------------------------------
    // Never null: the shared empty string when there is no buffer.
    const char16_t* c_str() const;
    int32_t Length() const { return length; }
    bool IsEmpty() const { return length == 0; }
    int32_t Capacity() const { return capacity; }
    // The buffer itself, null when the text holds no storage.
    const char16_t* RawBuffer() const { return buffer; }
    // 0-based access; 0 outside the text.
    char16_t At(int32_t index) const;
    std::u16string_view View() const { return std::u16string_view(c_str(), size_t(length)); }

    // --- concatenation ----------------------------------------------------
    friend KelText operator+(const KelText& left, const KelText& right);
    friend KelText operator+(const KelText& left, const char16_t* right);
    friend KelText operator+(const KelText& left, char16_t right);
    friend KelText operator+(const char16_t* left, const KelText& right);
    KelText& operator+=(const KelText& text);
    KelText& operator+=(const char16_t* text);
    KelText& operator+=(char16_t ch);
    // Appends the first `count` units of `text`.
    KelText& Append(const char16_t* text, int32_t count);

    // --- formatting -------------------------------------------------------
    // Replaces the text with `pattern` formatted with the Microsoft wide-printf
    // meanings (see FormatInto); an argument may be this text itself. The
    // result ends at its first zero unit (a %c of 0). A null pattern leaves
    // the text empty.
    template <typename... Args>
    KelText& Format(const char16_t* pattern, const Args&... args)
    {
        const FormatArg list[sizeof...(Args) + 1] = {FormatArg(args)..., FormatArg()};
        return FormatList(pattern, list, int32_t(sizeof...(Args)));
    }
    KelText& FormatList(const char16_t* pattern, const FormatArg* args, int32_t count);
    // A new text formatted from `pattern`.
    template <typename... Args>
    static KelText Formatted(const char16_t* pattern, const Args&... args)
    {
        KelText text;
        text.Format(pattern, args...);
        return text;
    }

    // --- comparison (ASCII letters folded) ----------------------------------
    bool operator==(const char16_t* text) const;
    bool operator==(const KelText& other) const;
    friend bool operator==(const char16_t* left, const KelText& right) { return right == left; }
    bool operator!=(const char16_t* text) const { return !(*this == text); }
    bool operator!=(const KelText& other) const { return !(*this == other); }
    friend bool operator!=(const char16_t* left, const KelText& right) { return !(right == left); }
    // Exact, unit-by-unit equality.
    bool SameAs(const KelText& other) const;
    // Whether the text begins with `prefix` (ASCII letters folded); a null or
    // empty prefix always matches.
    bool StartsWith(const char16_t* prefix) const;
    // Folds one unit: 'a'..'z' become 'A'..'Z', everything else stays.
    static char16_t Fold(char16_t ch)
    {
        return (ch >= u'a' && ch <= u'z') ? char16_t(ch - 32) : ch;
    }

    // --- editing in place -------------------------------------------------
    // side 1: end only; -1: beginning only; otherwise both. ch 0 trims blanks
    // and tabs, any other ch only that character.
    KelText& Trim(int side = 0, char16_t ch = 0);
    // Cuts to maxLen (when non-zero and shorter), then fills with ch up to
    // width: mode 0 centres, 1 pads on the left, 0xFFFFFFFF on the right.
    KelText& Pad(int32_t width, uint32_t mode, int32_t maxLen, char16_t ch);
    KelText& ToLower();
    KelText& ToUpper();
    // Upper-cases the first letter of every word and lower-cases the rest. A
    // word starts at the beginning and after every '.'; with breakOnPunctuation
    // also after any unit that is not a letter, digit or '-'. Units above 0x7F
    // count as letters but keep their case.
    KelText& Capitalise(bool breakOnPunctuation);
    KelText& Reverse();
    // Re-measures the length up to the terminator after the buffer was written
    // through Buffer(), and grows the storage by the usual rounding. Answers
    // whether a buffer exists.
    bool Sync();

    // --- positions (1-based) ----------------------------------------------
    // The unit at pos (1..length) and what follows; the shared empty string otherwise.
    const char16_t* CharAt(int32_t pos) const;
    // Position of the first occurrence of needle at or after start, 0 when none.
    // A negative start counts back from the end; below 1 is taken as 1.
    int32_t Find(const char16_t* needle, int32_t start = 1, bool ignoreCase = false) const;
    int32_t Find(char16_t ch, int32_t start = 1) const;
    // Keeps positions min(from,to)..max(from,to). A value below 1 counts back
    // from the end (value + length) and is then raised to 1.
    KelText& Mid(int32_t from, int32_t to);
    // Inserts count copies of ch before pos (clamped to length + 1); pos 0 or
    // below counts back from the end, so 0 appends.
    KelText& InsertChars(char16_t ch, int32_t pos, int32_t count);
    // Removes count units starting at pos (1-based, clamped).
    KelText& Delete(int32_t pos, int32_t count);
    // The units [pos, pos + count) as a new text (1-based, clamped).
    KelText Sub(int32_t pos, int32_t count) const;

    // --- numbers ------------------------------------------------------------
    // Decimal text of value; with group, values of 1000 and more get the
    // thousands separator every three digits (negative values never do).
    KelText& SetNumber(int64_t value, bool group = false);
    // Fixed-point text with `decimals` places and the current decimal mark.
    KelText& SetReal(double value, int decimals);
    // Up to 16 hexadecimal digits from the start: '0'-'9', 'a'-'f', and every
    // 'A'-'Z' as its letter value minus 55 ('G' is 16, 'Z' is 35).
    uint64_t HexValue() const;
    // The leading decimal integer (blanks, then an optional sign); 0 when none.
    // Values beyond 32 bits are clamped.
    int32_t IntValue() const;
    // The leading decimal number with "." as the decimal mark; 0 when none.
    double RealValue() const;

    // --- storage -------------------------------------------------------------
    // n = 0 releases the storage. Otherwise the capacity becomes at least n + 1
    // rounded up to a granule (16 up to 64 units, 128 up to 512, 1024 up to
    // 4096, else 16384), always adding a granule; storage never shrinks. Old
    // contents are carried over only with keep. The length is not changed.
    bool Reserve(int32_t n, bool keep);
    // Writable buffer (null when there is no storage); call Sync afterwards.
    char16_t* Buffer() { return buffer; }

    // --- conversions ------------------------------------------------------
    static KelText FromUtf8(std::string_view text);
    std::string ToUtf8() const;

    // The shared empty string handed out for null buffers and bad positions.
    static const char16_t* EmptyText();
    // Length of a null-terminated UTF-16 string (0 for null).
    static int32_t Measure(const char16_t* text);

private:
    void SetUnits(const char16_t* text, int32_t count);

    char16_t* buffer;
    int32_t length;
    int32_t capacity;
};
