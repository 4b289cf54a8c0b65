#include "app/pages/EditTyxOptions.h"

#include <windows.h>

#include "app/pages/PageIds.h"
#include "framework/AppEntry.h"
#include "framework/Control.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
const char16_t kGeneral[] = u"GENERAL";
} // namespace

// --- TyxOptionsValues -------------------------------------------------------------------

TyxOptionsValues::TyxOptionsValues(const KelText& productName)
    : product(productName), fields(productName)
{
    fields.ShownOn(kTyxOptionsTemplate);
    fields.OpenDocument(SettingsPath());
    fields.SettingsString(kGeneral, u"SUPPORT", &support, KelText()).ShownBy(kTyxSupport);
    fields.SettingsChoice(kGeneral, u"QUICKFULLEDIT", &quickFullEdit, {u"NO", u"YES"}, 0)
        .ShownBy(kTyxQuickFullEdit);
    fields.SettingsChoice(kGeneral, u"CANEDITCATS", &canEditCats, {u"NO", u"YES"}, 0)
        .ShownBy(kTyxCanEditCats);
    fields.SettingsChoice(kGeneral, u"PRINTWITHNONC", &printWithNonc, {u"NO", u"YES"}, 0)
        .ShownBy(kTyxPrintWithNonc);

    // The caption and the help file are kept only while their boxes are ticked.
    fields
        .String(FieldBranch::Product, KelText(), u"Caption", &caption, KelText(), SaveRule::Always)
        .KeptWhile(&useCaption)
        .ShownBy(kTyxCaption);
    fields
        .String(FieldBranch::Product, KelText(), u"Help File", &helpFile, KelText(),
                SaveRule::Always)
        .KeptWhile(&useHelpFile)
        .ShownBy(kTyxHelpFile);
    welcomeField = &fields
                        .Dword(FieldBranch::Product, KelText(), u"HideWelcomeScreen",
                               &hideWelcomeScreen, 0, SaveRule::Manual)
                        .ShownBy(kTyxHideWelcome);
    if (!StoresWelcomeScreen())
        welcomeField->NeverWritten();
}

KelText TyxOptionsValues::SettingsPath() const
{
    AppEntry* app = GetAppEntry();
    return (app ? app->SettingsFolder() : KelText()) + u"KEL.INI";
}

bool TyxOptionsValues::CanEditPermissions() const
{
    return product == u"Cutwise";
}

bool TyxOptionsValues::CanEditWelcomeScreen() const
{
    return product == u"Cutwise" || product == u"Tallywise" || product == u"Fieldpost";
}

bool TyxOptionsValues::StoresWelcomeScreen() const
{
    // Fieldpost may tick the box but never stores it; the other products
    // leave the stored value alone.
    return product == u"Cutwise" || (product == u"Tallywise" && product != u"Fieldpost");
}

void TyxOptionsValues::Load()
{
    fields.Load();
    useCaption = caption.IsEmpty() ? 0 : 1;
    useHelpFile = helpFile.IsEmpty() ? 0 : 1;
    hideWelcomeScreen = hideWelcomeScreen != 0 ? 1 : 0;
}

PageReport TyxOptionsValues::Save()
{
    if (!fields.SaveDocument())
    {
        KelText caption;
        caption.Format(u"%s %s", product.c_str(), DictText(kTextOptions));
        return PageReport::Refused(KelText(DictText(kTextSaveFailedCaption)), caption, true, true);
    }
    // Failed registry writes are not reported.
    fields.SaveRegistry();
    if (StoresWelcomeScreen())
        fields.Save(*welcomeField);
    return PageReport::Accepted();
}

// --- EditTyxOptions -------------------------------------------------------------------

EditTyxOptions::EditTyxOptions(Window* owner, const KelText& product)
    : PropertyPage(owner, TemplateName(kTyxOptionsTemplate), KelText()), values(product),
      useGroup(*this)
{
    values.Load();
    SetTitle(product);
}

EditTyxOptions::~EditTyxOptions() = default;

int32_t EditTyxOptions::InitPage()
{
    AddControl<EditBox>(kTyxSupport, &values.support);
    AddControl<CheckBox>(kTyxQuickFullEdit, &values.quickFullEdit);
    AddControl<CheckBox>(kTyxCanEditCats, &values.canEditCats);
    AddControl<CheckBox>(kTyxPrintWithNonc, &values.printWithNonc);
    useGroup.Link(AddControl<CheckBox>(kTyxUseCaption, &values.useCaption), {kTyxCaption});
    AddControl<EditBox>(kTyxCaption, &values.caption);
    useGroup.Link(AddControl<CheckBox>(kTyxUseHelpFile, &values.useHelpFile), {kTyxHelpFile});
    AddControl<EditBox>(kTyxHelpFile, &values.helpFile);
    AddControl<CheckBox>(kTyxHideWelcome, &values.hideWelcomeScreen);

    // Shown to every product, editable only where the product uses them.
    for (int32_t id : {kTyxQuickFullEdit, kTyxCanEditCats, kTyxPrintWithNonc})
        EnableControl(id, values.CanEditPermissions());
    EnableControl(kTyxHideWelcome, values.CanEditWelcomeScreen());
    // The texts fill the page's width.
    for (int32_t id : {kTyxSupport, kTyxCaption, kTyxHelpFile})
        SetLayout(id, kLayoutGrowWidth);
    useGroup.Update();
    return 0;
}

int32_t EditTyxOptions::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    if (const int32_t answer = PropertyPage::ApplyPage(pageIndex, reason, flags))
        return answer;
    return Report(values.Save());
}
