#include "app/pages/EditCommonOptions.h"

#include <windows.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "app/ConfigCheck.h"
#include "app/pages/PageIds.h"
#include "framework/AppEntry.h"
#include "framework/BitmapButton.h"
#include "framework/Control.h"
#include "framework/RegistryKey.h"
#include "platform/FileSystem.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
const char16_t kEnglish[] = u"English";
const char16_t kStartInKey[] = u"Start In";
const char16_t kStartInFolder[] = u"Folder";
const char16_t kLoginKey[] = u"Login";
const char16_t kAutoLogin[] = u"Auto Login";
constexpr int32_t kBrowseImage = 12;

// `folder` joined with a file name, with one separator between them.
KelText InFolder(const KelText& folder, const KelText& name)
{
    KelText path = folder;
    const char16_t last = path.IsEmpty() ? u'/' : path.At(path.Length() - 1);
    if (last != u'/' && last != u'\\')
        path += u"/";
    return path + name;
}
} // namespace

// --- CommonOptionsValues -------------------------------------------------------------

CommonOptionsValues::CommonOptionsValues(const KelText& productName, KelText fileName)
    : product(productName), settingsFileName(std::move(fileName)), fields(productName)
{
    fields.ShownOn(kCommonOptionsTemplate);
    // The per-user switches, always written, in this order.
    switches[0] = &fields
                       .Dword(FieldBranch::Application, u"COMMON", u"VirtualItemFolders",
                              &virtualItemFolders, 0, SaveRule::Always)
                       .ShownBy(kCommonVirtualFolders);
    switches[1] = &fields
                       .Dword(FieldBranch::Application, u"COMMON", u"RegionalCSV", &regionalCsv, 0,
                              SaveRule::Always)
                       .ShownBy(kCommonRegionalCsv);
    switches[2] = &fields
                       .Dword(FieldBranch::Application, u"COMMON", u"CachePatterns", &cachePatterns,
                              1, SaveRule::Always)
                       .ShownBy(kCommonCachePatterns);
    switches[3] = &fields
                       .Dword(FieldBranch::Application, u"COMMON", u"FancyToolbars", &fancyToolbars,
                              0, SaveRule::Always)
                       .ShownBy(kCommonFancyToolbars);

    fields.OpenDocument(SettingsPath());
    fields.SettingsChoice(u"GENERAL", u"NUMPAD", &numpad, {u"OFF", u"ON"}, 0)
        .ShownBy(kCommonNumpad);

    // The start folder is kept only while it is in use; the language "English"
    // is kept as no value (Save empties it first).
    startInField = &fields
                        .String(FieldBranch::Product, KelText(), u"StartIn", &startFolder,
                                KelText(), SaveRule::DeleteWhenEmpty)
                        .KeptWhile(&useStartFolder)
                        .ShownBy(kCommonStartFolder);
    languageField = &fields
                         .String(FieldBranch::Product, KelText(), u"Language", &language, KelText(),
                                 SaveRule::DeleteWhenEmpty)
                         .ShownBy(kCommonLanguage)
                         .ListsLanguages();
    // Any stored text means automatic login; the page only ever deletes it.
    autoLoginField = &fields
                          .String(FieldBranch::Product, kLoginKey, kAutoLogin, &autoLoginText,
                                  KelText(), SaveRule::Manual)
                          .ShownBy(kCommonAutoLogin)
                          .SwitchOffOnly();
}

KelText CommonOptionsValues::SettingsPath() const
{
    AppEntry* app = GetAppEntry();
    return InFolder(app ? app->SettingsFolder() : KelText(), settingsFileName);
}

bool CommonOptionsValues::IsPlotwise() const
{
    return product == u"Plotwise";
}

void CommonOptionsValues::Load()
{
    fields.Load();

    // Plotwise also knows an older place for the start folder.
    if (IsPlotwise() && startFolder.IsEmpty())
    {
        RegistryKey older(fields.KeyPath(FieldBranch::Application, kStartInKey));
        if (older.IsOpen())
            older.ReadString(kStartInFolder, startFolder);
    }
    if (language.IsEmpty())
        language = kEnglish;

    autoLogin = autoLoginText.IsEmpty() ? 0 : 1;

    autoLoginAtLoad = autoLogin;
    useStartFolder = startFolder.IsEmpty() ? 0 : 1;
}

PageReport CommonOptionsValues::Save()
{
    PageReport report;
    if (language == kEnglish)
        language = KelText();

    // A settings file that cannot be written (read-only, say) is reported with
    // its path; the registry values are written all the same.
    const bool documentSaved = fields.SaveDocument(1);
    fields.Save(*languageField);

    const bool startInUsed = useStartFolder != 0 && !startFolder.IsEmpty();
    const bool startInWritten = fields.Save(*startInField);
    if (startInUsed)
    {
        // The program looks for its settings in the start folder: say so when
        // they are not there. The value stays written.
        if (startInWritten && documentSaved &&
            !GetFileSystem().Exists(InFolder(startFolder, settingsFileName)))
        {
            KelText message;
            message.Format(u"%s \"%s\"\n\n%s", DictText(kTextStartFolderLacksFile),
                           startFolder.c_str(), DictText(kTextStartFolderSaved));
            report = PageReport::Notice(message, KelText(DictText(kTextEditorCaption)),
                                        MB_OK | MB_ICONEXCLAMATION);
        }
    }
    else if (IsPlotwise())
    {
        const KelText olderPath = fields.KeyPath(FieldBranch::Application, kStartInKey);
        if (RegistryKey::Exists(olderPath))
        {
            RegistryKey older(olderPath, RegistryKey::Access::Write);
            older.DeleteValue(kStartInFolder);
        }
    }

    if (autoLoginAtLoad != 0 && autoLogin == 0)
    {
        const KelText loginPath = fields.KeyPath(autoLoginField->branch, autoLoginField->place);
        if (RegistryKey::Exists(loginPath))
        {
            RegistryKey login(loginPath, RegistryKey::Access::Write);
            login.DeleteValue(autoLoginField->name);
        }
    }

    for (StoredField* field : switches)
        fields.Save(*field);

    // The language control shows "English" again after the save.
    if (language.IsEmpty())
        language = kEnglish;
    return report;
}

// --- EditCommonOptions ---------------------------------------------------------------

EditCommonOptions::EditCommonOptions(Window* owner, const KelText& product,
                                     const KelText& settingsFileName)
    : PropertyPage(owner, TemplateName(kCommonOptionsTemplate), KelText()),
      values(product, settingsFileName), startFolderGroup(*this)
{
    values.Load();
    SetTitle(KelText(DictText(kTextCommonOptionsTitle)));
}

EditCommonOptions::~EditCommonOptions()
{
    probes.Close();
}

int32_t EditCommonOptions::InitPage()
{
    AddControl<CheckBox>(kCommonAutoLogin, &values.autoLogin);
    ToolTips();
    CheckBox& useStartFolder = AddControl<CheckBox>(kCommonUseStartFolder, &values.useStartFolder);
    AddControl<EditBox>(kCommonStartFolder, &values.startFolder);
    AddControl<BitmapButton>(kCommonBrowse, kBrowseImage, [this] { Browse(); });
    startFolderGroup.Link(useStartFolder, {kCommonStartFolder, kCommonBrowse});
    // The warning mark in the margin left of the folder box, hidden until a
    // probe finds a problem.
    mark = &AddControl<Control>(kCommonStartFolderMark, L"Static", KelText(),
                                SS_ICON | SS_CENTERIMAGE | SS_NOTIFY, RECT{3, 33, 14, 45});
    mark->Send(STM_SETICON, reinterpret_cast<WPARAM>(SmallWarningIcon()));

    ComboBox& languages = AddControl<ComboBox>(kCommonLanguage, &values.language);
    const TextHolder& dictionary = TextHolder::Instance();
    // Every language of the dictionary, each once; "English" is always there.
    std::vector<KelText> names{KelText(kEnglish)};
    for (int32_t position = -1; position < dictionary.LanguageCount(); ++position)
    {
        const KelText name(dictionary.LanguageName(position));
        if (!name.IsEmpty() &&
            std::none_of(names.begin(), names.end(),
                         [&name](const KelText& known) { return known == name; }))
            names.push_back(name);
    }
    for (const KelText& name : names)
        languages.AddItem(name);

    AddControl<CheckBox>(kCommonVirtualFolders, &values.virtualItemFolders);
    AddControl<CheckBox>(kCommonCachePatterns, &values.cachePatterns);
    AddControl<CheckBox>(kCommonFancyToolbars, &values.fancyToolbars);
    AddControl<CheckBox>(kCommonRegionalCsv, &values.regionalCsv);
    AddControl<CheckBox>(kCommonNumpad, &values.numpad);

    // The folder and the language fill the page's width.
    SetLayout(kCommonStartFolder, kLayoutGrowWidth);
    SetLayout(kCommonBrowse, kLayoutKeepRight);
    SetLayout(kCommonLanguage, kLayoutGrowWidth);

    LoadBoundValues();
    startFolderGroup.Update();
    // Automatic login can be switched off here but never on.
    if (values.autoLogin == 0)
        EnableControl(kCommonAutoLogin, false);
    probes.Open(Handle());
    ProbeStartFolder();
    return 0;
}

void EditCommonOptions::ProbeStartFolder()
{
    const Control* box = FindControl(kCommonStartFolder);
    const KelText folder = box ? box->Text() : KelText();
    if (folder.IsEmpty() || folder.SameAs(probedFolder))
    {
        UpdateMark();
        return;
    }
    probedFolder = folder;
    probes.Ask(0, folder, false);
}

void EditCommonOptions::UpdateMark()
{
    const Control* box = FindControl(kCommonStartFolder);
    const bool shown = mark && box && IsControlChecked(kCommonUseStartFolder) && !tip.IsEmpty() &&
                       box->Text().SameAs(answeredFolder);
    if (!mark)
        return;
    mark->SetVisible(shown);
    ToolTips().SetToolText(*mark, shown ? tip : KelText());
    ToolTips().SetToolText(*box, shown ? tip : KelText());
}

KelText EditCommonOptions::StartFolderTip() const
{
    return mark && mark->IsVisible() ? tip : KelText();
}

bool EditCommonOptions::OnCommand(int32_t id, int32_t code, HWND control)
{
    const bool handled = PropertyPage::OnCommand(id, code, control);
    if ((id == kCommonStartFolder && code == EN_KILLFOCUS) ||
        (id == kCommonUseStartFolder && code == BN_CLICKED))
        ProbeStartFolder();
    else if (id == kCommonStartFolder && code == EN_CHANGE)
        UpdateMark();
    return handled;
}

INT_PTR EditCommonOptions::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == ProbeInbox::kAnswerMessage)
    {
        for (const ProbeInbox::Answer& answer : probes.Take())
            if (answer.folder.SameAs(probedFolder))
            {
                answeredFolder = answer.folder;
                tip = ConfigCheck::FolderTip(answer.answer);
            }
        UpdateMark();
        return TRUE;
    }
    return PropertyPage::DialogProc(message, wParam, lParam);
}

void EditCommonOptions::OnHandleDestroyed()
{
    probes.Close();
    mark = nullptr;
    PropertyPage::OnHandleDestroyed();
}

int32_t EditCommonOptions::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    if (const int32_t answer = PropertyPage::ApplyPage(pageIndex, reason, flags))
        return answer;
    return Report(values.Save());
}

void EditCommonOptions::Browse()
{
    if (BrowseForEditFolder(kCommonStartFolder, values.startFolder,
                            KelText(DictText(kTextStartFolderTitle))))
        ProbeStartFolder();
}
