#include "framework/AppInterface.h"

#include "framework/AppEntry.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"
#include "text/WideText.h"

namespace
{
AppInterface* currentApplication = nullptr;
}

AppInterface* SetApplication(AppInterface* app)
{
    AppInterface* previous = currentApplication;
    currentApplication = app;
    return previous;
}

AppInterface* GetApplication()
{
    return currentApplication;
}

AppEntry* GetAppEntry()
{
    if (!currentApplication || currentApplication->TypeTag() != AppInterface::kAppEntryTag)
        return nullptr;
    // The type tag checked above says what the object is.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast)
    return static_cast<AppEntry*>(currentApplication);
}

void DestroyApplication()
{
    if (!currentApplication)
        return;
    AppInterface* app = currentApplication;
    currentApplication = nullptr;
    delete app;
}

AppInterface::AppInterface(AppInteraction* replacement)
    : previousServices(SetAppServices(this)),
      interaction(replacement ? replacement : &systemInteraction)
{
}

AppInterface::~AppInterface()
{
    if (GetAppServices() == this)
        SetAppServices(previousServices);
    // An object destroyed directly must not stay reachable.
    if (currentApplication == this)
        currentApplication = nullptr;
}

void AppInterface::DebugWarning(const KelText& title, const KelText& message, uint32_t)
{
    KelText line = KelText::Formatted(u"\nDBGWARN: \"%s\" Info: \"%s\"", message, title);
    OutputDebugStringW(AsWide(line));
}

bool AppInterface::PathExists(const KelText& path)
{
    if (path.IsEmpty())
        return false;
    UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    DWORD attributes = GetFileAttributesW(AsWide(path));
    SetErrorMode(previous);
    return attributes != INVALID_FILE_ATTRIBUTES;
}

KelText AppInterface::GetTextByKind(int32_t kind)
{
    return kind == 1 ? dictionaryNotice : KelText();
}

void AppInterface::ReportError(const KelText& message, const KelText& context)
{
    KelText text = context.IsEmpty() ? message : KelText::Formatted(u"%s\n\n%s", message, context);
    bool unused = false;
    interaction->ShowMessageBox(DefaultOwner(), text, DictText(kTextProblem), MB_OK | MB_ICONHAND,
                                0, KelText(), unused);
}

void AppInterface::SetDictionaryNotice(const KelText& notice)
{
    dictionaryNotice = notice;
}

AppInteraction* AppInterface::SetInteraction(AppInteraction* replacement)
{
    AppInteraction* previous = interaction;
    interaction = replacement ? replacement : &systemInteraction;
    return previous;
}

void AppInterface::Alert(HWND owner, uint32_t beepType)
{
    interaction->Alert(owner, beepType);
}

bool AppInterface::BrowseForFolder(HWND owner, const KelText& title, const KelText& startFolder,
                                   KelText& chosen)
{
    return interaction->BrowseForFolder(owner, title, startFolder, chosen);
}

bool AppInterface::IsKeyDown(int virtualKey)
{
    return interaction->IsKeyDown(virtualKey);
}

int32_t AppInterface::ChooseModal(const KelText& purpose, const std::function<int32_t()>& show)
{
    return interaction->ChooseModal(purpose, show);
}
