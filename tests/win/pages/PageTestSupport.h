#pragma once
// Helpers of the page tests: an application object with a release of the
// test's own (its registry branches and data folders belong to this test
// alone, so test programs running side by side never meet), a recording
// stand-in for the user, a configuration folder holding a settings file that
// the application and the program-paths store point at, the page built in a
// real dialog, and plain reads of the registry and the settings file.
#include <windows.h>

#include <initializer_list>
#include <string>

#include "app/ProductTable.h"
#include "app/SettingsContext.h"
#include "framework/RegistryKey.h"
#include "framework/StandardPropertyDialog.h"
#include "platform/FileSystem.h"
#include "settings/iniFile.h"
#include "tests/win/app/AppTestHelpers.h"
#include "tests/win/toolkit/ToolkitTestSupport.h"

class PageTest : public ToolkitTest
{
protected:
    PageTest() : release(UniqueName(u"P")), cleanup(release)
    {
        app.RegisterRelease(u"Shopwise", release, false);
    }

public:
    PageTest(const PageTest&) = delete;
    PageTest& operator=(const PageTest&) = delete;
    ~PageTest() override
    {
        dialog.reset();
        TempTree::RemoveAll(app.SharedDocumentsFolder());
    }

protected:
    // --- the configuration -----------------------------------------------------
    // Makes (or rewrites) the settings file `fileName` with `content` in the
    // test's configuration folder, and makes that folder the settings folder
    // of the application and the file the store's, for `product`.
    KelText UseSettings(const char* content, const KelText& product = u"Shopwise",
                        const KelText& fileName = u"KEL.INI")
    {
        folder = tree.Folder(u"config");
        settingsPath = folder + fileName;
        if (content)
            GetFileSystem().WriteBytes(settingsPath, content, strlen(content));
        app.SetSettingsFolder(folder);
        SettingsContext::Instance().SetSettingsFile(settingsPath, product,
                                                    FindProductDescriptor(product));
        return settingsPath;
    }
    std::string FileBytes() const
    {
        std::string bytes;
        GetFileSystem().ReadBytes(settingsPath, bytes);
        return bytes;
    }
    // A value of the settings file as the product reads it; "<absent>" when
    // the key is missing.
    KelText SettingsValue(const char16_t* section, const char16_t* key) const
    {
        iniFile file(settingsPath);
        KelText value = u"<absent>";
        file.Add(new iniString(section, key, &value, KelText(u"<absent>")));
        file.ReadAll();
        return value;
    }

    // --- the registry (the current user's branches of the test's release) ------
    // "<branch>\<product>\<sub>\" and "<branch>\<sub>\"; their values are read
    // and written with GetString, PutDword and the like.
    KelText ProductKey(const KelText& product, const KelText& sub = KelText()) const
    {
        return app.GetRegistryKeyPath(product, true) + (sub.IsEmpty() ? KelText() : sub + u"\\");
    }
    KelText AppKey(const KelText& sub = KelText()) const
    {
        return app.GetRegistryKeyPath(KelText(), true) + (sub.IsEmpty() ? KelText() : sub + u"\\");
    }

    // --- the page (opened with ToolkitTest::Open) -----------------------------
    // One letter per control of `ids`: "1" ticked, "0" clear; Enabled: "1"
    // enabled, "0" disabled.
    static std::string Ticks(const DialogFrame& page, std::initializer_list<int> ids)
    {
        std::string state;
        for (int id : ids)
            state += page.IsControlChecked(id) ? '1' : '0';
        return state;
    }
    static std::string Enabled(const DialogFrame& page, std::initializer_list<int> ids)
    {
        std::string state;
        for (int id : ids)
            state += page.IsControlEnabled(id) ? '1' : '0';
        return state;
    }

    KelText release;
    ReleaseCleanup cleanup;
    TempTree tree;
    KelText folder;
    KelText settingsPath;
};
