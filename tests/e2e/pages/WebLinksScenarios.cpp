// The web links page as a user works it in EditKel.exe (Shopwise): a link
// added, one edited by a double click, one moved, two deleted, saved with OK
// and seen again in the same order after a restart; in German, the link
// dialog refusing an empty address and Cancel leaving the registry alone.
#include <algorithm>

#include "app/pages/PageIds.h"
#include "tests/e2e/support/EditKelSession.h"
#include "tools/uidriver/RemoteMemory.h"

using namespace EditKelSession;

namespace
{
using Rows = std::vector<std::vector<std::wstring>>;
const std::wstring LinksKey = L"Shopwise\\WebLinks";

// "<value name> -> <text>" of every value of the key, sorted.
std::vector<std::wstring> StoredLinks()
{
    std::vector<std::wstring> values;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, UserKey(LinksKey).c_str(), 0, KEY_READ, &key) != 0)
        return values;
    wchar_t name[512], data[2048];
    for (DWORD i = 0, length = 512, size = sizeof data;
         RegEnumValueW(key, i, name, &length, nullptr, nullptr, reinterpret_cast<BYTE*>(data),
                       &size) == ERROR_SUCCESS;
         ++i, length = 512, size = sizeof data)
        values.push_back(std::wstring(name) + L" -> " + data);
    RegCloseKey(key);
    std::sort(values.begin(), values.end());
    return values;
}

class WebLinks : public Scenario
{
protected:
    static void StoreStartingLinks()
    {
        WriteString(LinksKey, L"0:Support", L"https://support.example/shop");
        WriteString(LinksKey, L"1:", L"https://www.example/home");
        WriteString(LinksKey, L"2:Catalogue", L"https://parts.example/?list=ducts");
        WriteString(LinksKey, L"10:Forum", L"https://forum.example");
    }
    // Starts the editor on Shopwise and brings the page named `tab` to the
    // front; `list` is its list.
    TargetProcess OpenPage(const std::wstring& language = {}, const wchar_t* tab = L"Web Links")
    {
        TargetProcess editor = OpenDemo(L"Shopwise", language);
        ShowPage(dialog, tab, kLinkList);
        list = Control(dialog, kLinkList);
        return editor;
    }
    // Fills the link dialog (a null name stays as it is),
    // saves its picture when `picture` names one, and presses OK.
    void FillLinkDialog(TargetProcess& editor, const wchar_t* name, const wchar_t* address,
                        const wchar_t* picture = nullptr)
    {
        HWND link = editor.WaitForWindow(L"Edit Web Link");
        if (name)
            SetText(Control(link, kLinkName), name);
        SetText(Control(link, kLinkAddress), address);
        if (picture)
            Screenshot(picture, link, L"weblinks");
        Press(Control(link, IDOK));
        ASSERT_TRUE(WaitUntil([&] { return !IsWindow(link); }, DefaultWait));
    }
    // Selects several rows at once, as Ctrl+click does.
    void SelectRows(int first, int second) const
    {
        SelectListRow(list, first);
        RemoteMemory memory(list, sizeof(LVITEMW));
        LVITEMW item{};
        item.stateMask = item.state = LVIS_SELECTED;
        memory.Put(item);
        Send(list, LVM_SETITEMSTATE, WPARAM(second), memory.Param());
    }
    bool Shows(const Rows& rows) const
    {
        return WaitUntil([&] { return ListRows(list) == rows; }, DefaultWait);
    }

    HWND list = nullptr;
};
} // namespace

TEST_F(WebLinks, AddEditMoveDeleteThenOkAndTheSameListAfterARestart)
{
    StoreStartingLinks();
    TargetProcess editor = OpenPage();
    EXPECT_EQ(TabTexts(Control(dialog, TabsId)),
              (std::vector<std::wstring>{L"Program Paths", L"Shopwise", L"Web Links",
                                         L"Common Options", L"Message Prompts"}));
    ASSERT_TRUE(WaitUntil([&] { return ListCell(list, 3, 0) == L"Forum"; }, DefaultWait));
    EXPECT_EQ(ListCell(list, 1, 0), L"Default Link");

    // Added at the selected row: Catalogue and Forum move down.
    SelectListRow(list, 2);
    Press(Control(dialog, kLinkAdd));
    FillLinkDialog(editor, L"Price list", L"https://prices.example/2024", L"dialog");
    DoubleClickListRow(list, 3);
    FillLinkDialog(editor, nullptr, L"https://parts.example:8443/?list=ducts&size=2");
    SelectListRow(list, 4);
    Press(Control(dialog, kLinkUp));
    ASSERT_TRUE(WaitUntil([&] { return ListCell(list, 3, 0) == L"Forum"; }, DefaultWait));
    // Support and the default link go.
    SelectRows(0, 1);
    Press(Control(dialog, kLinkDelete));
    HWND question = editor.WaitForMessageBox(L"Web Links");
    EXPECT_EQ(MessageBoxText(question), L"Delete the selected web links - 2 ?");
    CloseMessageBox(question, IDYES);
    const Rows expected = {{L"Price list", L"https://prices.example/2024"},
                           {L"Forum", L"https://forum.example"},
                           {L"Catalogue", L"https://parts.example:8443/?list=ducts&size=2"}};
    ASSERT_TRUE(Shows(expected));
    Screenshot(L"page", dialog, L"weblinks");
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(StoredLinks(), (std::vector<std::wstring>{
                                 L"0:Price list -> https://prices.example/2024",
                                 L"1:Forum -> https://forum.example",
                                 L"2:Catalogue -> https://parts.example:8443/?list=ducts&size=2"}));

    editor = OpenPage();
    EXPECT_TRUE(Shows(expected));
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}

TEST_F(WebLinks, GermanLinkDialogRefusesAnEmptyAddressAndCancelWritesNothing)
{
    StoreStartingLinks();
    const std::vector<std::wstring> before = StoredLinks();
    TargetProcess editor = OpenPage(L"/l=Deutsch", L"Weblinks");
    ASSERT_TRUE(WaitUntil([&] { return ListCell(list, 1, 0) == L"Standardlink"; }, DefaultWait));
    Screenshot(L"page", dialog, L"weblinks");
    // The default link: the box ticked, the name box empty and disabled.
    DoubleClickListRow(list, 1);
    HWND link = editor.WaitForWindow(L"Weblink bearbeiten");
    EXPECT_TRUE(IsChecked(Control(link, kLinkIsDefault)));
    EXPECT_FALSE(IsWindowEnabled(Control(link, kLinkName)));
    Screenshot(L"dialog", link, L"weblinks");
    SetText(Control(link, kLinkAddress), L"");
    Press(Control(link, IDOK));
    HWND refusal = editor.WaitForMessageBox(L"Ung\u00fcltiger Weblink");
    EXPECT_EQ(MessageBoxText(refusal), L"Geben Sie die Adresse des Weblinks ein.");
    CloseMessageBox(refusal, IDOK);
    EXPECT_TRUE(IsWindow(link));
    SetText(Control(link, kLinkAddress), L"https://www.example/start");
    Press(Control(link, IDOK));
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(link); }, DefaultWait));

    SelectRows(0, 3);
    Press(Control(dialog, kLinkDelete));
    CloseMessageBox(editor.WaitForMessageBox(L"Weblinks"), IDYES);
    ASSERT_TRUE(WaitUntil([&] { return ListRowCount(list) == 2; }, DefaultWait));
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(StoredLinks(), before);
}
