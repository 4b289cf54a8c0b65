#pragma once
#include <cstdint>

#include "framework/EnableGroup.h"
#include "framework/FieldTable.h"
#include "framework/PageReport.h"
#include "framework/PropertyPage.h"
#include "text/KelText.h"

// How Plotwise hooks into its host CAD program: the toolbar icon folder, the
// menu group and first pop-up menu, whether the menu is loaded, and how the
// estimating and drawing databases are treated. Everything is kept in the
// product's per-user registry branch. No window is needed: the page binds
// its controls to these members; the deployment tool and the tests use the
// class on its own.
class CadOptionsValues
{
public:
    explicit CadOptionsValues(const KelText& product);

    // Reads every value; missing ones keep their defaults. The three "use"
    // boxes start cleared whatever was read: a text is kept only when the
    // user ticks its box again.
    void Load();
    // Writes every value back, each write tried; answers the error box when
    // any write or delete failed.
    PageReport Save();
    // The report of a save that could not start (the page refused its input).
    static PageReport Failed();
    // The stored fields, each with its place (the deployment tool tells a
    // stored value from a default by it).
    const FieldTable& Fields() const { return fields; }

    int32_t useIcons = 0;
    KelText iconsFolder;
    int32_t useMenuGroup = 0;
    KelText menuGroup;
    int32_t useFirstPopup = 0;
    KelText firstPopup;
    int32_t skipMenuLoad = 0;
    // Ticked means the estimating database is not stored: kept as the text
    // "FALSE" of "StoreEstDatabase", and no value when clear.
    int32_t keepEstimatingOff = 0;
    int32_t skipValidateButtons = 0;
    int32_t buttonLoadReport = 0;
    // 0 no, 1 yes, 2 prompt ("UseDWGDatabase": "No", "Yes", "Prompt").
    int32_t drawingDatabase = 2;

private:
    FieldTable fields;
    // "StoreEstDatabase" as stored: "FALSE" or nothing.
    KelText storeEstimating;
};

// The CAD options page (template 503), shown for Plotwise only.
class EditCADOptions : public PropertyPage
{
public:
    EditCADOptions(Window* owner, const KelText& product);
    ~EditCADOptions() override;

    int32_t InitPage() override;
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;

    CadOptionsValues& Values() { return values; }

private:
    void Browse();

    CadOptionsValues values;
    EnableGroup useGroup;
};
