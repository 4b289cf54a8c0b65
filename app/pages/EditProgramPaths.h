#pragma once
#include <cstdint>

#include <vector>

#include "app/pages/FolderMarks.h"
#include "framework/PropertyPage.h"

class ListView;

// The program paths page: one row per path kind of the product, in the order
// of the program-paths store (SettingsContext), with the kind's key name and
// its folder. Browse (the button beside the list, or a double click on a row)
// picks a new folder for the selected row; the store keeps it at once, and the
// page's apply writes the store to "PROGRAM PATHS" of the settings file.
//
// Each row's folder is probed in the background once the page has been shown
// and again when a new folder is chosen; a row whose folder has a problem shows
// the warning icon in its first column and the reason in a tool tip. The
// page never waits for the answers: the marks appear when they come.
//
// Template 500: the path list (800) grows with the page, its folder column
// filling the list; the browse button (801) stays at the list's right.
class EditProgramPaths : public PropertyPage
{
public:
    explicit EditProgramPaths(Window* owner);
    EditProgramPaths(const EditProgramPaths&) = delete;
    EditProgramPaths& operator=(const EditProgramPaths&) = delete;
    ~EditProgramPaths() override;

    // Relays out the controls, then lets the folder column fill the list.
    void OnSizeChanged(int32_t width, int32_t height) override;
    // Builds the columns and the rows, selects the first row and makes the
    // browse button.
    int32_t InitPage() override;
    // The base apply, then the store's save. When either fails: the alert and
    // the error box, and a nonzero answer (the dialog stays open).
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;

    // Lets the user pick the folder of the selected row; runs only while
    // exactly one row is selected. A confirmed folder goes into the store and
    // the row shows the store's form of it; a cancel changes nothing.
    void Browse();

    // Whether a row shows the warning mark, and its tip (empty without one).
    bool IsRowMarked(int32_t row) const;
    KelText RowTip(int32_t row);

protected:
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool OnNotify(NMHDR& header, LRESULT& result) override;
    void OnHandleDestroyed() override;

private:
    ListView* PathList() const;
    // Browse is possible exactly while one row is selected.
    void UpdateBrowseButton();
    // The folder column takes the list's client width less the kind column.
    void FitFolderColumn();
    // Probes the folder of a row; the answer marks or clears it.
    void ProbeRow(int32_t row);
    // Marks or clears the rows whose answers came.
    void TakeAnswers();
    // The tips follow their rows (after scrolling and resizing).
    void PlaceTips();

    ProbeInbox probes;
    // The tip of each row; empty for a row without a problem.
    std::vector<KelText> tips;
};
