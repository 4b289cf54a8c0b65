#pragma once
// Templates and controls of the toolkit tests (ToolkitTest.rc).
#define kFirstPage 30001
#define kSecondPage 30002
#define kThirdPage 30003
#define kFormTemplate 30010
#define kMissingTemplate 30099

#define kCheckId 101
#define kEditId 102
#define kListId 103
#define kButtonId 104
#define kComboId 105
#define kPlainId 106
