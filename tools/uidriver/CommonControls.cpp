// List views, tree views and tab controls of another process. Their item
// messages carry pointers, so the structures live in memory of the target
// process (RemoteMemory) for the duration of one message.
#include "tools/uidriver/RemoteMemory.h"
#include "tools/uidriver/UiDriver.h"

#include <algorithm>

namespace UiDriver
{

namespace
{

// Texts longer than this are cut; no control text the tests look at comes close.
constexpr int TextCapacity = 2048;

// One remote block: the item structure, then room for its text.
template <class Item>
struct ItemBlock
{
    static constexpr size_t TextOffset = (sizeof(Item) + 15) & ~size_t{15};
    static constexpr size_t Size = TextOffset + TextCapacity * sizeof(wchar_t);
};

std::wstring ReadText(const RemoteMemory& memory, size_t offset)
{
    std::wstring text(TextCapacity, L'\0');
    memory.Read(text.data(), TextCapacity * sizeof(wchar_t), offset);
    text[TextCapacity - 1] = L'\0';
    text.resize(wcslen(text.c_str()));
    return text;
}

void CheckRow(HWND list, int row)
{
    int count = ListRowCount(list);
    if (row < 0 || row >= count)
        throw Error(L"list view " + Describe(list) + L" has no row " + std::to_wstring(row) +
                    L" (it has " + std::to_wstring(count) + L")");
}

LPARAM Point(const RECT& rect)
{
    return MAKELPARAM((rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2);
}

} // namespace

// ---------------------------------------------------------------------------
// List views
// ---------------------------------------------------------------------------

int ListRowCount(HWND list)
{
    return static_cast<int>(Send(list, LVM_GETITEMCOUNT));
}

int ListColumnCount(HWND list)
{
    auto header = reinterpret_cast<HWND>(Send(list, LVM_GETHEADER));
    return header ? static_cast<int>(Send(header, HDM_GETITEMCOUNT)) : 1;
}

std::wstring ListCell(HWND list, int row, int column)
{
    using Block = ItemBlock<LVITEMW>;
    RemoteMemory memory(list, Block::Size);
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = static_cast<wchar_t*>(memory.At(Block::TextOffset));
    item.cchTextMax = TextCapacity;
    memory.Put(item);
    memory.Put(L'\0', Block::TextOffset);
    Send(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), memory.Param());
    return ReadText(memory, Block::TextOffset);
}

int ListImage(HWND list, int row)
{
    RemoteMemory memory(list, sizeof(LVITEMW));
    LVITEMW item{};
    item.mask = LVIF_IMAGE;
    item.iItem = row;
    memory.Put(item);
    Send(list, LVM_GETITEMW, 0, memory.Param());
    return memory.Get<LVITEMW>().iImage;
}

std::vector<std::wstring> ListRow(HWND list, int row)
{
    CheckRow(list, row);
    std::vector<std::wstring> cells;
    int columns = ListColumnCount(list);
    cells.reserve(size_t(std::max(columns, 0)));
    for (int column = 0; column < columns; ++column)
        cells.push_back(ListCell(list, row, column));
    return cells;
}

std::vector<std::vector<std::wstring>> ListRows(HWND list)
{
    std::vector<std::vector<std::wstring>> rows;
    int count = ListRowCount(list);
    rows.reserve(size_t(std::max(count, 0)));
    for (int row = 0; row < count; ++row)
        rows.push_back(ListRow(list, row));
    return rows;
}

int FindListRow(HWND list, std::wstring_view text)
{
    int count = ListRowCount(list);
    for (int row = 0; row < count; ++row)
        if (ListCell(list, row, 0) == text)
            return row;
    return -1;
}

std::vector<int> ListSelectedRows(HWND list)
{
    std::vector<int> rows;
    int row = -1;
    while ((row = static_cast<int>(
                Send(list, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED))) != -1)
        rows.push_back(row);
    return rows;
}

void SelectListRow(HWND list, int row)
{
    CheckRow(list, row);
    RemoteMemory memory(list, sizeof(LVITEMW));
    LVITEMW item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = 0;
    memory.Put(item);
    Send(list, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), memory.Param());
    item.state = LVIS_SELECTED | LVIS_FOCUSED;
    memory.Put(item);
    if (!Send(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), memory.Param()))
        throw Error(L"list view " + Describe(list) + L" refused to select row " +
                    std::to_wstring(row));
    Send(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
}

void DoubleClickListRow(HWND list, int row)
{
    SelectListRow(list, row);
    RemoteMemory memory(list, sizeof(RECT));
    RECT rect{};
    rect.left = LVIR_LABEL;
    memory.Put(rect);
    if (!Send(list, LVM_GETITEMRECT, static_cast<WPARAM>(row), memory.Param()))
        throw Error(L"list view " + Describe(list) + L" has no rectangle for row " +
                    std::to_wstring(row));
    rect = memory.Get<RECT>();
    PostMessageW(list, WM_LBUTTONDBLCLK, MK_LBUTTON, Point(rect));
    PostMessageW(list, WM_LBUTTONUP, 0, Point(rect));
}

// ---------------------------------------------------------------------------
// Tree views
// ---------------------------------------------------------------------------

namespace
{

HTREEITEM NextItem(HWND tree, HTREEITEM item, UINT relation)
{
    return reinterpret_cast<HTREEITEM>(
        Send(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

std::wstring TreeItemText(HWND tree, HTREEITEM handle)
{
    using Block = ItemBlock<TVITEMW>;
    RemoteMemory memory(tree, Block::Size);
    TVITEMW item{};
    item.mask = TVIF_TEXT | TVIF_HANDLE;
    item.hItem = handle;
    item.pszText = static_cast<wchar_t*>(memory.At(Block::TextOffset));
    item.cchTextMax = TextCapacity;
    memory.Put(item);
    memory.Put(L'\0', Block::TextOffset);
    if (!Send(tree, TVM_GETITEMW, 0, memory.Param()))
        throw Error(L"tree view " + Describe(tree) + L" has no such item");
    return ReadText(memory, Block::TextOffset);
}

} // namespace

std::vector<TreeItem> TreeItems(HWND tree)
{
    std::vector<TreeItem> items;
    auto walk = [&](auto& self, HTREEITEM first, int depth) -> void
    {
        for (HTREEITEM item = first; item; item = NextItem(tree, item, TVGN_NEXT))
        {
            items.push_back({item, depth, TreeItemText(tree, item), IsTreeItemChecked(tree, item)});
            self(self, NextItem(tree, item, TVGN_CHILD), depth + 1);
        }
    };
    walk(walk, NextItem(tree, nullptr, TVGN_ROOT), 0);
    return items;
}

TreeItem FindTreeItem(HWND tree, std::wstring_view text)
{
    std::vector<TreeItem> items = TreeItems(tree);
    std::wstring list;
    for (const TreeItem& item : items)
    {
        if (item.text == text)
            return item;
        list += (list.empty() ? L"'" : L", '") + item.text + L"'";
    }
    throw Error(L"tree view " + Describe(tree) + L" has no item '" + std::wstring(text) +
                L"'; its items: " + (list.empty() ? L"(none)" : list));
}

bool IsTreeItemChecked(HWND tree, HTREEITEM item)
{
    auto state = static_cast<UINT>(
        Send(tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), TVIS_STATEIMAGEMASK));
    return (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
}

void SetTreeItemChecked(HWND tree, HTREEITEM handle, bool checked)
{
    RemoteMemory memory(tree, sizeof(TVITEMW));
    TVITEMW item{};
    item.mask = TVIF_STATE | TVIF_HANDLE;
    item.hItem = handle;
    item.stateMask = TVIS_STATEIMAGEMASK;
    item.state = INDEXTOSTATEIMAGEMASK(checked ? 2 : 1);
    memory.Put(item);
    if (!Send(tree, TVM_SETITEMW, 0, memory.Param()))
        throw Error(L"tree view " + Describe(tree) + L" refused the check state of item '" +
                    TreeItemText(tree, handle) + L"'");
}

// ---------------------------------------------------------------------------
// Tab controls
// ---------------------------------------------------------------------------

std::vector<std::wstring> TabTexts(HWND tabs)
{
    using Block = ItemBlock<TCITEMW>;
    std::vector<std::wstring> texts;
    auto count = static_cast<int>(Send(tabs, TCM_GETITEMCOUNT));
    RemoteMemory memory(tabs, Block::Size);
    for (int index = 0; index < count; ++index)
    {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = static_cast<wchar_t*>(memory.At(Block::TextOffset));
        item.cchTextMax = TextCapacity;
        memory.Put(item);
        memory.Put(L'\0', Block::TextOffset);
        Send(tabs, TCM_GETITEMW, static_cast<WPARAM>(index), memory.Param());
        texts.push_back(ReadText(memory, Block::TextOffset));
    }
    return texts;
}

int CurrentTab(HWND tabs)
{
    return static_cast<int>(Send(tabs, TCM_GETCURSEL));
}

void ClickTab(HWND tabs, int index, Duration timeout)
{
    auto count = static_cast<int>(Send(tabs, TCM_GETITEMCOUNT));
    if (index < 0 || index >= count)
        throw Error(L"tab control " + Describe(tabs) + L" has no tab " + std::to_wstring(index) +
                    L" (it has " + std::to_wstring(count) + L")");
    RemoteMemory memory(tabs, sizeof(RECT));
    memory.Put(RECT{});
    if (!Send(tabs, TCM_GETITEMRECT, static_cast<WPARAM>(index), memory.Param()))
        throw Error(L"tab control " + Describe(tabs) + L" has no rectangle for tab " +
                    std::to_wstring(index));
    LPARAM point = Point(memory.Get<RECT>());
    PostMessageW(tabs, WM_LBUTTONDOWN, MK_LBUTTON, point);
    PostMessageW(tabs, WM_LBUTTONUP, 0, point);
    if (!WaitUntil([&] { return CurrentTab(tabs) == index; }, timeout))
        throw Error(L"tab " + std::to_wstring(index) + L" of " + Describe(tabs) +
                    L" is not the current one " + DescribeDuration(timeout) +
                    L" after a click on it; the current tab is " +
                    std::to_wstring(CurrentTab(tabs)));
}

void ClickTab(HWND tabs, std::wstring_view text, Duration timeout)
{
    std::vector<std::wstring> texts = TabTexts(tabs);
    for (size_t index = 0; index < texts.size(); ++index)
        if (texts[index] == text)
            return ClickTab(tabs, static_cast<int>(index), timeout);
    std::wstring list;
    for (const std::wstring& tab : texts)
        list += (list.empty() ? L"'" : L", '") + tab + L"'";
    throw Error(L"tab control " + Describe(tabs) + L" has no tab '" + std::wstring(text) +
                L"'; its tabs: " + (list.empty() ? L"(none)" : list));
}

} // namespace UiDriver
