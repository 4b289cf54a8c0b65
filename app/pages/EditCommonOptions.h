#pragma once
#include <cstdint>

#include "app/pages/FolderMarks.h"
#include "framework/EnableGroup.h"
#include "framework/FieldTable.h"
#include "framework/PageReport.h"
#include "framework/PropertyPage.h"
#include "text/KelText.h"

// The options that apply to the user rather than to one configuration: the
// start folder, the display language, automatic login and four per-user
// switches, all in the user's registry branch, plus the numeric keypad mode
// of the settings file ("GENERAL", "NUMPAD"). No window is needed: the page
// binds its controls to these members, and the deployment tool and the tests
// use the class on its own.
class CommonOptionsValues
{
public:
    // `settingsFileName` is the product's settings file ("KEL.INI" or
    // "QUORLIN.INI") in the application's settings folder.
    CommonOptionsValues(const KelText& product, KelText settingsFileName);

    // Reads every value; missing ones keep their defaults.
    void Load();
    // Writes every value back. The answer never refuses: it is the start-
    // folder warning when a start folder was written that does not hold the
    // settings file, else nothing.
    PageReport Save();

    const KelText& ProductName() const { return product; }
    const KelText& SettingsFileName() const { return settingsFileName; }
    // The settings file the keypad mode is kept in (its full path).
    KelText SettingsPath() const;
    // The stored fields, each with its place (the deployment tool tells a
    // stored value from a default by it).
    const FieldTable& Fields() const { return fields; }

    // The language as stored; "English" stands for no stored value.
    KelText language;
    KelText startFolder;
    int32_t useStartFolder = 0;
    int32_t virtualItemFolders = 0;
    int32_t regionalCsv = 0;
    int32_t cachePatterns = 1;
    int32_t fancyToolbars = 0;
    // Index into "OFF", "ON".
    int32_t numpad = 0;
    // Automatic login can be switched off here, never on: only a change from
    // on (at load) to off deletes the stored value.
    int32_t autoLogin = 0;
    int32_t autoLoginAtLoad = 0;

private:
    bool IsPlotwise() const;

    KelText product;
    KelText settingsFileName;
    FieldTable fields;
    // The four per-user switches of "COMMON", in the order they are written.
    StoredField* switches[4] = {};
    StoredField* languageField = nullptr;
    StoredField* startInField = nullptr;
    StoredField* autoLoginField = nullptr;
    // The stored "Auto Login" text; only whether it is empty counts.
    KelText autoLoginText;
};

// The common options page (template 504), shown for every product. The start
// folder is probed in the background when the page is made, when a folder is
// chosen and when the box is left after a change; a folder with a problem
// gets the warning mark left of the box and the reason as its tool tip.
class EditCommonOptions : public PropertyPage
{
public:
    EditCommonOptions(Window* owner, const KelText& product, const KelText& settingsFileName);
    EditCommonOptions(const EditCommonOptions&) = delete;
    EditCommonOptions& operator=(const EditCommonOptions&) = delete;
    ~EditCommonOptions() override;

    int32_t InitPage() override;
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;

    CommonOptionsValues& Values() { return values; }
    // The start folder's tip while its mark shows; empty otherwise.
    KelText StartFolderTip() const;

protected:
    bool OnCommand(int32_t id, int32_t code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnHandleDestroyed() override;

private:
    void Browse();
    // Probes the folder in the box unless that one was probed last.
    void ProbeStartFolder();
    // Shows the mark and the tips as the last answer and the box say.
    void UpdateMark();

    CommonOptionsValues values;
    EnableGroup startFolderGroup;
    ProbeInbox probes;
    Control* mark = nullptr;
    KelText probedFolder; // the folder of the last probe asked for
    KelText answeredFolder;
    KelText tip; // the reason for answeredFolder; empty when it is fine
};
