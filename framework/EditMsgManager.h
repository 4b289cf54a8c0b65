#pragma once
#include <cstdint>

#include "framework/CheckTreeView.h"
#include "framework/IndexedList.h"
#include "framework/PropertyPage.h"

// The message-switch page: every message switch of the application as a row
// with a check box, ticked while the message is shown. Applying stores each
// row's tick as the switch's state ("COMMON\PROMPTS", 1 shown, 0 not).
//
// Template 1054: the explanation (static 1336) above the checked tree view
// (1335), which grows with the page.
class EditMsgManager : public PropertyPage
{
public:
    explicit EditMsgManager(Window* owner);
    ~EditMsgManager() override;

    // Fills the rows from the application's switch list, in list order.
    int32_t InitPage() override;
    // Stores the tick of every row whose switch is still registered, as a
    // REG_DWORD: 1 ticked, 0 not; rows the user did not change included.
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;

    // The switch code of a row, 0 outside the rows.
    uint32_t RowCode(int32_t row);
    int32_t RowCount() const { return rows.Count(); }

private:
    CheckTreeView* tree = nullptr;
    // The switch code of each row, in row order.
    IndexedList<uint32_t> rows;
    // The rows being made while the page is filled.
    IndexedList<uint32_t> filling;
};
