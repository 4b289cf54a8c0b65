#pragma once
#include <cstdint>

#include "text/KelText.h"
#include "text/TextHolder.h"

// The dictionary texts of kelcfg, the console companion that exports and
// imports a product's settings. Each comes with its English wording, which is
// used when the dictionary lacks the text (kelcfg also runs without
// diction.ary beside it).
enum TransferText : int32_t
{
    kTextCfgUsage = 9800,
    kTextCfgUnknownCommand = 9801,
    kTextCfgNeedsProduct = 9802,
    kTextCfgNoProduct = 9803,
    kTextCfgUnknownOption = 9804,
    kTextCfgNeedsFile = 9805,
    kTextCfgOneFile = 9806,
    kTextCfgDryRunOnlyImport = 9807,
    kTextCfgNoConfiguration = 9808,
    kTextCfgSeveralConfigurations = 9809,
    kTextCfgNotAConfiguration = 9810,
    kTextCfgFileNotRead = 9811,
    kTextCfgFileNotWritten = 9812,
    kTextCfgLine = 9813,
    kTextCfgMalformedLine = 9814,
    kTextCfgValueOutsideSection = 9815,
    kTextCfgUnknownSection = 9816,
    kTextCfgUnknownKey = 9817,
    kTextCfgNotAChoice = 9818,
    kTextCfgKeyTwice = 9819,
    kTextCfgSectionTwice = 9820,
    kTextCfgAutoLoginOn = 9821,
    kTextCfgOnlyCutwise = 9822,
    kTextCfgNeedsFolder = 9823,
    kTextCfgMarkerInValue = 9824,
    kTextCfgNotStored = 9825,
    kTextCfgBadLink = 9826,
    kTextCfgNothingWritten = 9827,
    kTextCfgNoChanges = 9828,
    kTextCfgChanged = 9829,
    kTextCfgDryRun = 9830,
    kTextCfgWriteFailed = 9831,
    kTextCfgPutBack = 9832,
    kTextCfgPutBackFailed = 9833,
    kTextCfgNotStoredAsMeant = 9834,
    kTextCfgNotUtf8 = 9835,
    kTextCfgExported = 9836,
    kTextCfgNote = 9837,
    kTextCfgSnapshotFailed = 9838,
    kTextCfgWouldChange = 9839,
    kTextCfgEmptyListMixed = 9840,
    // The usage lines of one command each (the usage, 9800, lists them).
    kTextCfgUsageExport = 9847,
    kTextCfgUsageImport = 9848,
    kTextCfgUsageDiff = 9849,
    kTextCfgUsageHistory = 9843,
    kTextCfgUsageUndo = 9844,
    kTextCfgReadOnly = 9841,
    kTextCfgBusy = 9842,
    kTextCfgNoHistory = 9890,
    kTextCfgEntryDamaged = 9891,
    kTextCfgAndMore = 9892,
    kTextCfgNoPageValueChanged = 9893,
    kTextCfgNoSuchEntry = 9894,
    kTextCfgChangedOutsideHistory = 9895,
    kTextCfgHistoryNotWritten = 9896,
    kTextCfgUndone = 9897,
    kTextCfgForceOnlyUndo = 9898,
    kTextCfgTakesNoFile = 9899,
    kTextCfgNothingToUndo = 9900,
};

// The text in the dictionary's language, or its English wording.
KelText TransferMessage(TransferText number);
