#pragma once
#include <windows.h>

#include <cstdint>
#include <functional>

#include "framework/AppInteraction.h"
#include "text/AppServices.h"
#include "text/KelText.h"

class AppEntry;

// The services that every program of the family shares through its one
// application object: path tests, debug warnings, texts by kind, error
// reports, and the seam through which all modal interaction with the user
// passes (see AppInteraction). It is also the portable layers' AppServices:
// it installs itself as those on construction and removes itself on
// destruction.
class AppInterface : public AppServices
{
public:
    // The type tag of AppEntry objects (see GetAppEntry).
    static constexpr uint32_t kAppEntryTag = 1;

    // `interaction` replaces the system's windows from the start (tests); null
    // uses the real ones.
    explicit AppInterface(AppInteraction* interaction = nullptr);
    ~AppInterface() override;
    AppInterface(const AppInterface&) = delete;
    AppInterface& operator=(const AppInterface&) = delete;

    // Writes a warning for developers to the debug log (OutputDebugStringW).
    virtual void DebugWarning(const KelText& title, const KelText& message, uint32_t flags);
    // Whether a file or folder exists. False for an empty path. System error
    // boxes (no disk in drive, ...) are suppressed while it looks.
    virtual bool PathExists(const KelText& path);
    // A text the application keeps, by kind: 1 the dictionary's product
    // notice. Other kinds are empty here.
    virtual KelText GetTextByKind(int32_t kind);

    // AppServices: an error box with the message and, below it, its context.
    void ReportError(const KelText& message, const KelText& context) override;
    void SetDictionaryNotice(const KelText& notice) override;

    uint32_t TypeTag() const { return typeTag; }

    // --- modal interaction --------------------------------------------------
    AppInteraction& Interaction() { return *interaction; }
    // Installs another implementation (null: the system's) and answers the
    // one it replaces.
    AppInteraction* SetInteraction(AppInteraction* replacement);
    // A refused action: the owner's top-level window flashes, then the beep.
    void Alert(HWND owner, uint32_t beepType = MB_ICONHAND);
    bool BrowseForFolder(HWND owner, const KelText& title, const KelText& startFolder,
                         KelText& chosen);
    bool IsKeyDown(int virtualKey);
    int32_t ChooseModal(const KelText& purpose, const std::function<int32_t()>& show);

protected:
    // The owner of error boxes that have none of their own.
    virtual HWND DefaultOwner() const { return nullptr; }

    uint32_t typeTag = 0;

private:
    AppServices* previousServices;
    SystemInteraction systemInteraction;
    AppInteraction* interaction;
    KelText dictionaryNotice;
};

// The one application object of the process. SetApplication installs one and
// answers the previous; GetApplication answers it (may be null); GetAppEntry
// answers it only when it is an AppEntry; DestroyApplication deletes it and
// clears the pointer.
AppInterface* SetApplication(AppInterface* app);
AppInterface* GetApplication();
AppEntry* GetAppEntry();
void DestroyApplication();
