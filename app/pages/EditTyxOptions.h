#pragma once
#include <cstdint>

#include "framework/EnableGroup.h"
#include "framework/FieldTable.h"
#include "framework/PageReport.h"
#include "framework/PropertyPage.h"
#include "text/KelText.h"

// The stand-alone products' options: a support text and three permission
// switches in section "GENERAL" of KEL.INI (whatever settings file the editor
// was started for), and a custom window caption, a custom help file and the
// welcome-screen switch in the product's per-user registry branch. No window
// is needed: the page binds its controls to these members; the deployment
// tool and the tests use the class on its own.
class TyxOptionsValues
{
public:
    explicit TyxOptionsValues(const KelText& product);

    void Load();
    // Saves KEL.INI, then the registry values. When the file could not be
    // written nothing else is written, and the answer is the error box.
    PageReport Save();

    // Which products may change the permission switches, and which the
    // welcome screen (the box is editable) and which store it.
    bool CanEditPermissions() const;
    bool CanEditWelcomeScreen() const;
    bool StoresWelcomeScreen() const;

    KelText SettingsPath() const;
    const KelText& ProductName() const { return product; }
    // The stored fields, each with its place (the deployment tool tells a
    // stored value from a default by it).
    const FieldTable& Fields() const { return fields; }

    KelText support;
    // Indexes into "NO", "YES".
    int32_t quickFullEdit = 0;
    int32_t canEditCats = 0;
    int32_t printWithNonc = 0;
    int32_t useCaption = 0;
    KelText caption;
    int32_t useHelpFile = 0;
    KelText helpFile;
    int32_t hideWelcomeScreen = 0;

private:
    KelText product;
    FieldTable fields;
    StoredField* welcomeField = nullptr;
};

// The Tyx options page (template 501), shown for every product but Plotwise
// and Ledgerline; titled with the product name.
class EditTyxOptions : public PropertyPage
{
public:
    EditTyxOptions(Window* owner, const KelText& product);
    ~EditTyxOptions() override;

    int32_t InitPage() override;
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;

    TyxOptionsValues& Values() { return values; }

private:
    TyxOptionsValues values;
    EnableGroup useGroup;
};
