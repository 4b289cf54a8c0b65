#include "framework/CheckTreeView.h"

#include "text/WideText.h"

CheckTreeView::CheckTreeView(FormDialog& page, int32_t id) : Control(page, id)
{
    if (!Handle())
        return;
    LONG_PTR style = GetWindowLongPtrW(Handle(), GWL_STYLE);
    if (style & TVS_CHECKBOXES)
    {
        // Set anew, so that the control makes its state images now.
        SetWindowLongPtrW(Handle(), GWL_STYLE, style & ~LONG_PTR(TVS_CHECKBOXES));
    }
    SetWindowLongPtrW(Handle(), GWL_STYLE, style | TVS_CHECKBOXES);
}

HTREEITEM CheckTreeView::AddItem(const KelText& text, LPARAM data, bool checked, HTREEITEM parent)
{
    TVINSERTSTRUCTW insert = {};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_STATE;
    insert.item.pszText = const_cast<wchar_t*>(AsWide(text));
    insert.item.lParam = data;
    insert.item.stateMask = TVIS_STATEIMAGEMASK;
    insert.item.state = INDEXTOSTATEIMAGEMASK(checked ? 2 : 1);
    auto item =
        reinterpret_cast<HTREEITEM>(Send(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    if (item)
        SetChecked(item, checked);
    return item;
}

void CheckTreeView::DeleteAllItems()
{
    Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
}

std::vector<HTREEITEM> CheckTreeView::Items(HTREEITEM parent) const
{
    std::vector<HTREEITEM> items;
    auto item = reinterpret_cast<HTREEITEM>(
        parent == TVI_ROOT ? Send(TVM_GETNEXTITEM, TVGN_ROOT, 0)
                           : Send(TVM_GETNEXTITEM, TVGN_CHILD, reinterpret_cast<LPARAM>(parent)));
    while (item)
    {
        items.push_back(item);
        item = reinterpret_cast<HTREEITEM>(
            Send(TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(item)));
    }
    return items;
}

int32_t CheckTreeView::Count() const
{
    return int32_t(Send(TVM_GETCOUNT));
}

bool CheckTreeView::IsChecked(HTREEITEM item) const
{
    auto state = UINT(Send(TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), TVIS_STATEIMAGEMASK));
    return (state >> 12) == 2;
}

void CheckTreeView::SetChecked(HTREEITEM item, bool checked)
{
    TVITEMW change = {};
    change.mask = TVIF_HANDLE | TVIF_STATE;
    change.hItem = item;
    change.stateMask = TVIS_STATEIMAGEMASK;
    change.state = INDEXTOSTATEIMAGEMASK(checked ? 2 : 1);
    Send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&change));
}

LPARAM CheckTreeView::ItemData(HTREEITEM item) const
{
    TVITEMW query = {};
    query.mask = TVIF_HANDLE | TVIF_PARAM;
    query.hItem = item;
    if (!Send(TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&query)))
        return 0;
    return query.lParam;
}

KelText CheckTreeView::ItemText(HTREEITEM item) const
{
    wchar_t buffer[1024] = {};
    TVITEMW query = {};
    query.mask = TVIF_HANDLE | TVIF_TEXT;
    query.hItem = item;
    query.pszText = buffer;
    query.cchTextMax = 1024;
    if (!Send(TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&query)))
        return KelText();
    return FromWide(buffer);
}
