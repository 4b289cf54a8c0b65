#pragma once
// Resource and control ids of e2e_target.exe, shared with the tests that drive it.

#define IDD_TARGET 100
#define IDD_PAGE_GENERAL 101
#define IDD_PAGE_ADVANCED 102

#define IDC_LIST 1001
#define IDC_ADD 1002
#define IDC_CHECK 1003
#define IDC_COMBO 1004
#define IDC_TABS 1005
#define IDC_STATUS 1006
#define IDC_MESSAGE 1007

// On the "General" page.
#define IDC_EDIT 1010
#define IDC_TREE 1011

// On the "Advanced" page.
#define IDC_NOTE 1020
#define IDC_EXPERT 1021

// Exit codes: OK ends with (selected row + 1) * 100 + check box * 10 + combo
// index; Cancel with TARGET_CANCELLED; the /quiet switch, which shows no
// window at all, with TARGET_QUIET.
#define TARGET_CANCELLED 3000
#define TARGET_QUIET 7
