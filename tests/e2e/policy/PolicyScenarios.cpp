// The Group Policy templates and the editor agree: for policies of every kind,
// the registry values that Group Policy writes for a setting (read from the
// built ADMX, as the Group Policy client reads it) are written, EditKel.exe
// is opened, and its page shows that setting.
#include "app/pages/PageIds.h"
#include "tests/e2e/support/EditKelSession.h"
#include "tests/win/policy/PolicyXml.h"

using namespace EditKelSession;

namespace
{
using PolicyXml::RegistryWrite;
using PolicyXml::Setting;

class GroupPolicy : public Scenario
{
protected:
    void SetUp() override
    {
        Scenario::SetUp();
        admx = PolicyXml::Load(std::string(KEL_POLICY_DIR) + "/EditKel.admx");
    }

    // Applies a setting of a policy as the Group Policy client does.
    void Apply(const std::string& name, const Setting& setting)
    {
        const PolicyXml::Element* policy = PolicyXml::FindPolicy(*admx, name);
        ASSERT_NE(policy, nullptr) << name;
        for (const RegistryWrite& write : PolicyXml::WritesOf(*policy, setting))
        {
            const std::wstring key = Wide(write.key);
            const std::wstring value = Wide(write.name);
            HKEY opened = nullptr;
            ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0,
                                      KEY_READ | KEY_WRITE, nullptr, &opened, nullptr),
                      ERROR_SUCCESS);
            if (write.type == RegistryWrite::Type::Dword)
            {
                const DWORD number = DWORD(write.number);
                RegSetValueExW(opened, value.c_str(), 0, REG_DWORD,
                               reinterpret_cast<const BYTE*>(&number), sizeof number);
            }
            else if (write.type == RegistryWrite::Type::String)
            {
                const std::wstring text = Wide(write.text);
                RegSetValueExW(opened, value.c_str(), 0, REG_SZ,
                               reinterpret_cast<const BYTE*>(text.c_str()),
                               DWORD((text.size() + 1) * sizeof(wchar_t)));
            }
            else if (write.type == RegistryWrite::Type::Delete)
                RegDeleteValueW(opened, value.c_str());
            else
                RegDeleteTreeW(opened, nullptr);
            RegCloseKey(opened);
        }
    }

    static Setting Enabled() { return Setting{}; }
    static Setting Disabled()
    {
        Setting setting;
        setting.enabled = false;
        return setting;
    }
    static Setting Item(int index)
    {
        Setting setting;
        setting.item = index;
        return setting;
    }
    static Setting Text(const std::string& text)
    {
        Setting setting;
        setting.text = text;
        return setting;
    }

    std::unique_ptr<PolicyXml::Element> admx;
};

// Check boxes (a DWORD written as 1 and as 0, a text stored for the ticked
// box), a drop-down list, a text, and a language with suggestions.
TEST_F(GroupPolicy, PlotwisePagesShowThePolicySettings)
{
    Apply("Plotwise_SkipMenuLoad", Enabled());
    Apply("Plotwise_SkipValidateButtons", Disabled());
    Apply("Plotwise_StoreEstDatabase", Enabled());
    Apply("Plotwise_UseDWGDatabase", Item(1));
    Apply("Plotwise_MenuGroup", Text("KELMENU"));
    Apply("Common_CachePatterns", Disabled());
    Apply("Common_FancyToolbars", Enabled());
    Apply("Plotwise_StartIn", Text("C:\\Jobs\\"));

    TargetProcess editor = OpenDemo(L"Plotwise");
    HWND cad = ShowPage(dialog, L"Plotwise", kCadUseIcons);
    EXPECT_TRUE(IsChecked(Control(cad, kCadSkipMenuLoad)));
    EXPECT_FALSE(IsChecked(Control(cad, kCadSkipValidate)));
    EXPECT_TRUE(IsChecked(Control(cad, kCadKeepEstimatingOff)));
    EXPECT_EQ(EditKelSession::Text(Control(cad, kCadDrawingDatabase)), L"Yes");
    EXPECT_EQ(EditKelSession::Text(Control(cad, kCadMenuGroup)), L"KELMENU");

    HWND common = ShowPage(dialog, L"Common Options", kCommonAutoLogin);
    EXPECT_FALSE(IsChecked(Control(common, kCommonCachePatterns)));
    EXPECT_TRUE(IsChecked(Control(common, kCommonFancyToolbars)));
    EXPECT_TRUE(IsChecked(Control(common, kCommonUseStartFolder)));
    EXPECT_EQ(EditKelSession::Text(Control(common, kCommonStartFolder)), L"C:\\Jobs\\");
    Screenshot(L"policy", dialog, L"common");
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}

// A text policy with its use box, the welcome screen, the web links list,
// automatic login switched off, a message prompt and the language.
TEST_F(GroupPolicy, CutwisePagesShowThePolicySettings)
{
    WriteString(L"Cutwise\\Login", L"Auto Login", L"worker");
    Apply("Cutwise_Caption", Text("Cutting room"));
    Apply("Cutwise_HideWelcomeScreen", Enabled());
    Setting links;
    links.entries = {{"1:Support", "https://support.example/"}, {"2:", "https://www.example/"}};
    Apply("Cutwise_WebLinks", links);
    Apply("Cutwise_AutoLogin", Disabled());
    Apply("Prompt_BadSpec", Disabled());
    Apply("Cutwise_Language", Text("Deutsch"));

    // The dialog in English all the same, so that its tabs are found by name.
    TargetProcess editor = OpenDemo(L"Cutwise", L"/l=English");
    HWND tyx = ShowPage(dialog, L"Cutwise", kTyxSupport);
    EXPECT_TRUE(IsChecked(Control(tyx, kTyxUseCaption)));
    EXPECT_EQ(EditKelSession::Text(Control(tyx, kTyxCaption)), L"Cutting room");
    EXPECT_TRUE(IsChecked(Control(tyx, kTyxHideWelcome)));

    HWND links_page = ShowPage(dialog, L"Web Links", kLinkList);
    EXPECT_EQ(ListRows(Control(links_page, kLinkList)),
              (std::vector<std::vector<std::wstring>>{{L"Support", L"https://support.example/"},
                                                      {L"Default Link", L"https://www.example/"}}));

    HWND common = ShowPage(dialog, L"Common Options", kCommonAutoLogin);
    EXPECT_FALSE(IsChecked(Control(common, kCommonAutoLogin)));
    EXPECT_EQ(EditKelSession::Text(Control(common, kCommonLanguage)), L"Deutsch");

    HWND tree = ShowSwitchTree(dialog);
    EXPECT_FALSE(FindTreeItem(tree, L"Specification invalid").checked);
    EXPECT_TRUE(FindTreeItem(tree, L"Cost tables missing or invalid").checked);
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}
} // namespace
