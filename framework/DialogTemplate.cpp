#include "framework/DialogTemplate.h"

#include <cstring>

#include "framework/AppEntry.h"
#include "text/TextHolder.h"
#include "text/WideText.h"

namespace
{
// The fixed part of an extended template, up to the fields used here.
#pragma pack(push, 1)
struct ExtendedHeader
{
    WORD dialogVersion; // 1
    WORD signature;     // 0xFFFF
    DWORD helpId;
    DWORD exStyle;
    DWORD style;
    WORD itemCount;
    short x;
    short y;
    short cx;
    short cy;
};
#pragma pack(pop)

bool AllDigits(const char16_t* text)
{
    if (!text || !*text)
        return false;
    for (; *text; ++text)
        if (*text < u'0' || *text > u'9')
            return false;
    return true;
}

KelText WindowText(HWND window)
{
    wchar_t buffer[512];
    int length = GetWindowTextW(window, buffer, 512);
    return length > 0 ? FromWide(buffer, length) : KelText();
}

HINSTANCE ResourceModule()
{
    AppEntry* app = GetAppEntry();
    return app && app->ResourceInstance() ? app->ResourceInstance() : GetModuleHandleW(nullptr);
}
} // namespace

TemplateName::TemplateName(const char16_t* name)
{
    if (!name)
        return;
    const char16_t* digits = name[0] == u'#' ? name + 1 : name;
    if (AllDigits(digits) && KelText::Measure(digits) <= 5)
        id = KelText(digits).IntValue();
    else
        text = name;
}

const wchar_t* TemplateName::ResourceName() const
{
    return id != 0 ? MAKEINTRESOURCEW(id) : AsWide(text);
}

bool DialogTemplate::Load(const TemplateName& name)
{
    data.clear();
    module = nullptr;
    if (name.IsEmpty())
        return false;
    HINSTANCE candidates[] = {ResourceModule(), GetModuleHandleW(nullptr)};
    for (HINSTANCE candidate : candidates)
    {
        HRSRC found = FindResourceW(candidate, name.ResourceName(), MAKEINTRESOURCEW(5));
        if (!found)
            continue;
        HGLOBAL loaded = LoadResource(candidate, found);
        const void* bytes = loaded ? LockResource(loaded) : nullptr;
        DWORD size = SizeofResource(candidate, found);
        if (!bytes || size < sizeof(DLGTEMPLATE))
            continue;
        data.assign((size + 3) / 4, 0);
        std::memcpy(data.data(), bytes, size);
        module = candidate;
        return true;
    }
    return false;
}

bool DialogTemplate::Exists(const TemplateName& name)
{
    return DialogTemplate().Load(name);
}

bool DialogTemplate::IsExtended() const
{
    if (data.empty())
        return false;
    auto* header = reinterpret_cast<const ExtendedHeader*>(data.data());
    return header->dialogVersion == 1 && header->signature == 0xFFFF;
}

DWORD DialogTemplate::Style() const
{
    if (data.empty())
        return 0;
    if (IsExtended())
        return reinterpret_cast<const ExtendedHeader*>(data.data())->style;
    return Data()->style;
}

DWORD DialogTemplate::ExStyle() const
{
    if (data.empty())
        return 0;
    if (IsExtended())
        return reinterpret_cast<const ExtendedHeader*>(data.data())->exStyle;
    return Data()->dwExtendedStyle;
}

void DialogTemplate::SetStyle(DWORD style)
{
    if (data.empty())
        return;
    if (IsExtended())
        reinterpret_cast<ExtendedHeader*>(data.data())->style = style;
    else
        reinterpret_cast<DLGTEMPLATE*>(data.data())->style = style;
}

void DialogTemplate::SetExStyle(DWORD exStyle)
{
    if (data.empty())
        return;
    if (IsExtended())
        reinterpret_cast<ExtendedHeader*>(data.data())->exStyle = exStyle;
    else
        reinterpret_cast<DLGTEMPLATE*>(data.data())->dwExtendedStyle = exStyle;
}

SIZE DialogTemplate::Size() const
{
    SIZE size = {0, 0};
    if (data.empty())
        return size;
    if (IsExtended())
    {
        auto* header = reinterpret_cast<const ExtendedHeader*>(data.data());
        size.cx = header->cx;
        size.cy = header->cy;
    }
    else
    {
        size.cx = Data()->cx;
        size.cy = Data()->cy;
    }
    return size;
}

void DialogTemplate::MakeChild()
{
    const DWORD topLevel = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX |
                           WS_MAXIMIZEBOX | WS_VISIBLE | WS_DISABLED | DS_MODALFRAME | DS_SYSMODAL |
                           DS_CENTER | DS_CENTERMOUSE | DS_ABSALIGN;
    SetStyle((Style() & ~topLevel) | WS_CHILD | DS_CONTROL | WS_CLIPSIBLINGS);
    SetExStyle((ExStyle() & ~(WS_EX_DLGMODALFRAME | WS_EX_WINDOWEDGE | WS_EX_CLIENTEDGE |
                              WS_EX_APPWINDOW | WS_EX_TOOLWINDOW | WS_EX_TOPMOST)) |
               WS_EX_CONTROLPARENT);
}

bool IsTextReference(const KelText& text, int32_t& number)
{
    if (text.Length() < 2 || text.At(0) != u'^' || text.Length() > 8)
        return false;
    if (!AllDigits(text.c_str() + 1))
        return false;
    number = KelText(text.c_str() + 1).IntValue();
    return true;
}

KelText ResolveTextReference(const KelText& text)
{
    int32_t number = 0;
    return IsTextReference(text, number) ? KelText(DictText(number)) : text;
}

void TranslateReferences(HWND window)
{
    if (!window)
        return;
    int32_t number = 0;
    KelText caption = WindowText(window);
    if (IsTextReference(caption, number))
        SetWindowTextW(window, AsWide(DictText(number)));
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    {
        KelText text = WindowText(child);
        if (IsTextReference(text, number))
            SetWindowTextW(child, AsWide(DictText(number)));
    }
}
