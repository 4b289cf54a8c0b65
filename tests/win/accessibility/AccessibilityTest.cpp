// Every window the editor shows, for every product and in every language of
// the dictionary built from lang/: each check box, push button and each label
// before an input control has an access key; no key is used twice on what is
// on screen at once (the page, the dialog's buttons and tabs); Alt+the key of
// a label puts the focus on its control; each input control is named by its
// label (its z-order predecessor) or by a name of its own; list views name
// their columns; no caption is clipped by its control.
//
// The names are read back through oleacc (AccessibleObjectFromWindow and
// get_accName) where the system answers with the name; where it does not
// (Wine names a control by its own text only), the z-order rule stands, and
// the test says how many names each way confirmed.
#include <windows.h>

#include <commctrl.h>
#include <oleacc.h>

#include <cstdio>
#include <cwctype>
#include <map>
#include <string>
#include <vector>

#include "app/ConfigPicker.h"
#include "app/KelConfigDialog.h"
#include "app/LocateConfiguration.h"
#include "app/pages/EditWebLink.h"
#include "framework/AccessibleName.h"
#include "tests/win/pages/PageTestSupport.h"
#include "text/AccessKey.h"
#include "text/TextHolder.h"

namespace
{
const char16_t* const kProducts[] = {u"Plotwise",          u"Shopwise",   u"Tallywise", u"Cutwise",
                                     u"CutwiseComponents", u"Ledgerline", u"Fieldpost"};
const char16_t* const kLanguages[] = {u"English", u"Deutsch", u"Fran\u00e7ais"};

KelText DictionaryPath()
{
    // The build's dictionary, by its Unix path on Wine's drive Z:.
    std::u16string path = u"Z:";
    for (const char* c = KEL_DICTIONARY; *c; ++c)
        path += char16_t(*c == '/' ? '\\' : *c);
    return KelText(path.c_str());
}

std::string Narrow(const KelText& text)
{
    std::string out;
    for (char16_t unit : text.View())
        out += unit < 0x80 ? char(unit) : '?';
    return out;
}

std::wstring ClassOf(HWND window)
{
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    return name;
}

enum class Kind
{
    Other,
    Label, // a static text
    Box,   // check box or radio button
    Push,  // push button, also an owner-drawn picture button
    Input, // edit, combo box, list view, tree view
    Tabs,
};

Kind KindOf(HWND window)
{
    const std::wstring name = ClassOf(window);
    const LONG_PTR style = GetWindowLongPtrW(window, GWL_STYLE);
    if (!lstrcmpiW(name.c_str(), L"Static"))
    {
        const LONG_PTR type = style & SS_TYPEMASK;
        return type <= SS_RIGHT || type == SS_SIMPLE || type == SS_LEFTNOWORDWRAP ? Kind::Label
                                                                                  : Kind::Other;
    }
    if (!lstrcmpiW(name.c_str(), L"Button"))
    {
        switch (style & BS_TYPEMASK)
        {
        case BS_PUSHBUTTON:
        case BS_DEFPUSHBUTTON:
        case BS_OWNERDRAW:
            return Kind::Push;
        case BS_GROUPBOX:
            return Kind::Other;
        default:
            return Kind::Box;
        }
    }
    if (!lstrcmpiW(name.c_str(), L"Edit") || !lstrcmpiW(name.c_str(), L"ComboBox") ||
        !lstrcmpiW(name.c_str(), WC_LISTVIEWW) || !lstrcmpiW(name.c_str(), WC_TREEVIEWW))
        return Kind::Input;
    if (!lstrcmpiW(name.c_str(), WC_TABCONTROLW))
        return Kind::Tabs;
    return Kind::Other;
}

// The controls on screen: visible children, through the visible pages.
void Collect(HWND parent, std::vector<HWND>& controls)
{
    for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    {
        if (!(GetWindowLongPtrW(child, GWL_STYLE) & WS_VISIBLE))
            continue;
        if (ClassOf(child) == L"#32770")
            Collect(child, controls);
        else
            controls.push_back(child);
    }
}

KelText OleaccName(HWND control)
{
    // IID_IAccessible, here because two import libraries define it.
    constexpr GUID kAccessible = {
        0x618736e0, 0x3c3d, 0x11cf, {0x81, 0x0c, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
    IAccessible* object = nullptr;
    if (FAILED(AccessibleObjectFromWindow(control, DWORD(OBJID_CLIENT), kAccessible,
                                          reinterpret_cast<void**>(&object))) ||
        !object)
        return KelText();
    VARIANT self;
    VariantInit(&self);
    self.vt = VT_I4;
    self.lVal = CHILDID_SELF;
    BSTR name = nullptr;
    KelText result;
    if (object->get_accName(self, &name) == S_OK && name)
        result = FromWide(name);
    SysFreeString(name);
    object->Release();
    return result;
}

// What Windows sends a window moved onto a monitor of `dpi`: the new
// resolution and a rectangle of the size scaled to it, at the same place.
RECT MoveToDpi(HWND window, int from, int dpi)
{
    RECT now = {};
    GetWindowRect(window, &now);
    RECT suggested = {now.left, now.top, now.left + MulDiv(now.right - now.left, dpi, from),
                      now.top + MulDiv(now.bottom - now.top, dpi, from)};
    SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(dpi, dpi), LPARAM(&suggested));
    return suggested;
}

int FontHeight(HWND window)
{
    LOGFONTW face = {};
    GetObjectW(HFONT(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof(face), &face);
    return face.lfHeight < 0 ? -face.lfHeight : face.lfHeight;
}

// The screen's resolution: 96 dpi in the shared prefix, 144 where ctest runs
// the test again in a prefix of its own (win_accessibility_144dpi).
int ScreenDpi()
{
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi;
}

// Whether the caption fits the control: its text measured with the control's
// font against the room the control leaves for it.
bool CaptionFits(HWND control, Kind kind, int dpi, std::string& need)
{
    const KelText text = TextOf(control);
    if (text.IsEmpty())
        return true;
    RECT client = {};
    GetClientRect(control, &client);
    HDC dc = GetDC(control);
    HGDIOBJ old = SelectObject(dc, HGDIOBJ(SendMessageW(control, WM_GETFONT, 0, 0)));
    TEXTMETRICW metrics = {};
    GetTextMetricsW(dc, &metrics);
    int room = client.right;
    if (kind == Kind::Box) // the box and the gap before the text
        room -= MulDiv(GetSystemMetrics(SM_CXMENUCHECK), dpi, ScreenDpi()) + MulDiv(4, dpi, 96);
    if (kind == Kind::Push) // border and focus rectangle
        room -= MulDiv(8, dpi, 96);
    const LONG_PTR style = GetWindowLongPtrW(control, GWL_STYLE);
    const bool lines =
        kind == Kind::Label ? client.bottom >= 2 * metrics.tmHeight : (style & BS_MULTILINE) != 0;
    RECT rect = {0, 0, room, 0};
    DrawTextW(dc, AsWide(text), -1, &rect,
              DT_CALCRECT | (lines ? DT_WORDBREAK : DT_SINGLELINE) | DT_EXPANDTABS);
    SelectObject(dc, old);
    ReleaseDC(control, dc);
    need = std::to_string(rect.right) + "x" + std::to_string(rect.bottom) + " in " +
           std::to_string(room) + "x" + std::to_string(client.bottom);
    return rect.right <= room && rect.bottom <= client.bottom;
}

struct Tally
{
    int screens = 0;
    int controls = 0;
    int keys = 0;
    int fitted = 0;
    int labelByOleacc = 0;   // oleacc announced the label's text
    int ownNameByOleacc = 0; // oleacc announced the name given to the control
    int namedByZOrder = 0;
    int altKeys = 0;
};

class Accessibility : public PageTest
{
protected:
    Accessibility() { CoInitialize(nullptr); }

public:
    Accessibility(const Accessibility&) = delete;
    Accessibility& operator=(const Accessibility&) = delete;
    ~Accessibility() override
    {
        TextHolder::Instance().Clear();
        CoUninitialize();
    }

protected:
    void UseLanguage(const char16_t* language)
    {
        ASSERT_TRUE(TextHolder::Instance().Load(DictionaryPath(), language, false))
            << Narrow(DictionaryPath());
    }

    // Checks what `top` shows now; `where` names it in failures.
    void CheckScreen(HWND top, const std::string& where, int dpi)
    {
        ++tally.screens;
        std::vector<HWND> controls;
        Collect(top, controls);
        std::map<char16_t, std::vector<std::string>> keys;
        auto addKey = [&](const KelText& caption)
        {
            if (char16_t key = AccessKeyOf(caption))
            {
                keys[key].push_back(Narrow(caption));
                ++tally.keys;
            }
        };
        std::vector<std::pair<HWND, HWND>> labelled; // label, its control
        for (HWND control : controls)
        {
            ++tally.controls;
            const Kind kind = KindOf(control);
            const KelText text = TextOf(control);
            const int id = GetDlgCtrlID(control);
            if (kind == Kind::Tabs)
            {
                const int count = int(SendMessageW(control, TCM_GETITEMCOUNT, 0, 0));
                for (int i = 0; i < count; ++i)
                {
                    wchar_t caption[128] = {};
                    TCITEMW item = {};
                    item.mask = TCIF_TEXT;
                    item.pszText = caption;
                    item.cchTextMax = 128;
                    SendMessageW(control, TCM_GETITEMW, WPARAM(i), LPARAM(&item));
                    addKey(FromWide(caption));
                }
                continue;
            }
            if (kind == Kind::Push || kind == Kind::Box || kind == Kind::Label)
            {
                const bool ownerDrawn =
                    (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) == BS_OWNERDRAW;
                std::string need;
                if (!(kind == Kind::Push && ownerDrawn))
                {
                    ++tally.fitted;
                    EXPECT_TRUE(CaptionFits(control, kind, dpi, need))
                        << where << ": \"" << Narrow(text) << "\" is clipped (" << need << ")";
                }
            }
            HWND next = GetWindow(control, GW_HWNDNEXT);
            switch (kind)
            {
            case Kind::Push:
                // OK and Cancel answer Enter and Esc, as everywhere in Windows.
                if (id == IDOK || id == IDCANCEL)
                    break;
                EXPECT_NE(AccessKeyOf(text), 0) << where << ": button " << Narrow(text);
                addKey(text);
                break;
            case Kind::Box:
                EXPECT_NE(AccessKeyOf(text), 0) << where << ": box " << Narrow(text);
                addKey(text);
                break;
            case Kind::Label:
                if (next && KindOf(next) == Kind::Input)
                {
                    EXPECT_NE(AccessKeyOf(text), 0) << where << ": label " << Narrow(text);
                    labelled.emplace_back(control, next);
                }
                addKey(text);
                break;
            case Kind::Input:
                CheckName(control, where);
                break;
            default:
                break;
            }
        }
        for (const auto& [key, captions] : keys)
        {
            if (captions.size() < 2)
                continue;
            std::string all;
            for (const std::string& caption : captions)
                all += " \"" + caption + "\"";
            ADD_FAILURE() << where << ": the key " << Narrow(KelText(&key, 1)) << " is used by"
                          << all;
        }
        for (const auto& [label, target] : labelled)
            CheckAltKey(top, label, target, where);
    }

    // The name a screen reader announces: its label's caption (z-order
    // predecessor), else the name given to it; read back through oleacc.
    void CheckName(HWND control, const std::string& where)
    {
        HWND before = GetWindow(control, GW_HWNDPREV);
        const Kind label = before ? KindOf(before) : Kind::Other;
        KelText expected;
        if (label == Kind::Label)
            expected = WithoutAccessKey(TextOf(before));
        else
        {
            expected = AccessibleNameOf(control);
            if (label == Kind::Box)
            {
                EXPECT_EQ(Narrow(expected), Narrow(WithoutAccessKey(TextOf(before)))) << where;
            }
        }
        EXPECT_FALSE(expected.IsEmpty())
            << where << ": control " << GetDlgCtrlID(control) << " has no name";
        if (OleaccName(control) != expected)
            ++tally.namedByZOrder;
        else if (label == Kind::Label)
            ++tally.labelByOleacc;
        else
            ++tally.ownNameByOleacc;
        if (ClassOf(control) == WC_LISTVIEWW)
        {
            HWND header = HWND(SendMessageW(control, LVM_GETHEADER, 0, 0));
            const int columns = int(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
            EXPECT_GT(columns, 0) << where;
            for (int i = 0; i < columns; ++i)
            {
                wchar_t heading[128] = {};
                LVCOLUMNW column = {};
                column.mask = LVCF_TEXT;
                column.pszText = heading;
                column.cchTextMax = 128;
                SendMessageW(control, LVM_GETCOLUMNW, WPARAM(i), LPARAM(&column));
                EXPECT_NE(heading[0], 0) << where << ": column " << i << " has no heading";
            }
        }
    }

    // Alt+the label's key, as the dialog manager gets it from the message
    // loop, puts the focus on the label's control.
    void CheckAltKey(HWND top, HWND label, HWND target, const std::string& where)
    {
        const char16_t key = AccessKeyOf(TextOf(label));
        if (!key || !IsWindowEnabled(target))
            return;
        SetFocus(nullptr);
        MSG message = {top, WM_SYSCHAR, WPARAM(towlower(wint_t(key))), LPARAM(0x20000001), 0, {}};
        IsDialogMessageW(top, &message);
        HWND focus = GetFocus();
        EXPECT_TRUE(focus == target || IsChild(target, focus))
            << where << ": Alt+" << Narrow(KelText(&key, 1)) << " of \"" << Narrow(TextOf(label))
            << "\" did not reach its control";
        ++tally.altKeys;
    }

    Tally tally;
};

// Every window made at the screen's resolution, then moved to a monitor of
// the other one of 96 and 144 dpi.
TEST_F(Accessibility, EveryWindowOfEveryProductInEveryLanguageAt96And144Dpi)
{
    const int made = ScreenDpi();
    const int moved = made == 144 ? 96 : 144;
    // As when a screen reader asks: every name goes to the system's
    // accessibility services (where it has them) as soon as it is given.
    const bool published = PublishAccessibleNames();
    for (const char16_t* language : kLanguages)
    {
        UseLanguage(language);
        const std::string tongue = Narrow(language);
        for (const char16_t* product : kProducts)
        {
            const KelText fileName =
                KelText(product) == u"Ledgerline" ? u"QUORLIN.INI" : u"KEL.INI";
            UseSettings("[GENERAL]\r\n", product, fileName);
            // The picker the product starts with.
            std::vector<ConfigCandidate> candidates = {{u"Demo", folder, 1}};
            {
                ConfigPicker picker(candidates, fileName, product);
                ASSERT_EQ(picker.Show(false), 1);
                CheckScreen(picker.Handle(), tongue + " picker", made);
                MoveToDpi(picker.Handle(), made, moved);
                CheckScreen(picker.Handle(), tongue + " picker moved to another dpi", moved);
            }
            dialog = std::make_unique<KelConfigDialog>(nullptr, u"Editor", product, fileName);
            ASSERT_EQ(dialog->Show(false), 1);
            for (int dpi : {made, moved})
            {
                if (dpi != made)
                    MoveToDpi(dialog->Handle(), made, dpi);
                for (int32_t page = 0; page < dialog->PageCount(); ++page)
                {
                    ASSERT_TRUE(dialog->SelectPage(page));
                    CheckScreen(dialog->Handle(),
                                tongue + " " + Narrow(product) + " page " +
                                    Narrow(dialog->Page(page)->Title()) + " at " +
                                    std::to_string(dpi) + " dpi",
                                dpi);
                }
            }
            dialog.reset();
        }
        EditWebLink link(nullptr, u"Home=http://example.com/");
        ASSERT_EQ(link.Show(false), 1);
        CheckScreen(link.Handle(), tongue + " link dialog", made);
        MoveToDpi(link.Handle(), made, moved);
        CheckScreen(link.Handle(), tongue + " link dialog moved to another dpi", moved);
    }
    std::printf("Made at %d dpi, moved to %d dpi: checked %d screens (%d languages, %d "
                "products), %d controls, "
                "%d access keys, %d Alt+key moves, %d captions measured. Names of input "
                "controls confirmed by oleacc's get_accName: %d from their label, %d given "
                "through IAccPropServices (%s); by the z-order rule alone: %d.\n",
                made, moved, tally.screens, int(std::size(kLanguages)), int(std::size(kProducts)),
                tally.controls, tally.keys, tally.altKeys, tally.fitted, tally.labelByOleacc,
                tally.ownNameByOleacc, published ? "it took them" : "not available",
                tally.namedByZOrder);
    EXPECT_GT(tally.labelByOleacc + tally.ownNameByOleacc + tally.namedByZOrder, 0);
}

// A move to a monitor of 144 dpi: the dialog takes the rectangle Windows
// suggests, its font grows by half, and every control of every page (also of
// pages first shown afterwards) lies inside its page.
TEST_F(Accessibility, DialogFollowsAMoveToAMonitorOf144Dpi)
{
    UseSettings("[GENERAL]\r\n");
    dialog = std::make_unique<KelConfigDialog>(nullptr, u"Editor", u"Shopwise", u"KEL.INI");
    ASSERT_EQ(dialog->Show(false), 1);
    const int before = FontHeight(dialog->Page(0)->Handle());
    const RECT suggested = MoveToDpi(dialog->Handle(), 96, 144);

    RECT now = {};
    GetWindowRect(dialog->Handle(), &now);
    EXPECT_TRUE(EqualRect(&now, &suggested));
    EXPECT_EQ(dialog->Dpi(), 144);
    for (int32_t index = 0; index < dialog->PageCount(); ++index)
    {
        ASSERT_TRUE(dialog->SelectPage(index));
        HWND page = dialog->Page(index)->Handle();
        const double growth = double(FontHeight(page)) / before;
        EXPECT_GT(growth, 1.35) << index;
        EXPECT_LT(growth, 1.65) << index;
        RECT area = {};
        GetClientRect(page, &area);
        for (HWND child = GetWindow(page, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        {
            const RECT rect = RectIn(child, page);
            EXPECT_TRUE(rect.left >= 0 && rect.top >= 0 && rect.right <= area.right &&
                        rect.bottom <= area.bottom)
                << "page " << index << ", control " << GetDlgCtrlID(child) << " at " << rect.left
                << "," << rect.top << "-" << rect.right << "," << rect.bottom << " outside "
                << area.right << "x" << area.bottom;
        }
    }
}
} // namespace
