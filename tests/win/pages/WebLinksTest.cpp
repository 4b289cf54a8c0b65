// The web links: the value class against the registry (order by number, odd
// value names kept, removed links gone for good, exact round trips), and the
// page in a real dialog: its buttons, the link dialog answered from inside
// its modal loop, the delete question and a key that may not be written.
#include <algorithm>
#include <string>
#include <vector>

#include "app/pages/EditWebLinks.h"
#include "app/pages/PageIds.h"
#include "framework/ListView.h"
#include "tests/win/pages/PageTestSupport.h"
#include "text/AccessKey.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
using Links = std::vector<KelText>;
const KelText kDefaultName = WithoutAccessKey(DictTextOr(kTextDefaultLink, u"Default Link"));

class WebLinks : public PageTest
{
protected:
    KelText Key() const { return ProductKey(u"Shopwise", u"WebLinks"); }
    Links Stored() const
    {
        WebLinksValues values(u"Shopwise");
        values.Load();
        return values.links;
    }
    // "<name> -> <data>" of the key's string values, sorted by name.
    Links StoredValues() const
    {
        Links values;
        RegistryKey key(Key());
        for (const KelText& name : key.ValueNames())
            if (KelText data; key.ReadString(name, data) == RegistryRead::Ok)
                values.push_back(name + u" -> " + data);
        std::sort(values.begin(), values.end(),
                  [](const KelText& a, const KelText& b) { return a.View() < b.View(); });
        return values;
    }
    void Store(std::initializer_list<const char16_t*> names)
    {
        for (const char16_t* name : names)
            PutString(Key(), name, KelText(u"http://") + name);
    }

    void OpenPage()
    {
        page = &Open<EditWebLinks>(u"Shopwise");
        list = dynamic_cast<ListView*>(page->FindControl(kLinkList));
    }
    Links Rows() const
    {
        Links rows;
        for (int32_t row = 0; row < list->RowCount(); ++row)
            rows.push_back(list->ItemText(row, 0) + u"=" + list->ItemText(row, 1));
        return rows;
    }
    void SelectRows(std::initializer_list<int32_t> rows)
    {
        list->ClearSelection();
        for (int32_t row : rows)
            list->Select(row);
    }
    // Up, down, add, edit, delete: "UDAEX", "-" for a disabled one.
    std::string Buttons() const
    {
        std::string state;
        const int ids[] = {kLinkUp, kLinkDown, kLinkAdd, kLinkEdit, kLinkDelete};
        for (int i = 0; i < 5; ++i)
            state += page->IsControlEnabled(ids[i]) ? "UDAEX"[i] : '-';
        return state;
    }
    // Presses a button (kLinkList: double-clicks the list); `answer` works
    // the link dialog inside its modal loop and must close it.
    void PressWithDialog(int button, const std::function<void(HWND)>& answer)
    {
        AfterStart(
            [answer]
            {
                HWND dialog = nullptr;
                EnumThreadWindows(
                    GetCurrentThreadId(),
                    [](HWND window, LPARAM found)
                    {
                        if (!IsWindowVisible(window) || !GetDlgItem(window, kLinkIsDefault))
                            return TRUE;
                        *reinterpret_cast<HWND*>(found) = window;
                        return FALSE;
                    },
                    reinterpret_cast<LPARAM>(&dialog));
                ASSERT_NE(dialog, nullptr);
                answer(dialog);
            });
        NMHDR click = {list->Handle(), UINT_PTR(kLinkList), UINT(NM_DBLCLK)};
        if (button == kLinkList)
            SendMessageW(page->Handle(), WM_NOTIFY, kLinkList, reinterpret_cast<LPARAM>(&click));
        else
            Click(page->Handle(), button);
    }
    static void Enter(HWND dialog, const char16_t* name, const char16_t* address)
    {
        SetTextOf(GetDlgItem(dialog, kLinkName), name);
        SetTextOf(GetDlgItem(dialog, kLinkAddress), address);
        Click(dialog, IDOK);
    }

    EditWebLinks* page = nullptr;
    ListView* list = nullptr;
};
} // namespace

TEST_F(WebLinks, LinkTextsSplitAtTheFirstEqualsSign)
{
    EXPECT_TRUE(WebLinksValues::NameOf(u"Shop=http://a=b").SameAs(u"Shop"));
    EXPECT_TRUE(WebLinksValues::AddressOf(u"Shop=http://a=b").SameAs(u"http://a=b"));
    EXPECT_TRUE(WebLinksValues::NameOf(u"No sign").SameAs(u"No sign"));
    EXPECT_TRUE(WebLinksValues::AddressOf(u"No sign").IsEmpty());
    EXPECT_TRUE(WebLinksValues::ShownName(u"=http://home").SameAs(kDefaultName));
}

TEST_F(WebLinks, OrderByNumberOddNamesKeptAndSavedAsACleanList)
{
    // Wine lists values alphabetically: "10:" before "5:".
    Store({u"Plain", u"x1:Lettered", u"10:Ten", u"5:Five", u"5:Also five", u"4000000000:Huge",
           u"99999999999999999999999:Huger", u"0:Shop=Sale"});
    PutDword(Key(), u"3:Counter", 7);
    const Links expected = {
        u"Shop=Sale=http://0:Shop=Sale", u"Also five=http://5:Also five",
        u"Five=http://5:Five",           u"Ten=http://10:Ten",
        u"Huge=http://4000000000:Huge",  u"Huger=http://99999999999999999999999:Huger",
        u"Plain=http://Plain",           u"x1:Lettered=http://x1:Lettered"};
    WebLinksValues values(u"Shopwise");
    values.Load();
    ASSERT_EQ(values.links, expected);

    // Numbered again from 0, every other string value gone; not a link: kept.
    values.links.erase(values.links.begin() + 3);
    std::swap(values.links[0], values.links[1]);
    EXPECT_FALSE(values.Save().refuse);
    EXPECT_EQ(StoredValues(),
              (Links{u"0:Also five -> http://5:Also five", u"1:Shop -> Sale=http://0:Shop=Sale",
                     u"2:Five -> http://5:Five", u"3:Huge -> http://4000000000:Huge",
                     u"4:Huger -> http://99999999999999999999999:Huger", u"5:Plain -> http://Plain",
                     u"6:x1:Lettered -> http://x1:Lettered"}));
    EXPECT_EQ(GetDword(Key(), u"3:Counter"), 7);
    EXPECT_EQ(Stored(), values.links);
    values.links.clear();
    EXPECT_FALSE(values.Save().refuse);
    EXPECT_TRUE(Stored().empty());
}

TEST_F(WebLinks, NamesAndAddressesRoundTripExactly)
{
    const KelText longAddress = KelText(u"http://a/?q=") + std::u16string(2000, u'a').c_str();
    WebLinksValues values(u"Shopwise");
    values.links = {u"Time: 10:30=http://a:8080/x=y", u"Long=" + longAddress, u"=http://home",
                    u"\u00c4rger=http://umlaut"};
    ASSERT_FALSE(values.Save().refuse);
    EXPECT_EQ(Stored(), values.links);
    // A change of case only reaches the registry too.
    values.links.back() = u"\u00e4rger=http://umlaut";
    ASSERT_FALSE(values.Save().refuse);
    EXPECT_EQ(Stored(), values.links);
}

TEST_F(WebLinks, ButtonTableAndMoves)
{
    Store({u"0:Shop", u"1:", u"2:Help"});
    OpenPage();
    EXPECT_EQ(Rows(),
              (Links{u"Shop=http://0:Shop", kDefaultName + u"=http://1:", u"Help=http://2:Help"}));
    EXPECT_EQ(Buttons(), "-DAEX");
    SelectRows({1});
    EXPECT_EQ(Buttons(), "UDAEX");
    SelectRows({2});
    EXPECT_EQ(Buttons(), "U-AEX");
    SelectRows({0, 2});
    EXPECT_EQ(Buttons(), "--A-X");
    SelectRows({});
    EXPECT_EQ(Buttons(), "--A--");
    for (int id : {kLinkUp, kLinkDown, kLinkAdd, kLinkEdit, kLinkDelete})
        EXPECT_FALSE(page->ToolTips().ToolText(*page->FindControl(id)).IsEmpty()) << id;

    // One place at a time, with the selection; never past either end.
    SelectRows({1});
    Click(page->Handle(), kLinkUp);
    page->MoveUp();
    EXPECT_EQ(list->SelectedRows(), std::vector<int32_t>{0});
    for (int i = 0; i < 3; ++i)
        Click(page->Handle(), kLinkDown);
    EXPECT_EQ(page->Values().links,
              (Links{u"Shop=http://0:Shop", u"Help=http://2:Help", u"=http://1:"}));
    EXPECT_EQ(Rows()[2], kDefaultName + u"=http://1:");
    EXPECT_EQ(list->SelectedRows(), std::vector<int32_t>{2});
}

TEST_F(WebLinks, AddInsertsAtTheSelectedRowOrAppends)
{
    Store({u"0:A", u"1:B", u"2:C"});
    OpenPage();
    SelectRows({2});
    PressWithDialog(kLinkAdd,
                    [](HWND dialog)
                    {
                        EXPECT_TRUE(TextOf(GetDlgItem(dialog, kLinkName))
                                        .SameAs(DictTextOr(kTextNewLinkName, u"New Link")));
                        EXPECT_TRUE(TextOf(GetDlgItem(dialog, kLinkAddress)).IsEmpty());
                        Enter(dialog, u"New", u"http://new");
                    });
    EXPECT_EQ(list->SelectedRows(), std::vector<int32_t>{2});
    // Two rows selected: at the end. A cancelled dialog adds nothing.
    SelectRows({0, 1});
    PressWithDialog(kLinkAdd, [](HWND dialog) { Enter(dialog, u"End", u"http://end"); });
    EXPECT_EQ(list->SelectedRows(), std::vector<int32_t>{4});
    PressWithDialog(kLinkAdd, [](HWND dialog) { Click(dialog, IDCANCEL); });
    const Links expected = {u"A=http://0:A", u"B=http://1:B", u"New=http://new", u"C=http://2:C",
                            u"End=http://end"};
    EXPECT_EQ(Rows(), expected);
    Ok();
    EXPECT_FALSE(DialogOpen());
    EXPECT_EQ(Stored(), expected);
}

TEST_F(WebLinks, LinkDialogRefusesBadEntriesAndStaysOpen)
{
    Store({u"0:Shop"});
    OpenPage();
    PressWithDialog(kLinkList,
                    [](HWND dialog)
                    {
                        EXPECT_TRUE(TextOf(GetDlgItem(dialog, kLinkName)).SameAs(u"Shop"));
                        Enter(dialog, u"Shop", u" ");
                        Enter(dialog, u"a=b", u"http://x");
                        Enter(dialog, u"", u"http://x");
                        ASSERT_TRUE(IsWindow(dialog));
                        // The default link's name is empty and cannot be typed;
                        // clearing the box gives the name back.
                        SetTextOf(GetDlgItem(dialog, kLinkName), u"Kept");
                        Click(dialog, kLinkIsDefault);
                        EXPECT_TRUE(TextOf(GetDlgItem(dialog, kLinkName)).IsEmpty());
                        EXPECT_FALSE(IsWindowEnabled(GetDlgItem(dialog, kLinkName)));
                        Click(dialog, kLinkIsDefault);
                        EXPECT_TRUE(TextOf(GetDlgItem(dialog, kLinkName)).SameAs(u"Kept"));
                        Click(dialog, kLinkIsDefault);
                        Click(dialog, IDOK);
                    });
    ASSERT_EQ(user.boxes.size(), 3u);
    EXPECT_EQ(user.alerts.size(), 3u);
    const KelText texts[] = {DictTextOr(kTextLinkNeedsAddress, u"Enter the address"),
                             DictTextOr(kTextLinkBadName, u"Enter a name"),
                             DictTextOr(kTextLinkBadName, u"Enter a name")};
    for (size_t i = 0; i < 3; ++i)
    {
        EXPECT_TRUE(
            user.boxes[i].caption.SameAs(DictTextOr(kTextInvalidLinkCaption, u"Invalid Web Link")));
        EXPECT_TRUE(user.boxes[i].text.StartsWith(texts[i].c_str())) << i;
    }
    EXPECT_EQ(page->Values().links, (Links{u"=http://x"}));

    PressWithDialog(kLinkEdit,
                    [](HWND dialog)
                    {
                        SetTextOf(GetDlgItem(dialog, kLinkAddress), u"http://gone");
                        Click(dialog, IDCANCEL);
                    });
    EXPECT_EQ(Rows(), (Links{kDefaultName + u"=http://x"}));
}

TEST_F(WebLinks, DeleteAsksWithTheCountAndOkWritesWhatIsLeft)
{
    Store({u"0:A", u"1:B", u"2:C", u"3:D", u"4:E"});
    OpenPage();
    const KelText question = DictTextOr(kTextDeleteLinks, u"Delete the selected web links");
    SelectRows({0, 2, 4});
    user.AnswerBox(IDNO);
    Click(page->Handle(), kLinkDelete);
    EXPECT_EQ(list->RowCount(), 5);
    Click(page->Handle(), kLinkDelete);
    ASSERT_EQ(user.boxes.size(), 2u);
    EXPECT_TRUE(user.boxes[1].text.SameAs(question + u" - 3 ?"));
    EXPECT_EQ(Rows(), (Links{u"B=http://1:B", u"D=http://3:D"}));

    SelectRows({0});
    Click(page->Handle(), kLinkDelete);
    EXPECT_TRUE(user.boxes.back().text.SameAs(question + u" ?"));
    Ok();
    EXPECT_EQ(StoredValues(), (Links{u"0:D -> http://3:D"}));
}

TEST_F(WebLinks, UnwritableKeyKeepsTheDialogOpenAndTheOldLinks)
{
    Store({u"0:Old", u"1:Other"});
    const Links before = StoredValues();
    OpenPage();
    const KelText key = Key();
    RegistryKey::SetWriteRefusal([key](const KelText& path) { return path + u"\\" == key; });
    SelectRows({0});
    Click(page->Handle(), kLinkDelete);
    Ok();
    EXPECT_TRUE(DialogOpen());
    ASSERT_EQ(user.boxes.size(), 2u);
    EXPECT_EQ(user.alerts.size(), 1u);
    EXPECT_TRUE(user.boxes[1].caption.SameAs(
        DictTextOr(kTextSaveFailedCaption, u"Unable to Save Settings")));
    EXPECT_TRUE(user.boxes[1].text.SameAs(DictTextOr(kTextWebLinksTitle, u"Web Links")));
    Cancel();
    RegistryKey::SetWriteRefusal({});
    EXPECT_EQ(StoredValues(), before);
}
