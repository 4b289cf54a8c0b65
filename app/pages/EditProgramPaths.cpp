#include "app/pages/EditProgramPaths.h"

#include <commctrl.h>

#include "app/ConfigCheck.h"
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
// The timer that starts the first probes once the page has been shown.
constexpr UINT_PTR kProbeTimer = 1;

// Puts the warning icon into the list's image list unless it is there. Adding
// it took a twentieth of the time to show the dialog, and most folders have
// no problem: it waits for the first row that has one.
void AddWarningMark(const ListView& list)
{
    auto* const marks = reinterpret_cast<HIMAGELIST>(list.Send(LVM_GETIMAGELIST, LVSIL_SMALL, 0));
    if (marks && ImageList_GetImageCount(marks) == 0)
        ImageList_AddIcon(marks, SmallWarningIcon());
}
} // namespace

EditProgramPaths::EditProgramPaths(Window* owner)
    : PropertyPage(owner, kProgramPathsTemplate,
                   DictTextOr(kTextProgramPathsTitle, u"Program Paths"))
{
}

EditProgramPaths::~EditProgramPaths()
{
    probes.Close();
}

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
    // The warning mark of a row with a problem (the list owns the image list,
    // whose size sets the rows' height; the icon goes in with the first mark).
    const int32_t iconWidth = GetSystemMetrics(SM_CXSMICON);
    const int32_t iconHeight = GetSystemMetrics(SM_CYSMICON);
    if (HIMAGELIST marks = ImageList_Create(iconWidth, iconHeight, ILC_COLOR32 | ILC_MASK, 1, 0))
        list.Send(LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(marks));
    for (int32_t i = 0; i < kinds.Count(); ++i)
    {
        const int32_t kind = kinds.At(i);
        const int32_t row = list.AddRow(SettingsContext::KindName(kind), LPARAM(kind), I_IMAGENONE);
        if (row >= 0)
            list.SetItemText(row, 1, store.PathOf(kind));
    }
    tips.assign(size_t(list.RowCount()), KelText());
    probes.Open(Handle());
    // Each probe starts two threads, which for a page of ten folders took
    // about as long as showing the dialog itself: the rows are probed once
    // the dialog is up. A timer message comes only when nothing else waits,
    // the dialog's showing and painting included.
    SetTimer(Handle(), kProbeTimer, 0, nullptr);
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
    ProbeRow(row);
}

void EditProgramPaths::ProbeRow(int32_t row)
{
    if (const ListView* list = PathList())
        probes.Ask(row, list->ItemText(row, 1),
                   ConfigCheck::NeedsWriting(int32_t(list->ItemData(row))));
}

void EditProgramPaths::TakeAnswers()
{
    ListView* list = PathList();
    for (const ProbeInbox::Answer& answer : probes.Take())
    {
        const int32_t row = answer.tag;
        // An answer for a folder the row no longer shows is out of date.
        if (!list || row < 0 || row >= list->RowCount() || size_t(row) >= tips.size() ||
            !list->ItemText(row, 1).SameAs(answer.folder))
            continue;
        tips[size_t(row)] = ConfigCheck::FolderTip(answer.answer);
        LVITEMW item = {};
        item.mask = LVIF_IMAGE;
        item.iItem = row;
        item.iImage = tips[size_t(row)].IsEmpty() ? I_IMAGENONE : 0;
        if (item.iImage == 0)
            AddWarningMark(*list);
        list->Send(LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
        RECT bounds = {LVIR_BOUNDS, 0, 0, 0};
        list->Send(LVM_GETITEMRECT, WPARAM(row), reinterpret_cast<LPARAM>(&bounds));
        ToolTips().SetAreaText(*list, UINT_PTR(row) + 1, bounds, tips[size_t(row)]);
    }
}

void EditProgramPaths::PlaceTips()
{
    const ListView* list = PathList();
    for (size_t row = 0; list && row < tips.size(); ++row)
        if (!tips[row].IsEmpty())
        {
            RECT bounds = {LVIR_BOUNDS, 0, 0, 0};
            list->Send(LVM_GETITEMRECT, WPARAM(row), reinterpret_cast<LPARAM>(&bounds));
            ToolTips().MoveArea(*list, UINT_PTR(row) + 1, bounds);
        }
}

bool EditProgramPaths::IsRowMarked(int32_t row) const
{
    const ListView* list = PathList();
    if (!list || row < 0 || row >= list->RowCount())
        return false;
    LVITEMW item = {};
    item.mask = LVIF_IMAGE;
    item.iItem = row;
    list->Send(LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    return item.iImage == 0;
}

KelText EditProgramPaths::RowTip(int32_t row)
{
    const ListView* list = PathList();
    if (!list || row < 0)
        return KelText();
    return ToolTips().AreaText(*list, UINT_PTR(row) + 1);
}

INT_PTR EditProgramPaths::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == ProbeInbox::kAnswerMessage)
    {
        TakeAnswers();
        return TRUE;
    }
    if (message == WM_TIMER && wParam == kProbeTimer)
    {
        KillTimer(Handle(), kProbeTimer);
        if (const ListView* list = PathList())
            for (int32_t row = 0; row < list->RowCount(); ++row)
                ProbeRow(row);
        return TRUE;
    }
    return PropertyPage::DialogProc(message, wParam, lParam);
}

bool EditProgramPaths::OnNotify(NMHDR& header, LRESULT& result)
{
    // Each time the list paints, its rows may have moved (scrolled, resized).
    if (header.idFrom == UINT_PTR(kPathList) && header.code == UINT(NM_CUSTOMDRAW) &&
        reinterpret_cast<NMCUSTOMDRAW&>(header).dwDrawStage == CDDS_PREPAINT)
        PlaceTips();
    return PropertyPage::OnNotify(header, result);
}

void EditProgramPaths::OnHandleDestroyed()
{
    probes.Close();
    PropertyPage::OnHandleDestroyed();
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
