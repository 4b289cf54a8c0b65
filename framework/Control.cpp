#include "framework/Control.h"

#include "framework/FormDialog.h"
#include "text/WideText.h"

// --- Control ----------------------------------------------------------------

Control::Control(FormDialog& owner, int32_t controlId) : page(owner), id(controlId)
{
    if (owner.Handle())
        SetHandle(GetDlgItem(owner.Handle(), controlId));
}

Control::Control(FormDialog& owner, int32_t controlId, const wchar_t* className,
                 const KelText& text, DWORD style, const RECT& units, DWORD exStyle)
    : page(owner), id(controlId)
{
    if (!owner.Handle())
        return;
    RECT rect = owner.DialogUnitsToPixels(units);
    HWND window = CreateWindowExW(
        exStyle, className, AsWide(text), (style | WS_CHILD) & ~WS_POPUP, rect.left, rect.top,
        rect.right - rect.left, rect.bottom - rect.top, owner.Handle(),
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(controlId)),
        reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(owner.Handle(), GWLP_HINSTANCE)), nullptr);
    SetHandle(window);
    if (window)
        SendMessageW(window, WM_SETFONT, owner.Send(WM_GETFONT), FALSE);
}

Control::~Control() = default;

bool Control::OnCommand(int32_t)
{
    return false;
}

bool Control::OnNotify(NMHDR&, LRESULT&)
{
    return false;
}

bool Control::OnDrawItem(DRAWITEMSTRUCT&)
{
    return false;
}

bool Control::IsBound() const
{
    return false;
}

bool Control::IsChanged() const
{
    return false;
}

bool Control::IsValid() const
{
    return true;
}

void Control::StoreValue() {}

void Control::LoadValue() {}

// --- CheckBox -----------------------------------------------------------------

CheckBox::CheckBox(FormDialog& page, int32_t id) : Control(page, id) {}

CheckBox::CheckBox(FormDialog& page, int32_t id, int32_t* boundMember, int32_t valueWhenChecked)
    : Control(page, id), member(boundMember), checkedValue(valueWhenChecked)
{
    LoadValue();
}

bool CheckBox::IsChecked() const
{
    return Send(BM_GETCHECK) == BST_CHECKED;
}

void CheckBox::SetChecked(bool checked)
{
    Send(BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED);
}

bool CheckBox::OnCommand(int32_t code)
{
    if (code != BN_CLICKED || !clicked)
        return false;
    clicked();
    return true;
}

bool CheckBox::IsChanged() const
{
    return member && IsChecked() != loaded;
}

void CheckBox::StoreValue()
{
    if (!member)
        return;
    loaded = IsChecked();
    *member = loaded ? checkedValue : 0;
}

void CheckBox::LoadValue()
{
    if (!member)
        return;
    SetChecked(*member == checkedValue);
    loaded = IsChecked();
}

// --- EditBox --------------------------------------------------------------------

EditBox::EditBox(FormDialog& page, int32_t id) : Control(page, id) {}

EditBox::EditBox(FormDialog& page, int32_t id, KelText* boundMember)
    : Control(page, id), member(boundMember)
{
    LoadValue();
}

void EditBox::SetLimit(int32_t units)
{
    Send(EM_SETLIMITTEXT, WPARAM(units > 0 ? units : 0));
}

void EditBox::SelectAll()
{
    Send(EM_SETSEL, 0, -1);
}

bool EditBox::OnCommand(int32_t code)
{
    if (code != EN_CHANGE || !changed)
        return false;
    changed();
    return true;
}

bool EditBox::IsChanged() const
{
    return member && !Text().SameAs(loaded);
}

bool EditBox::IsValid() const
{
    return !validator || validator(Text());
}

void EditBox::StoreValue()
{
    if (!member)
        return;
    loaded = Text();
    *member = loaded;
}

void EditBox::LoadValue()
{
    if (!member)
        return;
    SetText(*member);
    loaded = Text();
    Send(EM_SETMODIFY, FALSE);
}

// --- ComboBox -------------------------------------------------------------------

ComboBox::ComboBox(FormDialog& page, int32_t id) : Control(page, id) {}

ComboBox::ComboBox(FormDialog& page, int32_t id, KelText* boundMember)
    : Control(page, id), member(boundMember)
{
    LoadValue();
}

int32_t ComboBox::AddItem(const KelText& text, LPARAM data)
{
    auto index = int32_t(Send(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(AsWide(text))));
    if (index >= 0)
        Send(CB_SETITEMDATA, WPARAM(index), data);
    return index < 0 ? -1 : index;
}

void ComboBox::Clear()
{
    Send(CB_RESETCONTENT);
}

int32_t ComboBox::Count() const
{
    auto count = int32_t(Send(CB_GETCOUNT));
    return count < 0 ? 0 : count;
}

KelText ComboBox::ItemText(int32_t index) const
{
    if (index < 0 || index >= Count())
        return KelText();
    auto length = int32_t(Send(CB_GETLBTEXTLEN, WPARAM(index)));
    if (length <= 0)
        return KelText();
    KelText text;
    text.Reserve(length + 1, false);
    Send(CB_GETLBTEXT, WPARAM(index), reinterpret_cast<LPARAM>(text.Buffer()));
    text.Sync();
    return text;
}

LPARAM ComboBox::ItemData(int32_t index) const
{
    if (index < 0 || index >= Count())
        return 0;
    return Send(CB_GETITEMDATA, WPARAM(index));
}

int32_t ComboBox::Selection() const
{
    auto index = int32_t(Send(CB_GETCURSEL));
    return index < 0 ? -1 : index;
}

void ComboBox::Select(int32_t index)
{
    Send(CB_SETCURSEL, WPARAM(index < 0 || index >= Count() ? -1 : index));
}

bool ComboBox::SelectText(const KelText& text)
{
    for (int32_t i = 0, count = Count(); i < count; ++i)
    {
        if (ItemText(i) == text)
        {
            Select(i);
            return true;
        }
    }
    Select(-1);
    if (HasEdit())
        SetText(text);
    return false;
}

bool ComboBox::HasEdit() const
{
    return (GetWindowLongPtrW(Handle(), GWL_STYLE) & 3) != CBS_DROPDOWNLIST;
}

bool ComboBox::OnCommand(int32_t code)
{
    if (code != CBN_SELCHANGE || !selected)
        return false;
    selected();
    return true;
}

bool ComboBox::IsChanged() const
{
    return member && !Text().SameAs(loaded);
}

void ComboBox::StoreValue()
{
    if (!member)
        return;
    loaded = Text();
    *member = loaded;
}

void ComboBox::LoadValue()
{
    if (!member)
        return;
    // A box with an edit shows the stored text as it stands, also when an
    // item differs from it only in case ("DEUTSCH" is not shown as
    // "Deutsch"): only the user's choice of an item replaces it.
    if (SelectText(*member) && HasEdit() && !Text().SameAs(*member))
    {
        Select(-1);
        SetText(*member);
    }
    loaded = Text();
}

// --- DropDownList -----------------------------------------------------------------

DropDownList::DropDownList(FormDialog& page, int32_t id, int32_t* boundMember,
                           std::initializer_list<KelText> rows)
    : ComboBox(page, id), member(boundMember)
{
    for (const KelText& row : rows)
        Send(CB_INSERTSTRING, WPARAM(-1), reinterpret_cast<LPARAM>(AsWide(row)));
    LoadValue();
}

bool DropDownList::IsChanged() const
{
    return member && Selection() >= 0 && Selection() != loaded;
}

void DropDownList::StoreValue()
{
    if (!member || Selection() < 0)
        return;
    loaded = Selection();
    *member = loaded;
}

void DropDownList::LoadValue()
{
    if (!member)
        return;
    Select(*member);
    loaded = Selection();
}
