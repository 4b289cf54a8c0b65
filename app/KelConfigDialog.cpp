#include "app/KelConfigDialog.h"

#include "app/pages/EditCADOptions.h"
#include "app/pages/EditCommonOptions.h"
#include "app/pages/EditProgramPaths.h"
#include "app/pages/EditTyxOptions.h"
#include "app/pages/EditWebLinks.h"
#include "framework/EditMsgManager.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

KelConfigDialog::KelConfigDialog(Window* parent, const KelText& title, const KelText& productName,
                                 const KelText& settingsFileName)
    : StandardPropertyDialog(parent, title, 0, 1, 0, KelText(u"EditKel")), product(productName)
{
    // Pages in tab order. The message switches close every product's list.
    MakePage<EditProgramPaths>();
    if (product == u"Plotwise")
        MakePage<EditCADOptions>(product);
    else if (product != u"Ledgerline")
    {
        MakePage<EditTyxOptions>(product);
        MakePage<EditWebLinks>(product);
    }
    MakePage<EditCommonOptions>(product, settingsFileName);
    MakePage<EditMsgManager>();

    SetStyleBits(WS_MINIMIZEBOX);
    SetExtraButton(KelText(DictText(kTextAbout)), 1);
}

KelConfigDialog::~KelConfigDialog() = default;

int32_t KelConfigDialog::CanClose()
{
    return 1;
}
