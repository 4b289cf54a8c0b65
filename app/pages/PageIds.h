#pragma once
// Dialog templates and control ids of the configuration dialog's pages
// (app/pages/*.rc). The numbers are fixed: other programs of the family use
// the same templates. Several controls of different pages share a number.

// --- templates ------------------------------------------------------------------
#define kProgramPathsTemplate 500
#define kTyxOptionsTemplate 501
#define kWebLinkTemplate 502
#define kCadOptionsTemplate 503
#define kCommonOptionsTemplate 504
#define kWebLinksTemplate 505

// --- program paths (500) ----------------------------------------------------------
#define kPathList 800
#define kPathBrowse 801

// --- common options (504) ---------------------------------------------------------
#define kCommonNumpad 802
#define kCommonAutoLogin 803
#define kCommonStartFolder 816
#define kCommonBrowse 817
#define kCommonLanguage 820
#define kCommonUseStartFolder 822
#define kCommonVirtualFolders 833
#define kCommonCachePatterns 834
#define kCommonFancyToolbars 835
#define kCommonRegionalCsv 839
// The warning mark beside the start folder (made by the page, not in the template).
#define kCommonStartFolderMark 841

// --- CAD options (503) --------------------------------------------------------------
#define kCadUseIcons 823
#define kCadBrowse 824
#define kCadIconsFolder 825
#define kCadMenuGroup 826
#define kCadDrawingDatabase 827
#define kCadUseMenuGroup 829
#define kCadFirstPopup 830
#define kCadUseFirstPopup 831
#define kCadKeepEstimatingOff 832
#define kCadSkipValidate 833
#define kCadSkipMenuLoad 836
#define kCadButtonLoadReport 840

// --- Tyx options (501) ----------------------------------------------------------------
#define kTyxSupport 804
#define kTyxUseCaption 814
#define kTyxCaption 815
#define kTyxUseHelpFile 816
#define kTyxHelpFile 817
#define kTyxQuickFullEdit 826
#define kTyxCanEditCats 836
#define kTyxPrintWithNonc 837
#define kTyxHideWelcome 840

// --- web links (505) and the link dialog (502) -----------------------------------------
#define kLinkList 806
#define kLinkUp 807
#define kLinkDown 808
#define kLinkAdd 809
#define kLinkEdit 810
#define kLinkDelete 811
#define kLinkIsDefault 812
#define kLinkName 813
#define kLinkAddress 814
