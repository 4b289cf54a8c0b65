#include "app/ConfigPicker.h"

#include <utility>

#include "app/AppResources.h"
#include "framework/AppEntry.h"
#include "framework/Folders.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

ConfigPicker::ConfigPicker(std::vector<ConfigCandidate>& list, KelText settingsFileName,
                           KelText productName)
    : FormDialog(nullptr, kConfigPickerTemplate), candidates(list),
      fileName(std::move(settingsFileName)), product(std::move(productName))
{
    // "Select Configuration - Plotwise": the product tells which program's
    // configuration is being chosen.
    KelText title(DictText(kTextPickerTitle));
    if (!product.IsEmpty())
        title = KelText::Formatted(u"%s - %s", title, product);
    SetTitle(title);
}

int32_t ConfigPicker::InitPage()
{
    list = &AddControl<ListView>(kConfigPickerList);
    const int32_t width = list->ClientRect().right;
    list->AddColumn(DictText(kTextPickerName), width / 3);
    list->AddColumn(DictText(kTextPickerFolder), width - width / 3);
    list->SetFullRowSelect(true);
    for (const ConfigCandidate& candidate : candidates)
        AddRow(candidate);
    if (list->RowCount() > 0)
        list->SelectOnly(0);
    list->OnSelectionChanged([this] { UpdateButtons(); });
    list->OnDoubleClick(
        [this]
        {
            if (list->SelectedCount() == 1)
                OnCommand(IDOK, BN_CLICKED, nullptr);
        });

    SetLayout(kConfigPickerText, kLayoutGrowWidth);
    SetLayout(*list, kLayoutGrow);
    SetLayout(kConfigPickerBrowse, kLayoutKeepBottom);
    SetLayout(IDOK, kLayoutKeepBottom | kLayoutKeepRight);
    SetLayout(IDCANCEL, kLayoutKeepBottom | kLayoutKeepRight);
    UpdateButtons();
    return 0;
}

void ConfigPicker::AddRow(const ConfigCandidate& candidate)
{
    const int32_t row = list->AddRow(candidate.name);
    list->SetItemText(row, 1, WithBackslashes(candidate.folder));
}

void ConfigPicker::UpdateButtons()
{
    if (HWND ok = GetDlgItem(Handle(), IDOK))
        EnableWindow(ok, list && list->SelectedCount() == 1);
}

void ConfigPicker::OnSizeChanged(int32_t width, int32_t height)
{
    FormDialog::OnSizeChanged(width, height);
    // The folder column fills the list.
    if (list && list->Handle())
        list->SetColumnWidth(1, list->ClientRect().right - list->ColumnWidth(0));
}

bool ConfigPicker::OnCommand(int32_t id, int32_t code, HWND control)
{
    if (id == kConfigPickerBrowse && code == BN_CLICKED)
    {
        Browse();
        return true;
    }
    return FormDialog::OnCommand(id, code, control);
}

void ConfigPicker::Browse()
{
    AppEntry* app = GetAppEntry();
    const int32_t row = list->FirstSelected();
    KelText start = row >= 0 ? candidates[size_t(row)].folder
                             : (app ? app->SharedDocumentsFolder() : KelText());
    KelText folder;
    if (!BrowseFolder(DictText(kTextPickerBrowseTitle), start, folder))
        return;
    folder = NormaliseFolder(folder);
    if (!app || !FolderHoldsFile(*app, folder, fileName))
    {
        Alert();
        ShowMessageBox(KelText::Formatted(DictText(kTextPickerNoSettingsFile),
                                          WithBackslashes(folder), fileName),
                       Title(), MB_OK | MB_ICONEXCLAMATION);
        return;
    }
    // A folder already listed is selected rather than listed twice.
    for (size_t i = 0; i < candidates.size(); ++i)
        if (NormaliseFolder(candidates[i].folder) == folder)
        {
            list->SelectOnly(int32_t(i));
            return;
        }
    // Named after its last folder, as the shared configurations are.
    KelText name = folder.Sub(1, folder.Length() - 1);
    for (int32_t i = name.Length(); i >= 1; --i)
        if (name.At(i - 1) == u'/')
        {
            name = name.Sub(i + 1, name.Length() - i);
            break;
        }
    candidates.push_back({name, folder, 0});
    AddRow(candidates.back());
    list->SelectOnly(list->RowCount() - 1);
    UpdateButtons();
}

int32_t ConfigPicker::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    if (const int32_t refused = FormDialog::ApplyPage(pageIndex, reason, flags))
        return refused;
    if (!list || list->SelectedCount() != 1)
    {
        Alert();
        return 1;
    }
    chosen = list->FirstSelected();
    return 0;
}

int32_t RunConfigurationPicker(std::vector<ConfigCandidate>& candidates, const KelText& fileName,
                               const KelText& product)
{
    ConfigPicker picker(candidates, fileName, product);
    if (picker.Show(true) != IDOK)
        return -1;
    return picker.Chosen();
}
