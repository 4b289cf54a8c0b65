#pragma once
#include <windows.h>

#include <commctrl.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "framework/Control.h"

// A list view in report view: columns, rows with item data, sub-item texts,
// selection, and callbacks for selection changes and double clicks (delivered
// from the page's WM_NOTIFY).
class ListView : public Control
{
public:
    ListView(FormDialog& page, int32_t id);

    // --- columns ------------------------------------------------------------
    // Appends a column; width in pixels (-1: a quarter of the list's width).
    // Answers its index, -1 on failure.
    int32_t AddColumn(const KelText& heading, int32_t width = -1, int32_t format = LVCFMT_LEFT);
    int32_t ColumnCount() const;
    int32_t ColumnWidth(int32_t column) const;
    void SetColumnWidth(int32_t column, int32_t width);

    // --- rows ----------------------------------------------------------------
    // Appends a row: text of column 0, item data, image index (-1: none;
    // I_IMAGENONE: none, with the image's place kept free).
    // Answers its index, -1 on failure.
    int32_t AddRow(const KelText& text, LPARAM data = 0, int32_t image = -1);
    // Inserts a row before `index` (at the end when out of range).
    int32_t InsertRow(int32_t index, const KelText& text, LPARAM data = 0, int32_t image = -1);
    bool DeleteRow(int32_t row);
    void DeleteAllRows();
    int32_t RowCount() const;
    void SetItemText(int32_t row, int32_t column, const KelText& text);
    KelText ItemText(int32_t row, int32_t column) const;
    LPARAM ItemData(int32_t row) const;
    void SetItemData(int32_t row, LPARAM data);
    // Repaints rows first..last (inclusive).
    void RedrawRows(int32_t first, int32_t last);

    // --- selection ---------------------------------------------------------
    int32_t SelectedCount() const;
    // Selected rows, ascending.
    std::vector<int32_t> SelectedRows() const;
    // The first selected row, -1 when none.
    int32_t FirstSelected() const;
    bool IsSelected(int32_t row) const;
    // Selects or deselects one row (others keep their state).
    void Select(int32_t row, bool selected = true);
    // Makes `row` the only selected row, the focused one, and visible.
    void SelectOnly(int32_t row);
    void ClearSelection();
    void EnsureVisible(int32_t row);

    // --- styles ---------------------------------------------------------------
    // Selection highlights the whole row.
    void SetFullRowSelect(bool on);
    void SetExtendedStyle(DWORD mask, DWORD style);

    // --- callbacks -------------------------------------------------------------
    // Runs whenever a row becomes selected or deselected.
    void OnSelectionChanged(std::function<void()> handler)
    {
        selectionChanged = std::move(handler);
    }
    // Runs when the user double-clicks the list.
    void OnDoubleClick(std::function<void()> handler) { doubleClick = std::move(handler); }

    bool OnNotify(NMHDR& header, LRESULT& result) override;

private:
    std::function<void()> selectionChanged;
    std::function<void()> doubleClick;
};
