#include "app/SettingsContext.h"

#include <memory>
#include <vector>

#include "app/ProductTable.h"
#include "settings/iniFile.h"

namespace
{
const char16_t programPaths[] = u"PROGRAM PATHS";

struct KindInfo
{
    int32_t kind;
    const char16_t* name;
    const char16_t* defaultFolder;
};

// Key names and the default folders, inside the configuration folder.
const KindInfo kindInfo[] = {
    {3, u"Main", u""},
    {4, u"Project", u"Projects/"},
    {5, u"Parts", u"Parts/"},
    {8, u"CNC", u"CNC/"},
    {9, u"Database", u"Database/"},
    {15, u"DXF", u"DXF/"},
    {16, u"Blocks", u"Blocks/"},
    {32, u"Filters", u"Filters/"},
    {33, u"Remnants", u"Remnants/"},
    {34, u"Images", u"Images/"},
    {35, u"Reports", u"Reports/"},
    {36, u"Items", u"Items/"},
    {37, u"Scripts", u"Scripts/"},
    {38, u"Backup", u"Backup/"},
    {39, u"Profiles", u"Profiles/"},
    {40, u"Textures", u"Textures/"},
    {41, u"Download", u"Download/"},
    {42, u"Common", u"Common/"},
    {45, u"Rotary NC", u"CNC/Rotary/"},
    {46, u"Shear NC", u"CNC/Shear/"},
};

const KindInfo* FindKind(int32_t kind)
{
    for (const KindInfo& info : kindInfo)
        if (info.kind == kind)
            return &info;
    return nullptr;
}

// "/" separators and a trailing "/"; empty stays empty.
KelText NormalFolder(const KelText& folder)
{
    KelText text(folder);
    text.Trim();
    for (int32_t i = 1; i <= text.Length(); ++i)
        if (*text.CharAt(i) == u'\\')
            text.Buffer()[i - 1] = u'/';
    if (!text.IsEmpty() && text.At(text.Length() - 1) != u'/')
        text += u'/';
    return text;
}
} // namespace

SettingsContext& SettingsContext::Instance()
{
    static SettingsContext context;
    return context;
}

void SettingsContext::SetSettingsFile(const KelText& path, const KelText& productName,
                                      const int32_t* descriptor)
{
    settingsFile = path;
    product = productName;
    kinds.Assign(descriptor ? descriptor : defaultDescriptor);
    for (Slot& slot : slots)
        slot = Slot();
    pathsLoaded = false;
}

KelText SettingsContext::SettingsFolder() const
{
    KelText folder = NormalFolder(settingsFile);
    // NormalFolder added a "/" after the file name: cut back to the last separator.
    for (int32_t i = folder.Length() - 1; i >= 1; --i)
        if (folder.At(i - 1) == u'/')
            return folder.Sub(1, i);
    return KelText();
}

KelText SettingsContext::KindName(int32_t kind)
{
    const KindInfo* info = FindKind(kind);
    return KelText(info ? info->name : u"ERROR");
}

const char16_t* SettingsContext::DefaultFolder(int32_t kind)
{
    const KindInfo* info = FindKind(kind);
    return info ? info->defaultFolder : u"";
}

void SettingsContext::LoadPaths()
{
    if (pathsLoaded)
        return;
    pathsLoaded = true;
    iniFile file(settingsFile);
    KelText read[kKindSlots];
    for (const KindInfo& info : kindInfo)
        file.Add(new iniString(programPaths, info.name, &read[info.kind], KelText()));
    file.ReadAll();
    for (const KindInfo& info : kindInfo)
    {
        Slot& slot = slots[info.kind];
        if (slot.changed || read[info.kind].IsEmpty())
            continue;
        slot.text = read[info.kind];
        slot.known = true;
    }
}

KelText SettingsContext::PathOf(int32_t kind)
{
    if (kind < 0 || kind >= kKindSlots)
        return KelText();
    LoadPaths();
    const Slot& slot = slots[kind];
    if (slot.known)
        return NormalFolder(slot.text);
    return SettingsFolder() + DefaultFolder(kind);
}

bool SettingsContext::IsPathSet(int32_t kind)
{
    if (kind < 0 || kind >= kKindSlots)
        return false;
    LoadPaths();
    return slots[kind].known;
}

void SettingsContext::SetPath(int32_t kind, const KelText& folder)
{
    if (kind < 0 || kind >= kKindSlots || !FindKind(kind))
        return;
    LoadPaths();
    Slot& slot = slots[kind];
    slot.text = NormalFolder(folder);
    slot.known = !slot.text.IsEmpty();
    slot.changed = true;
}

int32_t SettingsContext::Save()
{
    if (settingsFile.IsEmpty())
        return 0;
    LoadPaths();
    // One entry per kind of the product (a kind listed twice is written
    // once): its folder as read or set, else its default, so that the file
    // names every folder the product uses. Keys the file has keep their
    // places; missing ones are added.
    iniFile file(settingsFile);
    std::vector<KelText> values;
    values.reserve(size_t(kinds.Count()));
    bool added[kKindSlots] = {};
    for (int32_t i = 0; i < kinds.Count(); ++i)
    {
        const int32_t kind = kinds.At(i);
        if (kind < 0 || kind >= kKindSlots || added[kind] || !FindKind(kind))
            continue;
        added[kind] = true;
        values.push_back(slots[kind].known ? slots[kind].text : PathOf(kind));
        file.Add(new iniString(programPaths, KindName(kind), &values.back(), KelText()));
    }
    // The page that asked reports a failure in its own words.
    const int32_t saved = file.SaveEntries();
    if (saved)
        for (Slot& slot : slots)
            slot.changed = false;
    return saved;
}
