#pragma once
#include <windows.h>

#include <commctrl.h>

#include <cstdint>
#include <functional>
#include <initializer_list>

#include "framework/Window.h"
#include "text/KelText.h"

class FormDialog;

// A child control of a page or form. It wraps either an item of the page's
// dialog template (found by its id) or a control the page creates in code.
// The page owns its control objects and hands them their notifications
// (WM_COMMAND, WM_NOTIFY, WM_DRAWITEM) by id.
//
// A bound control edits one member of its page: it copies the member into the
// control when it is made, can tell whether the user changed it, whether its
// content is valid, and writes it back (FormDialog::ApplyPage does that for
// every bound control once all are valid).
class Control : public Window
{
public:
    // The template item `id` of the page (no window when the page has none).
    Control(FormDialog& page, int32_t id);
    // A new control made in code. `units` is the rectangle in the page's
    // dialog units; WS_CHILD is added to the style. The control gets the
    // page's font and comes last in the tab order.
    Control(FormDialog& page, int32_t id, const wchar_t* className, const KelText& text,
            DWORD style, const RECT& units, DWORD exStyle = 0);
    ~Control() override;

    int32_t Id() const { return id; }
    FormDialog& Page() const { return page; }

    // --- notifications, from the page -------------------------------------
    // WM_COMMAND with this control's id; answers whether it was handled.
    virtual bool OnCommand(int32_t code);
    // WM_NOTIFY from this control; `result` is what the page answers.
    virtual bool OnNotify(NMHDR& header, LRESULT& result);
    // WM_DRAWITEM for an owner-drawn control.
    virtual bool OnDrawItem(DRAWITEMSTRUCT& item);

    // --- binding ----------------------------------------------------------
    virtual bool IsBound() const;
    // Whether the content differs from what was last loaded or stored.
    virtual bool IsChanged() const;
    virtual bool IsValid() const;
    // Writes the content into the member.
    virtual void StoreValue();
    // Copies the member into the control.
    virtual void LoadValue();

    // The system window went with its page.
    void Detach() { SetHandle(nullptr); }

private:
    FormDialog& page;
    int32_t id;
};

// A check box (or radio button), optionally bound to a 32-bit flag member: the
// box is ticked when the member holds `checkedValue`, and writes
// `checkedValue` or 0 back.
class CheckBox : public Control
{
public:
    CheckBox(FormDialog& page, int32_t id);
    CheckBox(FormDialog& page, int32_t id, int32_t* member, int32_t checkedValue = 1);

    bool IsChecked() const;
    void SetChecked(bool checked);
    // Runs when the user clicks the box (after it changed).
    void OnClick(std::function<void()> handler) { clicked = std::move(handler); }

    bool OnCommand(int32_t code) override;
    bool IsBound() const override { return member != nullptr; }
    bool IsChanged() const override;
    void StoreValue() override;
    void LoadValue() override;

private:
    int32_t* member = nullptr;
    int32_t checkedValue = 1;
    bool loaded = false;
    std::function<void()> clicked;
};

// A text edit, optionally bound to a KelText member. A validator, when set,
// decides whether the content is acceptable.
class EditBox : public Control
{
public:
    EditBox(FormDialog& page, int32_t id);
    EditBox(FormDialog& page, int32_t id, KelText* member);

    void SetValidator(std::function<bool(const KelText&)> check) { validator = std::move(check); }
    // The most units the user can type (0: the system's limit).
    void SetLimit(int32_t units);
    void SelectAll();
    // Runs when the user changes the text.
    void OnChange(std::function<void()> handler) { changed = std::move(handler); }

    bool OnCommand(int32_t code) override;
    bool IsBound() const override { return member != nullptr; }
    bool IsChanged() const override;
    bool IsValid() const override;
    void StoreValue() override;
    void LoadValue() override;

private:
    KelText* member = nullptr;
    KelText loaded;
    std::function<bool(const KelText&)> validator;
    std::function<void()> changed;
};

// A combo box: drop-down (with an edit) or drop-down list. Optionally bound
// to a KelText member that takes the text shown (the edit's text, or the
// selected item's). A bound box selects its member's text when it is made;
// a page that fills the items afterwards calls LoadValue again.
class ComboBox : public Control
{
public:
    ComboBox(FormDialog& page, int32_t id);
    ComboBox(FormDialog& page, int32_t id, KelText* member);

    // Adds an item (sorted in place when the box sorts) and answers its index.
    int32_t AddItem(const KelText& text, LPARAM data = 0);
    void Clear();
    int32_t Count() const;
    KelText ItemText(int32_t index) const;
    LPARAM ItemData(int32_t index) const;
    // The selected index, -1 when none.
    int32_t Selection() const;
    // Selects an index (-1: none; a drop-down then shows an empty edit).
    void Select(int32_t index);
    // Selects the item whose text equals `text` (ASCII case folded); a
    // drop-down without such an item shows the text in its edit. Answers
    // whether an item was selected.
    bool SelectText(const KelText& text);
    // Whether the box has an edit (a drop-down or a simple box, not a
    // drop-down list).
    bool HasEdit() const;
    // Runs when the user picks another item.
    void OnSelectionChanged(std::function<void()> handler) { selected = std::move(handler); }

    bool OnCommand(int32_t code) override;
    bool IsBound() const override { return member != nullptr; }
    bool IsChanged() const override;
    void StoreValue() override;
    void LoadValue() override;

private:
    KelText* member = nullptr;
    KelText loaded;
    std::function<void()> selected;
};

// A drop-down list whose selected row is bound to a 32-bit index member: row
// i stands for the value i. The rows are given when it is made, so that the
// member's row is selected at once; a member outside the rows selects none.
// Storing writes the selected row; with no row selected the member keeps its
// value.
class DropDownList : public ComboBox
{
public:
    DropDownList(FormDialog& page, int32_t id, int32_t* member,
                 std::initializer_list<KelText> rows);

    bool IsBound() const override { return member != nullptr; }
    bool IsChanged() const override;
    void StoreValue() override;
    void LoadValue() override;

private:
    int32_t* member;
    int32_t loaded = -1;
};

// A static text.
class StaticText : public Control
{
public:
    StaticText(FormDialog& page, int32_t id) : Control(page, id) {}
};
