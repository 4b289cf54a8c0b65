#pragma once
#include <cstdint>

// The numbers of the dictionary texts that the program fetches in code (the
// texts themselves are in lang/*.txt; captions of dialog templates refer to
// theirs with "^N" and are not listed here). Grouped by where they are shown.
enum TextNumber : int32_t
{
    // Buttons and captions shared by every window.
    kTextOk = 47,
    kTextCancel = 48,
    kTextNo = 65,
    kTextYes = 66,
    kTextWarning = 274,
    kTextProblem = 290,
    kTextContinue = 1492,
    kTextClose = 1786,
    kTextYesToAll = 3817,
    kTextRetry = 3909,
    kTextNoToAll = 3912,
    kTextAbort = 4550,
    kTextQuit = 6144,
    kTextApply = 9711,
    kTextDontShowAgain = 6069,

    // Settings files and the product.
    kTextFileNotWritable = 240,
    kTextFamilyName = 251,
    kTextProductNotice = 323,
    kTextProductTitle = 324,

    // Start-up and the configuration picker.
    kTextDefaultConfiguration = 1604,
    kTextNeedsSettingsFile = 2313,
    kTextNoConfiguration = 9704,
    kTextPickerTitle = 9705,
    kTextPickerName = 9706,
    kTextPickerFolder = 9707,
    kTextPickerNoSettingsFile = 9709,
    kTextPickerBrowseTitle = 9712,

    // The configuration dialog and the message switches.
    kTextAbout = 163,
    kTextSwitchesTitle = 6070,
    kTextSwitchesExplanation = 6071,
    kTextSwitchBadCostTables = 6014,
    kTextSwitchBadSpec = 6015,
    kTextSwitchProjectInfo = 9650,
    kTextSwitchItemInvalid = 9651,
    kTextSwitchProfiles = 9652,
    kTextSwitchConvertModels = 9653,
    kTextSwitchFill2Ends = 9654,
    kTextSwitchConnectorLocks = 9655,

    // Shared by the option pages.
    kTextBrowse = 1985,
    kTextFolder = 1911,
    kTextOptions = 2100,
    kTextSaveFailedCaption = 9632, // also the message of the CAD and Tyx options pages
    kTextEditorCaption = 9648,

    // Program paths page.
    kTextProgramPathsTitle = 9630,
    kTextPathKind = 9631,
    kTextProgramPathsNotSaved = 9633,

    // Web links page and the link dialog.
    kTextNewLinkName = 136,
    kTextLinkDialogTitle = 9634,
    kTextLinkNeedsAddress = 9635,
    kTextInvalidLinkCaption = 9636,
    kTextLinkBadName = 9637,
    kTextLinkName = 9638,
    kTextLinkAddress = 9639,
    kTextDefaultLink = 9640,
    kTextDeleteLinks = 9642,
    kTextWebLinksTitle = 9665,
    kTextMoveUp = 1942,
    kTextMoveDown = 1943,
    kTextAddLink = 9662,
    kTextEditLink = 9663,
    kTextDeleteLink = 9641,

    // CAD options page.
    kTextDrawingDatabasePrompt = 9643,
    kTextIconsFolderTitle = 9645,

    // Common options page.
    kTextStartFolderTitle = 9644,
    kTextStartFolderLacksFile = 9646,
    kTextStartFolderSaved = 9647,
    kTextCommonOptionsTitle = 9649,

    // Group Policy templates (the explain texts are put together from these).
    kTextPolicySupportedOn = 9870,
    kTextPolicyEveryProduct = 9871,
    kTextPolicyBoolean = 9872,
    kTextPolicySetting = 9873,
    kTextPolicySwitchOffOnly = 9874,
    kTextPolicyDefault = 9875,
    kTextPolicyRegistry = 9876,
    kTextPolicySameValue = 9877,
    kTextPolicyEmpty = 9878,
    kTextPolicyWebLinks = 9879,
    kTextPolicyDescription = 9880,
};
