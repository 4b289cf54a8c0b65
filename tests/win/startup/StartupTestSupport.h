#pragma once
// An application object with a release of the test's own, so that registry
// keys and shared folders never meet those of other test programs.
#include <windows.h>

#include "framework/AppEntry.h"
#include "platform/FileSystem.h"
#include "tests/win/app/AppTestHelpers.h"
#include "tests/win/support/RecordingInteraction.h"

class StartupFixture
{
public:
    explicit StartupFixture(const char16_t* productName = u"Plotwise")
        : release(UniqueName(u"T")), cleanup(release), product(productName),
          app(GetModuleHandleW(nullptr), nullptr, nullptr, &user)
    {
        SetApplication(&app);
        app.RegisterRelease(product, release, false);
    }
    StartupFixture(const StartupFixture&) = delete;
    StartupFixture& operator=(const StartupFixture&) = delete;
    ~StartupFixture()
    {
        TempTree::RemoveAll(app.SharedDocumentsFolder());
        SetApplication(nullptr);
    }

    KelText UserKey(const char16_t* sub = u"") const
    {
        return app.GetRegistryKeyPath(product, true) + sub;
    }
    KelText MachineKey(const char16_t* sub = u"") const
    {
        return app.GetRegistryKeyPath(product, false) + sub;
    }

    // A folder of the test's own holding a settings file with `content`.
    KelText ConfigFolder(const char16_t* name, const char* content = "[GENERAL]\r\n",
                         const char16_t* fileName = u"KEL.INI")
    {
        KelText folder = tree.Folder(name);
        GetFileSystem().WriteBytes(folder + fileName, content, strlen(content));
        return folder;
    }

    KelText release;
    ReleaseCleanup cleanup;
    KelText product;
    RecordingInteraction user;
    AppEntry app;
    TempTree tree;
};
