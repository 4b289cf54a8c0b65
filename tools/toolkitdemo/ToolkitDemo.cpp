// toolkitdemo.exe: a property dialog with a sample page (a list with bitmap
// buttons, check boxes, a combo box, an edit with a folder browser) and the
// message-switch page, to look at the toolkit and take screenshots.
//
//   toolkitdemo.exe [/l=<language>] [/page=<n>] [/close=<milliseconds>]
//
// /page chooses the page shown first, /close cancels the dialog after a while
// (for unattended screenshots). It loads diction.ary from its folder.
#include <windows.h>

#include <cstdio>
#include <vector>

#include "framework/AppEntry.h"
#include "framework/BitmapButton.h"
#include "framework/EditMsgManager.h"
#include "framework/ListView.h"
#include "framework/SharedImageList.h"
#include "framework/StandardPropertyDialog.h"
#include "text/TextHolder.h"
#include "text/WideText.h"
#include "tools/toolkitdemo/ToolkitDemoIds.h"

namespace
{
struct Link
{
    KelText name;
    KelText address;
};

// A page like the editor's list pages: rows that can be moved, added, edited
// and deleted, and a few bound settings below.
class SamplePage : public PropertyPage
{
public:
    explicit SamplePage(Window* owner) : PropertyPage(owner, kSamplePage, u"Sample")
    {
        SetTitle(u"Sample");
        links = {{u"Support", u"https://support.example.com/"},
                 {u"Downloads", u"https://example.com/downloads"},
                 {u"", u"https://example.com/"},
                 {u"Training", u"https://example.com/training"}};
    }

    int32_t InitPage() override
    {
        list = &AddControl<ListView>(kSampleList);
        // Widths in proportion to the list, so that they suit every resolution.
        const int32_t width = list->ClientRect().right;
        list->AddColumn(DictText(9638), width / 3);
        list->AddColumn(DictText(9639), width - width / 3);
        for (size_t i = 0; i < links.size(); ++i)
            list->AddRow(KelText(), LPARAM(i));
        ShowRows(0);
        list->SetFullRowSelect(true);
        list->SelectOnly(0);
        list->OnSelectionChanged([this] { UpdateButtons(); });
        list->OnDoubleClick([this] { Edit(); });

        up = &AddControl<BitmapButton>(kSampleUp, 19, [this] { Move(-1); });
        add = &AddControl<BitmapButton>(kSampleAdd, 16, [this] { Add(); });
        edit = &AddControl<BitmapButton>(kSampleEdit, 12, [this] { Edit(); });
        remove = &AddControl<BitmapButton>(kSampleDelete, 10, [this] { Delete(); });
        down = &AddControl<BitmapButton>(kSampleDown, 21, [this] { Move(1); });
        AddControl<CheckBox>(kSampleCache, &cachePatterns, 1);
        AddControl<CheckBox>(kSampleTips, &fancyToolbars, 1);
        auto& language = AddControl<ComboBox>(kSampleLanguage, &languageName);
        TextHolder& dictionary = TextHolder::Instance();
        for (int32_t i = 0; i < dictionary.LanguageCount(); ++i)
            language.AddItem(dictionary.LanguageName(i));
        if (language.Count() == 0)
            language.AddItem(u"English");
        language.LoadValue();
        auto& useFolder = AddControl<CheckBox>(kSampleUseFolder, &useStartFolder, 1);
        folderEdit = &AddControl<EditBox>(kSampleFolder, &startFolder);
        browse = &AddControl<BitmapButton>(kSampleBrowse, 12, [this] { Browse(); });
        useFolder.OnClick(
            [this, &useFolder]
            {
                folderEdit->Enable(useFolder.IsChecked());
                browse->Enable(useFolder.IsChecked());
            });
        folderEdit->Enable(useStartFolder != 0);
        browse->Enable(useStartFolder != 0);
        UpdateButtons();

        SetLayout(*list, kLayoutGrow);
        for (BitmapButton* button : {up, add, edit, remove, down})
            SetLayout(*button, kLayoutKeepRight);
        for (int32_t id :
             {kSampleCache, kSampleTips, kSampleUseFolder, kSampleLanguage, kSampleLanguageLabel})
            SetLayout(id, kLayoutKeepBottom);
        SetLayout(*folderEdit, kLayoutKeepBottom | kLayoutGrowWidth);
        SetLayout(*browse, kLayoutKeepBottom | kLayoutKeepRight);
        return 0;
    }

    void OnSizeChanged(int32_t width, int32_t height) override
    {
        PropertyPage::OnSizeChanged(width, height);
        // The address column fills the list.
        if (list && list->Handle())
            list->SetColumnWidth(1, list->ClientRect().right - list->ColumnWidth(0));
    }

private:
    void ShowRows(size_t from)
    {
        for (size_t i = from; i < links.size(); ++i)
        {
            const Link& link = links[i];
            list->SetItemText(int32_t(i), 0,
                              link.name.IsEmpty() ? KelText(DictText(9640)) : link.name);
            list->SetItemText(int32_t(i), 1, link.address);
        }
    }

    void UpdateButtons()
    {
        const int32_t selected = list->SelectedCount();
        const int32_t row = list->FirstSelected();
        up->Enable(selected == 1 && row > 0);
        down->Enable(selected == 1 && row < list->RowCount() - 1);
        edit->Enable(selected == 1);
        remove->Enable(selected >= 1);
    }

    void Move(int32_t step)
    {
        const int32_t row = list->FirstSelected();
        const int32_t other = row + step;
        if (list->SelectedCount() != 1 || other < 0 || other >= int32_t(links.size()))
            return;
        std::swap(links[size_t(row)], links[size_t(other)]);
        ShowRows(0);
        list->SelectOnly(other);
    }

    void Add()
    {
        links.push_back({DictText(136), u"https://"});
        list->AddRow(KelText(), 0);
        ShowRows(links.size() - 1);
        list->SelectOnly(list->RowCount() - 1);
    }

    void Edit()
    {
        const int32_t row = list->FirstSelected();
        if (list->SelectedCount() != 1 || row < 0)
            return;
        ShowMessageBox(links[size_t(row)].address, links[size_t(row)].name,
                       MB_OK | MB_ICONINFORMATION);
    }

    void Delete()
    {
        std::vector<int32_t> rows = list->SelectedRows();
        if (rows.empty() ||
            ShowMessageBox(DictText(9642), Title(), MB_YESNO | MB_ICONQUESTION) != IDYES)
            return;
        for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        {
            links.erase(links.begin() + *it);
            list->DeleteRow(*it);
        }
        ShowRows(0);
        UpdateButtons();
    }

    void Browse()
    {
        KelText chosen;
        if (BrowseFolder(DictText(9644), folderEdit->Text(), chosen))
            folderEdit->SetText(chosen);
    }

    std::vector<Link> links;
    ListView* list = nullptr;
    BitmapButton* up = nullptr;
    BitmapButton* add = nullptr;
    BitmapButton* edit = nullptr;
    BitmapButton* remove = nullptr;
    BitmapButton* down = nullptr;
    BitmapButton* browse = nullptr;
    EditBox* folderEdit = nullptr;
    int32_t cachePatterns = 1;
    int32_t fancyToolbars = 0;
    int32_t useStartFolder = 1;
    KelText languageName = u"English";
    KelText startFolder = u"C:/Brindlecove/Projects/";
};

// The number after a switch such as "/close=" on the command line, or `otherwise`.
int32_t NumberAfter(const KelText& commandLine, const char16_t* name, int32_t otherwise)
{
    int32_t at = commandLine.Find(name, 1, true);
    if (at == 0)
        return otherwise;
    return KelText(commandLine.CharAt(at + KelText::Measure(name))).IntValue();
}

HWND demoWindow = nullptr;
void CALLBACK CloseDemo(HWND, UINT, UINT_PTR timer, DWORD)
{
    KillTimer(nullptr, timer);
    if (demoWindow)
        PostMessageW(demoWindow, WM_COMMAND, IDCANCEL, 0);
}
} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int)
{
    auto* app = new AppEntry(instance);
    SetApplication(app);
    app->SetCommandLine(FromWide(GetCommandLineW()));
    const KelText& commandLine = app->CommandLine();
    TextHolder::Instance().Load(u"diction.ary", TextHolder::LanguageFromCommandLine(commandLine),
                                false);

    // The switches the editor registers, for the message-switch page.
    const struct
    {
        uint32_t code;
        const char16_t* name;
        int32_t text;
    } switches[] = {{5, u"BadCostTables", 6014},
                    {4, u"BadSpec", 6015},
                    {2, u"ProjectInfoDifferent", 9650},
                    {3, u"ItemInvalidForJob", 9651},
                    {7, u"SwitchProfiles", 9652},
                    {8, u"ConvertModels", 9653},
                    {9, u"Fill2Ends", 9654},
                    {10, u"ConnectorLocks", 9655}};
    for (const auto& known : switches)
        app->MessageSwitches().Register(known.code, DictText(known.text), known.name);

    std::printf("shared images: %d px\n", int(SharedImageSize()));
    (void)std::fflush(stdout);
    {
        StandardPropertyDialog dialog(nullptr, u"Toolkit Demo - Brindlecove", 0, 1,
                                      NumberAfter(commandLine, u"/page=", 0), u"ToolkitDemo");
        dialog.MakePage<SamplePage>();
        dialog.MakePage<EditMsgManager>();
        dialog.SetStyleBits(WS_MINIMIZEBOX);
        dialog.SetExtraButton(DictText(163), 1);
        if (int32_t closeAfter = NumberAfter(commandLine, u"/close=", 0); closeAfter > 0)
        {
            dialog.Show(false);
            demoWindow = dialog.Handle();
            SetTimer(nullptr, 0, UINT(closeAfter), CloseDemo);
        }
        dialog.Show(true);
    }
    DestroyApplication();
    return 0;
}
