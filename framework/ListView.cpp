#include "framework/ListView.h"

#include "text/WideText.h"

ListView::ListView(FormDialog& page, int32_t id) : Control(page, id) {}

int32_t ListView::AddColumn(const KelText& heading, int32_t width, int32_t format)
{
    if (width < 0)
        width = (ClientRect().right - ClientRect().left) / 4;
    LVCOLUMNW column = {};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
    column.fmt = format;
    column.cx = width;
    column.pszText = const_cast<wchar_t*>(AsWide(heading));
    column.iSubItem = ColumnCount();
    auto index = int32_t(
        Send(LVM_INSERTCOLUMNW, WPARAM(column.iSubItem), reinterpret_cast<LPARAM>(&column)));
    return index < 0 ? -1 : index;
}

int32_t ListView::ColumnCount() const
{
    HWND header = reinterpret_cast<HWND>(Send(LVM_GETHEADER));
    if (!header)
        return 0;
    auto count = int32_t(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    return count < 0 ? 0 : count;
}

int32_t ListView::ColumnWidth(int32_t column) const
{
    return int32_t(Send(LVM_GETCOLUMNWIDTH, WPARAM(column)));
}

void ListView::SetColumnWidth(int32_t column, int32_t width)
{
    Send(LVM_SETCOLUMNWIDTH, WPARAM(column), MAKELPARAM(width < 0 ? 0 : width, 0));
}

int32_t ListView::AddRow(const KelText& text, LPARAM data, int32_t image)
{
    return InsertRow(RowCount(), text, data, image);
}

int32_t ListView::InsertRow(int32_t index, const KelText& text, LPARAM data, int32_t image)
{
    LVITEMW item = {};
    item.mask = LVIF_TEXT | LVIF_PARAM;
    item.iItem = index < 0 || index > RowCount() ? RowCount() : index;
    item.pszText = const_cast<wchar_t*>(AsWide(text));
    item.lParam = data;
    if (image >= 0 || image == I_IMAGENONE)
    {
        item.mask |= LVIF_IMAGE;
        item.iImage = image;
    }
    auto row = int32_t(Send(LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    return row < 0 ? -1 : row;
}

bool ListView::DeleteRow(int32_t row)
{
    return row >= 0 && row < RowCount() && Send(LVM_DELETEITEM, WPARAM(row)) != 0;
}

void ListView::DeleteAllRows()
{
    Send(LVM_DELETEALLITEMS);
}

int32_t ListView::RowCount() const
{
    auto count = int32_t(Send(LVM_GETITEMCOUNT));
    return count < 0 ? 0 : count;
}

void ListView::SetItemText(int32_t row, int32_t column, const KelText& text)
{
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = const_cast<wchar_t*>(AsWide(text));
    Send(LVM_SETITEMTEXTW, WPARAM(row), reinterpret_cast<LPARAM>(&item));
}

KelText ListView::ItemText(int32_t row, int32_t column) const
{
    if (row < 0 || row >= RowCount())
        return KelText();
    // The control answers how much it copied; grow until the text fits.
    for (int32_t size = 256; size <= 65536; size *= 4)
    {
        KelText text;
        text.Reserve(size, false);
        LVITEMW item = {};
        item.iSubItem = column;
        item.pszText = AsWide(text.Buffer());
        item.cchTextMax = size;
        auto copied = int32_t(Send(LVM_GETITEMTEXTW, WPARAM(row), reinterpret_cast<LPARAM>(&item)));
        // Some versions point pszText at their own storage instead of copying.
        if (item.pszText != AsWide(text.Buffer()))
            return item.pszText ? FromWide(item.pszText) : KelText();
        text.Sync();
        if (copied < size - 1)
            return text;
    }
    return KelText();
}

LPARAM ListView::ItemData(int32_t row) const
{
    LVITEMW item = {};
    item.mask = LVIF_PARAM;
    item.iItem = row;
    if (row < 0 || !Send(LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)))
        return 0;
    return item.lParam;
}

void ListView::SetItemData(int32_t row, LPARAM data)
{
    LVITEMW item = {};
    item.mask = LVIF_PARAM;
    item.iItem = row;
    item.lParam = data;
    Send(LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void ListView::RedrawRows(int32_t first, int32_t last)
{
    Send(LVM_REDRAWITEMS, WPARAM(first), LPARAM(last));
}

int32_t ListView::SelectedCount() const
{
    return int32_t(Send(LVM_GETSELECTEDCOUNT));
}

std::vector<int32_t> ListView::SelectedRows() const
{
    std::vector<int32_t> rows;
    int32_t row = -1;
    while ((row = int32_t(Send(LVM_GETNEXTITEM, WPARAM(row), MAKELPARAM(LVNI_SELECTED, 0)))) >= 0)
        rows.push_back(row);
    return rows;
}

int32_t ListView::FirstSelected() const
{
    auto row = int32_t(Send(LVM_GETNEXTITEM, WPARAM(-1), MAKELPARAM(LVNI_SELECTED, 0)));
    return row < 0 ? -1 : row;
}

bool ListView::IsSelected(int32_t row) const
{
    return (Send(LVM_GETITEMSTATE, WPARAM(row), LVIS_SELECTED) & LVIS_SELECTED) != 0;
}

void ListView::Select(int32_t row, bool selected)
{
    LVITEMW item = {};
    item.stateMask = LVIS_SELECTED;
    item.state = selected ? LVIS_SELECTED : 0;
    Send(LVM_SETITEMSTATE, WPARAM(row), reinterpret_cast<LPARAM>(&item));
}

void ListView::SelectOnly(int32_t row)
{
    ClearSelection();
    if (row < 0 || row >= RowCount())
        return;
    LVITEMW item = {};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = LVIS_SELECTED | LVIS_FOCUSED;
    Send(LVM_SETITEMSTATE, WPARAM(row), reinterpret_cast<LPARAM>(&item));
    EnsureVisible(row);
}

void ListView::ClearSelection()
{
    // Row -1 stands for every row.
    Select(-1, false);
}

void ListView::EnsureVisible(int32_t row)
{
    Send(LVM_ENSUREVISIBLE, WPARAM(row), FALSE);
}

void ListView::SetFullRowSelect(bool on)
{
    SetExtendedStyle(LVS_EX_FULLROWSELECT, on ? LVS_EX_FULLROWSELECT : 0);
}

void ListView::SetExtendedStyle(DWORD mask, DWORD style)
{
    Send(LVM_SETEXTENDEDLISTVIEWSTYLE, mask, style);
}

bool ListView::OnNotify(NMHDR& header, LRESULT& result)
{
    switch (header.code)
    {
    case LVN_ITEMCHANGED:
    {
        auto& change = reinterpret_cast<NMLISTVIEW&>(header);
        bool selection = (change.uChanged & LVIF_STATE) &&
                         ((change.uOldState ^ change.uNewState) & LVIS_SELECTED);
        if (!selection || !selectionChanged)
            return false;
        selectionChanged();
        result = 0;
        return true;
    }
    case NM_DBLCLK:
        if (!doubleClick)
            return false;
        doubleClick();
        result = 0;
        return true;
    default:
        return false;
    }
}
