#include "app/pages/EditCADOptions.h"

#include <windows.h>

#include "app/pages/PageIds.h"
#include "framework/AppEntry.h"
#include "framework/BitmapButton.h"
#include "framework/Control.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
const char16_t kToolbar[] = u"Toolbar";
const char16_t kStoredFalse[] = u"FALSE";
constexpr int32_t kBrowseImage = 12;
} // namespace

// --- CadOptionsValues ---------------------------------------------------------------

CadOptionsValues::CadOptionsValues(const KelText& product) : fields(product)
{
    fields.ShownOn(kCadOptionsTemplate);
    // Declared in the order they are written.
    fields
        .String(FieldBranch::Product, kToolbar, u"Icons", &iconsFolder, KelText(),
                SaveRule::DeleteWhenEmpty)
        .KeptWhile(&useIcons)
        .ShownBy(kCadIconsFolder);
    fields
        .String(FieldBranch::Product, kToolbar, u"MenuGroup", &menuGroup, KelText(),
                SaveRule::DeleteWhenEmpty)
        .KeptWhile(&useMenuGroup)
        .ShownBy(kCadMenuGroup);
    fields
        .String(FieldBranch::Product, kToolbar, u"Pop0", &firstPopup, KelText(),
                SaveRule::DeleteWhenEmpty)
        .KeptWhile(&useFirstPopup)
        .ShownBy(kCadFirstPopup);
    fields
        .Dword(FieldBranch::Product, kToolbar, u"SkipMenuLoad", &skipMenuLoad, 0,
               SaveRule::DeleteWhenEmpty)
        .ShownBy(kCadSkipMenuLoad);
    // The stored meaning is inverted: "FALSE" ticks the box.
    fields
        .String(FieldBranch::Product, KelText(), u"StoreEstDatabase", &storeEstimating, KelText(),
                SaveRule::DeleteWhenEmpty)
        .ShownBy(kCadKeepEstimatingOff)
        .CheckedAs(kStoredFalse);
    fields
        .Choice(FieldBranch::Product, KelText(), u"UseDWGDatabase", &drawingDatabase,
                {u"No", u"Yes", u"Prompt"}, 2, SaveRule::Always)
        .ShownBy(kCadDrawingDatabase)
        .OptionLabels({kTextNo, kTextYes, kTextDrawingDatabasePrompt});
    fields
        .Dword(FieldBranch::Product, KelText(), u"SkipValidateButtons", &skipValidateButtons, 0,
               SaveRule::Always)
        .ShownBy(kCadSkipValidate);
    fields
        .Dword(FieldBranch::Product, KelText(), u"ButtonLoadReport", &buttonLoadReport, 0,
               SaveRule::Always)
        .ShownBy(kCadButtonLoadReport);
}

void CadOptionsValues::Load()
{
    fields.Load();
    // The stored meaning is inverted: "FALSE" ticks the box.
    keepEstimatingOff = storeEstimating == kStoredFalse ? 1 : 0;
    useIcons = useMenuGroup = useFirstPopup = 0;
    // Any non-zero switch shows as a ticked box.
    for (int32_t* flag : {&skipMenuLoad, &skipValidateButtons, &buttonLoadReport})
        *flag = *flag != 0 ? 1 : 0;
}

PageReport CadOptionsValues::Save()
{
    storeEstimating = keepEstimatingOff != 0 ? KelText(kStoredFalse) : KelText();
    if (fields.SaveRegistry() != 0)
        return Failed();
    return PageReport::Accepted();
}

PageReport CadOptionsValues::Failed()
{
    return PageReport::Refused(KelText(DictText(kTextSaveFailedCaption)),
                               KelText(DictText(kTextEditorCaption)), true, true);
}

// --- EditCADOptions -------------------------------------------------------------------

EditCADOptions::EditCADOptions(Window* owner, const KelText& product)
    : PropertyPage(owner, TemplateName(kCadOptionsTemplate), KelText()), values(product),
      useGroup(*this)
{
    values.Load();
    SetTitle(KelText(u"Plotwise"));
}

EditCADOptions::~EditCADOptions() = default;

int32_t EditCADOptions::InitPage()
{
    AddControl<DropDownList>(
        kCadDrawingDatabase, &values.drawingDatabase,
        std::initializer_list<KelText>{KelText(DictText(kTextNo)), KelText(DictText(kTextYes)),
                                       KelText(DictText(kTextDrawingDatabasePrompt))});
    ToolTips();
    useGroup.Link(AddControl<CheckBox>(kCadUseIcons, &values.useIcons),
                  {kCadIconsFolder, kCadBrowse});
    AddControl<EditBox>(kCadIconsFolder, &values.iconsFolder);
    AddControl<BitmapButton>(kCadBrowse, kBrowseImage, [this] { Browse(); });
    useGroup.Link(AddControl<CheckBox>(kCadUseMenuGroup, &values.useMenuGroup), {kCadMenuGroup});
    AddControl<EditBox>(kCadMenuGroup, &values.menuGroup);
    useGroup.Link(AddControl<CheckBox>(kCadUseFirstPopup, &values.useFirstPopup), {kCadFirstPopup});
    AddControl<EditBox>(kCadFirstPopup, &values.firstPopup);
    AddControl<CheckBox>(kCadSkipMenuLoad, &values.skipMenuLoad);
    AddControl<CheckBox>(kCadKeepEstimatingOff, &values.keepEstimatingOff);
    AddControl<CheckBox>(kCadSkipValidate, &values.skipValidateButtons);
    AddControl<CheckBox>(kCadButtonLoadReport, &values.buttonLoadReport);
    // The texts fill the page's width.
    for (int32_t id : {kCadIconsFolder, kCadMenuGroup, kCadFirstPopup})
        SetLayout(id, kLayoutGrowWidth);
    SetLayout(kCadBrowse, kLayoutKeepRight);
    useGroup.Update();
    return 0;
}

int32_t EditCADOptions::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    if (PropertyPage::ApplyPage(pageIndex, reason, flags) != 0)
        return Report(CadOptionsValues::Failed());
    return Report(values.Save());
}

void EditCADOptions::Browse()
{
    BrowseForEditFolder(kCadIconsFolder, values.iconsFolder,
                        KelText(DictText(kTextIconsFolderTitle)));
}
