#include "app/KelConfigDialog.h"

#include "app/pages/EditProgramPaths.h"
#include "framework/EditMsgManager.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

KelConfigDialog::KelConfigDialog(Window* parent, const KelText& title, const KelText& productName,
                                 const KelText& settingsFileName)
    : StandardPropertyDialog(parent, title, 0, 1, 0, KelText(u"EditKel")), product(productName)
{
    (void)settingsFileName; // used by the common options page
    // Pages in tab order. The message switches close every product's list.
    MakePage<EditProgramPaths>();
    MakePage<EditMsgManager>();

    SetStyleBits(WS_MINIMIZEBOX);
    SetExtraButton(KelText(DictText(kTextAbout)), 1);
}

KelConfigDialog::~KelConfigDialog() = default;

int32_t KelConfigDialog::CanClose()
{
    return 1;
}
