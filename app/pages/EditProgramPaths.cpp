#include "app/pages/EditProgramPaths.h"

#include <commctrl.h>

#include "app/SettingsContext.h"
#include "app/pages/PageIds.h"
#include "app/pages/ProgramPathsReport.h"
#include "framework/BitmapButton.h"
#include "framework/ListView.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
// The folder picture of the application's image list.
constexpr int32_t kBrowseImage = 12;
} // namespace

EditProgramPaths::EditProgramPaths(Window* owner)
    : PropertyPage(owner, kProgramPathsTemplate,
                   DictTextOr(kTextProgramPathsTitle, u"Program Paths"))
{
}

EditProgramPaths::~EditProgramPaths() = default;

ListView* EditProgramPaths::PathList() const
{
    auto* list = dynamic_cast<ListView*>(FindControl(kPathList));
    return list && list->Handle() ? list : nullptr;
}

int32_t EditProgramPaths::InitPage()
{
    SettingsContext& store = SettingsContext::Instance();
    const KindList& kinds = store.Kinds();

    ListView& list = AddControl<ListView>(kPathList);
    list.AddColumn(DictText(kTextPathKind));
    list.AddColumn(DictText(kTextFolder));
    for (int32_t i = 0; i < kinds.Count(); ++i)
    {
        const int32_t kind = kinds.At(i);
        const int32_t row = list.AddRow(SettingsContext::KindName(kind), LPARAM(kind));
        if (row >= 0)
            list.SetItemText(row, 1, store.PathOf(kind));
    }
    if (list.RowCount() > 0)
        list.SelectOnly(0);
    list.OnSelectionChanged([this] { UpdateBrowseButton(); });
    list.OnDoubleClick([this] { Browse(); });
    list.SetFullRowSelect(true);
    // The kind column fits the longest key name and its heading.
    list.Send(LVM_SETCOLUMNWIDTH, 0, MAKELPARAM(LVSCW_AUTOSIZE_USEHEADER, 0));

    BitmapButton& browse =
        AddControl<BitmapButton>(kPathBrowse, kBrowseImage, [this] { Browse(); });
    // The template's "Browse" is the same in every language; the caption
    // (with its access key) and the tip are the dictionary's.
    const KelText browseText = DictTextOr(kTextBrowse, u"&Browse");
    browse.SetText(browseText);
    browse.SetToolTip(browseText);
    UpdateBrowseButton();

    SetLayout(kPathList, kLayoutGrow);
    SetLayout(kPathBrowse, kLayoutKeepRight);
    FitFolderColumn();
    return 0;
}

void EditProgramPaths::OnSizeChanged(int32_t width, int32_t height)
{
    PropertyPage::OnSizeChanged(width, height);
    FitFolderColumn();
}

void EditProgramPaths::FitFolderColumn()
{
    if (ListView* list = PathList())
    {
        const RECT client = list->ClientRect();
        list->SetColumnWidth(1, (client.right - client.left) - list->ColumnWidth(0));
    }
}

void EditProgramPaths::UpdateBrowseButton()
{
    const ListView* list = PathList();
    EnableControl(kPathBrowse, list && list->SelectedCount() == 1);
}

void EditProgramPaths::Browse()
{
    ListView* list = PathList();
    if (!list || list->SelectedCount() != 1)
        return;
    const int32_t row = list->FirstSelected();
    if (row < 0 || row >= list->RowCount())
        return;

    SettingsContext& store = SettingsContext::Instance();
    const auto kind = int32_t(list->ItemData(row));
    const KelText title =
        KelText::Formatted(u"%s %s", SettingsContext::KindName(kind), DictText(kTextFolder));
    KelText chosen;
    if (!BrowseFolder(title, store.PathOf(kind), chosen))
        return;
    store.SetPath(kind, chosen);
    // The row shows what the store keeps, not the raw choice.
    list->SetItemText(row, 1, store.PathOf(kind));
}

int32_t EditProgramPaths::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    // A refusal of the base apply is reported like a failed save: the paths
    // have not been written either way.
    const int32_t refused = PropertyPage::ApplyPage(pageIndex, reason, flags);
    const int32_t answer =
        Report(refused ? ProgramPathsNotSaved() : SaveProgramPaths(SettingsContext::Instance()));
    return refused ? refused : answer;
}
