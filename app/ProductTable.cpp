#include "app/ProductTable.h"

namespace
{
const int32_t plotwiseKinds[] = {3, 38, 9, 4, 35, 34, 36, 37, 39, 41, 42, 40, 16, -1};
const int32_t shopwiseKinds[] = {3, 38, 15, 9, 4, 35, 34, 36, 37, 39, 41, 42, 40, -1};
// Backup (38) is listed twice for Ledgerline; the list is kept as it stands.
const int32_t ledgerlineKinds[] = {3, 38, 9, 35, 38, 4, -1};
// One list shared by CutwiseComponents and Fieldpost.
const int32_t componentKinds[] = {3, 9, 38, 4, 35, 34, 36, 39, 41, 42, -1};
const int32_t tallywiseKinds[] = {3, 38, 9, 4, 35, 34, 36, 37, 39, 41, 42, 40, -1};

// The names that "-app=" accepts, in the order they are tried.
const char16_t* const knownProducts[] = {u"Cutwise",   u"Plotwise",          u"Shopwise",
                                         u"Tallywise", u"CutwiseComponents", u"Fieldpost",
                                         u"Ledgerline"};
} // namespace

const ProductRow productTable[kProductCount] = {
    {u"Plotwise", plotwiseKinds},
    {u"Shopwise", shopwiseKinds},
    {u"Ledgerline", ledgerlineKinds},
    {u"CutwiseComponents", componentKinds},
    {u"Fieldpost", componentKinds},
    {u"Tallywise", tallywiseKinds},
    {u"Cutwise", nullptr},
};

const int32_t defaultDescriptor[] = {3,  4,  38, 9,  15, 5,  8,  32, 33, 34, 35,
                                     36, 37, 39, 40, 41, 42, 45, 46, 16, -1};

const int32_t* FindProductDescriptor(const KelText& product)
{
    const int32_t* descriptor = nullptr;
    for (const ProductRow& row : productTable)
        if (product == row.name)
            descriptor = row.descriptor;
    return descriptor;
}

KelText CanonicalProductName(const KelText& typed)
{
    for (const char16_t* name : knownProducts)
        if (typed == name)
            return KelText(name);
    return KelText();
}

KelText SettingsFileNameFor(const KelText& product)
{
    return KelText(product == u"Ledgerline" ? u"QUORLIN.INI" : u"KEL.INI");
}
