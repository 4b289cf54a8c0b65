#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "text/KelText.h"

// The settings file that kelcfg exports and imports: UTF-8 text, one line at
// a time (LF or CR LF):
//
//   # a comment (the first non-blank character is "#")
//   [Section]
//   Key = Value
//
// Blank lines are ignored. Sections, keys and values are trimmed of blanks
// and tabs; a key ends at the first "=", so a value may hold "=" and "#".
// Section and key names match without regard to the case of ASCII letters.

// One "Key = Value" line.
struct TransferValue
{
    int32_t line = 0;
    KelText key;
    KelText value;
};

// One "[Section]" line and the values that follow it.
struct TransferSection
{
    int32_t line = 0;
    KelText name;
    std::vector<TransferValue> values;
};

// Something wrong with a line (line numbers count from 1).
struct TransferProblem
{
    int32_t line = 0;
    KelText text;
};

// Reads file bytes as text: UTF-8 with or without its byte-order mark, or
// UTF-16 little-endian with its mark. False, and the line of the first bad
// sequence, when UTF-8 text is not valid UTF-8.
bool DecodeTransferBytes(const std::string& bytes, KelText& text, int32_t& badLine);

// Splits the text into sections. Lines that are no comment, section or value,
// and values before the first section, are reported and skipped.
std::vector<TransferSection> ParseTransferText(const KelText& text,
                                               std::vector<TransferProblem>& problems);

// Builds the text of a file, line by line, with CR LF line ends.
class TransferWriter
{
public:
    // One "# " line per line of `text` ("#" alone for an empty one).
    void Comment(const KelText& text);
    // A blank line before every section but the first.
    void Section(const KelText& name);
    void Value(const KelText& key, const KelText& value);
    // A value that is shown but not set: commented out, with a note after it
    // ("# Key = Value   (note)").
    void CommentedValue(const KelText& key, const KelText& value, const KelText& note);
    void Blank();

    const KelText& Text() const { return text; }

private:
    void Line(const KelText& line);

    KelText text;
    bool anySection = false;
};
