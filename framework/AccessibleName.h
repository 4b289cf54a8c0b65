#pragma once
#include <windows.h>

#include "text/KelText.h"

// What a screen reader announces for a control. Windows names most controls
// itself: a button or check box by its caption, an edit, combo or list box by
// the label (static text) just before it in the dialog's z-order, each without
// the "&" of its access key. The controls it cannot name (a picture-only
// button, an edit ruled by the check box before it, a list without a label)
// get a name of their own here.
//
// The names are handed to the system's accessibility services
// (IAccPropServices in oleacc.dll) only once something asks for them: when a
// screen reader is running, or when the first accessibility request
// (WM_GETOBJECT) reaches one of the program's dialogs. Until then they are
// only remembered, so that a start without a screen reader loads nothing.

// Gives a control its name (the access-key mark is removed).
void SetAccessibleName(HWND control, const KelText& name);
// The name given to a control with SetAccessibleName; empty when none.
KelText AccessibleNameOf(HWND control);
// Names every input control (edit, combo box, list view, tree view) among the
// direct children of `dialog` that has no static label before it: after a
// check box or radio button it takes that box's caption, without any label
// the dialog's `title`.
void NameUnlabelledControls(HWND dialog, const KelText& title);
// Forgets the names of the children of `dialog` (it is being destroyed).
void ForgetAccessibleNames(HWND dialog);

// Hands every remembered name to the accessibility services, loading them
// now if need be; names given later go to them at once. Answers whether the
// services took all of them (false where the system lacks them).
bool PublishAccessibleNames();
