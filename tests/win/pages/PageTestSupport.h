#pragma once
// Helpers of the page tests: an application object with a release of the
// test's own (its registry branches and data folders belong to this test
// alone, so test programs running side by side never meet), a recording
// stand-in for the user, a configuration folder holding a settings file that
// the application and the program-paths store point at, the page built in a
// real dialog, and plain reads of the registry and the settings file.
#include <windows.h>

#include <memory>
#include <string>
#include <utility>

#include "app/ProductTable.h"
#include "app/SettingsContext.h"
#include "framework/RegistryKey.h"
#include "framework/StandardPropertyDialog.h"
#include "settings/iniFile.h"
#include "tests/win/app/AppTestHelpers.h"
#include "tests/win/toolkit/ToolkitTestSupport.h"
#include "text/FileSystem.h"

class PageTest : public ToolkitTest
{
protected:
    PageTest() : release(UniqueName(u"P")), cleanup(release)
    {
        app.RegisterRelease(u"Shopwise", release, false);
    }
    ~PageTest() override
    {
        dialog.reset();
        TempTree::RemoveAll(app.SharedDocumentsFolder());
    }

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
    // "<branch>\<product>\<sub>\" and "<branch>\<sub>\".
    KelText ProductKey(const KelText& product, const KelText& sub = KelText()) const
    {
        return app.GetRegistryKeyPath(product, true) + (sub.IsEmpty() ? KelText() : sub + u"\\");
    }
    KelText AppKey(const KelText& sub = KelText()) const
    {
        return app.GetRegistryKeyPath(KelText(), true) + (sub.IsEmpty() ? KelText() : sub + u"\\");
    }
    static void PutString(const KelText& key, const KelText& name, const KelText& value)
    {
        RegistryKey written;
        ASSERT_TRUE(written.Create(key));
        ASSERT_TRUE(written.WriteString(name, value));
    }
    static void PutDword(const KelText& key, const KelText& name, uint32_t value)
    {
        RegistryKey written;
        ASSERT_TRUE(written.Create(key));
        ASSERT_TRUE(written.WriteDword(name, value));
    }
    // The string value, or "<absent>" ("<other type>" when it is no string).
    static KelText GetString(const KelText& key, const KelText& name)
    {
        KelText value;
        switch (RegistryKey(key).ReadString(name, value))
        {
        case RegistryRead::Ok:
            return value;
        case RegistryRead::OtherType:
            return KelText(u"<other type>");
        default:
            return KelText(u"<absent>");
        }
    }
    // The DWORD value, -1 when absent, -2 when of another type.
    static int64_t GetDword(const KelText& key, const KelText& name)
    {
        uint32_t value = 0;
        switch (RegistryKey(key).ReadDword(name, value))
        {
        case RegistryRead::Ok:
            return value;
        case RegistryRead::OtherType:
            return -2;
        default:
            return -1;
        }
    }

    // --- the dialog ------------------------------------------------------------
    // Builds a dialog holding one page T(dialog, args...), shows it (modeless)
    // and answers the page.
    template <typename T, typename... Args>
    T& Open(Args&&... args)
    {
        dialog = std::make_unique<StandardPropertyDialog>(nullptr, u"Pages", 0, 1, 0, KelText());
        T* page = dialog->MakePage<T>(std::forward<Args>(args)...);
        EXPECT_NE(page, nullptr);
        dialog->Show(false);
        return *page;
    }
    void Ok() { Click(dialog->Handle(), IDOK); }
    void Cancel() { Click(dialog->Handle(), IDCANCEL); }
    void Apply() { Click(dialog->Handle(), kPropertyApplyId); }
    bool DialogOpen() const { return dialog && dialog->Exists(); }

    KelText release;
    ReleaseCleanup cleanup;
    TempTree tree;
    KelText folder;
    KelText settingsPath;
    std::unique_ptr<StandardPropertyDialog> dialog;
};
