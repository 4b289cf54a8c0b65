#include "framework/AccessibleName.h"

#include <commctrl.h>
#include <oleacc.h>

#include <map>

#include "framework/AppEntry.h"
#include "framework/SystemLibrary.h"
#include "text/AccessKey.h"
#include "text/WideText.h"

namespace
{
// The GUIDs of oleacc.h, here so that nothing links against oleacc.
constexpr GUID kAccPropServicesClass = {
    0xb5f8350b, 0x0548, 0x48b1, {0xa6, 0xee, 0x88, 0xbd, 0x00, 0xb4, 0xa5, 0xe7}};
constexpr GUID kAccPropServicesInterface = {
    0x6e26e776, 0x04f0, 0x495d, {0x80, 0xe4, 0x33, 0x30, 0x35, 0x2e, 0x31, 0x69}};
constexpr GUID kNameProperty = {
    0x608d3df8, 0x8128, 0x4aa7, {0xa4, 0x28, 0xf5, 0x5e, 0x49, 0x26, 0x72, 0x91}};
constexpr GUID kClassFactoryInterface = {
    0x00000001, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

struct Names
{
    std::map<HWND, KelText> byControl;
    // Set once something asked: names then go to the services at once.
    bool published = false;
    IAccPropServices* services = nullptr;
    bool servicesTried = false;
};

Names& State()
{
    static Names names;
    return names;
}

bool ScreenReaderRunning()
{
    BOOL running = FALSE;
    return SystemParametersInfoW(SPI_GETSCREENREADER, 0, &running, 0) && running;
}

// The services object, made once straight from oleacc.dll's class factory:
// that needs neither COM's registry nor a COM apartment.
IAccPropServices* Services()
{
    Names& names = State();
    if (names.servicesTried)
        return names.services;
    names.servicesTried = true;
    // The object is used on this thread from now on: enter COM first (the
    // application object enters it on first use, not at start).
    if (AppEntry* app = GetAppEntry())
        app->EnsureCom();
    HMODULE oleacc = LoadSystemLibrary(L"oleacc.dll");
    using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
    auto getClass = GetProc<GetClassObject>(oleacc, "DllGetClassObject");
    IClassFactory* factory = nullptr;
    if (getClass &&
        SUCCEEDED(getClass(kAccPropServicesClass, kClassFactoryInterface,
                           reinterpret_cast<void**>(&factory))) &&
        factory)
    {
        void* made = nullptr;
        if (SUCCEEDED(factory->CreateInstance(nullptr, kAccPropServicesInterface, &made)))
            names.services = static_cast<IAccPropServices*>(made);
        factory->Release();
    }
    // The library stays loaded while the services object lives (for good).
    if (!names.services && oleacc)
        FreeLibrary(oleacc);
    return names.services;
}

bool Publish(HWND control, const KelText& name)
{
    IAccPropServices* services = Services();
    return services && IsWindow(control) &&
           SUCCEEDED(services->SetHwndPropStr(control, DWORD(OBJID_CLIENT), CHILDID_SELF,
                                              kNameProperty, AsWide(name)));
}

bool IsInputControl(HWND window)
{
    wchar_t kind[32] = {};
    GetClassNameW(window, kind, 32);
    return lstrcmpiW(kind, L"Edit") == 0 || lstrcmpiW(kind, L"ComboBox") == 0 ||
           lstrcmpiW(kind, WC_LISTVIEWW) == 0 || lstrcmpiW(kind, WC_TREEVIEWW) == 0;
}

// What a window is as a label: a static text, a check box or radio button, or neither.
enum class LabelKind
{
    None,
    Static,
    Box
};

LabelKind KindOfLabel(HWND window)
{
    wchar_t kind[32] = {};
    GetClassNameW(window, kind, 32);
    const LONG_PTR style = GetWindowLongPtrW(window, GWL_STYLE);
    if (lstrcmpiW(kind, L"Static") == 0)
    {
        const LONG_PTR type = style & SS_TYPEMASK;
        const bool text = type == SS_LEFT || type == SS_CENTER || type == SS_RIGHT ||
                          type == SS_SIMPLE || type == SS_LEFTNOWORDWRAP;
        return text ? LabelKind::Static : LabelKind::None;
    }
    if (lstrcmpiW(kind, L"Button") == 0)
    {
        switch (style & BS_TYPEMASK)
        {
        case BS_CHECKBOX:
        case BS_AUTOCHECKBOX:
        case BS_3STATE:
        case BS_AUTO3STATE:
        case BS_RADIOBUTTON:
        case BS_AUTORADIOBUTTON:
            return LabelKind::Box;
        default:
            return LabelKind::None;
        }
    }
    return LabelKind::None;
}
} // namespace

void SetAccessibleName(HWND control, const KelText& name)
{
    if (!control)
        return;
    Names& names = State();
    const KelText shown = WithoutAccessKey(name);
    names.byControl[control] = shown;
    if (names.published || ScreenReaderRunning())
    {
        names.published = true;
        Publish(control, shown);
    }
}

KelText AccessibleNameOf(HWND control)
{
    const Names& names = State();
    auto found = names.byControl.find(control);
    return found == names.byControl.end() ? KelText() : found->second;
}

void NameUnlabelledControls(HWND dialog, const KelText& title)
{
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    {
        if (!IsInputControl(child))
            continue;
        HWND before = GetWindow(child, GW_HWNDPREV);
        const LabelKind label = before ? KindOfLabel(before) : LabelKind::None;
        if (label == LabelKind::Static)
            continue;
        wchar_t caption[512] = {};
        if (label == LabelKind::Box)
            GetWindowTextW(before, caption, 512);
        SetAccessibleName(child, label == LabelKind::Box ? FromWide(caption) : title);
    }
}

void ForgetAccessibleNames(HWND dialog)
{
    auto& byControl = State().byControl;
    for (auto item = byControl.begin(); item != byControl.end();)
        item = !IsWindow(item->first) || IsChild(dialog, item->first) ? byControl.erase(item)
                                                                      : std::next(item);
}

bool PublishAccessibleNames()
{
    Names& names = State();
    names.published = true;
    bool all = true;
    for (const auto& [control, name] : names.byControl)
        all = Publish(control, name) && all;
    return all && Services() != nullptr;
}
