#include "app/KelConfigDialog.h"

#include <memory>
#include <utility>

#include "app/deploy/ConfigHistory.h"
#include "app/pages/EditCADOptions.h"
#include "app/pages/EditCommonOptions.h"
#include "app/pages/EditProgramPaths.h"
#include "app/pages/EditTyxOptions.h"
#include "app/pages/EditWebLinks.h"
#include "framework/AppEntry.h"
#include "framework/EditMsgManager.h"
#include "framework/FrameworkResources.h"
#include "platform/FileSystem.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

KelConfigDialog::KelConfigDialog(Window* parent, const KelText& title, KelText productName,
                                 const KelText& settingsFileName)
    : StandardPropertyDialog(parent, title, 0, 1, 0, KelText(u"EditKel")),
      product(std::move(productName)), settingsFileName(settingsFileName)
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

bool KelConfigDialog::OnCommand(int32_t id, int32_t code, HWND control)
{
    AppEntry* app = GetAppEntry();
    if ((id != IDOK && id != kPropertyApplyId) || (control && code != BN_CLICKED) || !app ||
        app->SettingsFolder().IsEmpty())
        return StandardPropertyDialog::OnCommand(id, code, control);

    // Under the lock nobody else saves between the state before and the
    // state after, so the history entry holds exactly what this save did;
    // the lock is re-entrant, so the pages' own saves take it again. When
    // another program keeps the lock, the pages wait and report for
    // themselves, and the save goes unrecorded.
    const KelText folder = app->SettingsFolder();
    FileLock lock = GetFileSystem().Lock(folder + settingsFileName);
    std::unique_ptr<SaveRecord> record;
    if (lock.Held())
        record = std::make_unique<SaveRecord>(*app, product, folder,
                                              KelText(id == IDOK ? u"OK" : u"Apply"));
    const bool handled = StandardPropertyDialog::OnCommand(id, code, control);
    // A history that cannot be written never stands in the way of the save.
    if (record)
        record->Finish();
    return handled;
}
