#pragma once
#include <cstdint>

#include "text/KelText.h"

// The products the editor knows, each with the program path kinds it uses in
// the order the program paths page lists them. A descriptor is an array of
// kinds ended by -1.
struct ProductRow
{
    const char16_t* name;
    const int32_t* descriptor; // null: the product uses the default list
};

constexpr int32_t kProductCount = 7;
extern const ProductRow productTable[kProductCount];
// The kinds of a product that has no list of its own.
extern const int32_t defaultDescriptor[];

// Walks every row; each row whose name equals the product (ASCII letters
// folded) sets the answer, so the last match wins. Null when no row matches.
const int32_t* FindProductDescriptor(const KelText& product);

// The canonical spelling of a product typed in any case ("plotwise" gives
// "Plotwise"); empty text when it names no product.
KelText CanonicalProductName(const KelText& typed);

// "QUORLIN.INI" for Ledgerline, "KEL.INI" for every other product.
KelText SettingsFileNameFor(const KelText& product);
