#pragma once
#include <windows.h>

#include <commctrl.h>

#include <cstdint>
#include <vector>

#include "framework/Control.h"

// A tree view whose items carry check boxes. The check-box style is set after
// the control exists (a template style would lose the states on some
// systems), so add the items only through this class.
class CheckTreeView : public Control
{
public:
    CheckTreeView(FormDialog& page, int32_t id);

    // Adds an item at the end of `parent`'s children (TVI_ROOT: top level).
    HTREEITEM AddItem(const KelText& text, LPARAM data, bool checked, HTREEITEM parent = TVI_ROOT);
    void DeleteAllItems();
    // The top-level items in order (or the children of `parent`).
    std::vector<HTREEITEM> Items(HTREEITEM parent = TVI_ROOT) const;
    int32_t Count() const;

    bool IsChecked(HTREEITEM item) const;
    void SetChecked(HTREEITEM item, bool checked);
    LPARAM ItemData(HTREEITEM item) const;
    KelText ItemText(HTREEITEM item) const;
};
