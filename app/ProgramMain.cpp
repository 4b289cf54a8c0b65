#include "app/ProgramMain.h"

#include <windows.h>

#include <memory>

#include "app/KelConfigDialog.h"
#include "app/LocateConfiguration.h"
#include "app/ProductTable.h"
#include "app/SettingsContext.h"
#include "app/Version.h"
#include "framework/AppEntry.h"
#include "framework/ProgramGuard.h"
#include "framework/RegistryKey.h"
#include "framework/SystemLibrary.h"
#include "text/CommandLine.h"
#include "text/EncodedText.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

const char16_t kApplicationName[] = u"EditKel";
const char16_t kRelease[] = KEL_WIDEN(KEL_RELEASE);
const char kVersionText[] = KEL_VERSION_TEXT;

namespace
{
struct SwitchRow
{
    uint32_t code;
    TextNumber textNumber;
    const char16_t* name;
};

const SwitchRow editorSwitches[] = {
    {5, kTextSwitchBadCostTables, u"BadCostTables"},
    {4, kTextSwitchBadSpec, u"BadSpec"},
    {2, kTextSwitchProjectInfo, u"ProjectInfoDifferent"},
    {3, kTextSwitchItemInvalid, u"ItemInvalidForJob"},
    {7, kTextSwitchProfiles, u"SwitchProfiles"},
    {8, kTextSwitchConvertModels, u"ConvertModels"},
    {9, kTextSwitchFill2Ends, u"Fill2Ends"},
    {10, kTextSwitchConnectorLocks, u"ConnectorLocks"},
};
} // namespace

KelText ProductFromCommandLine(const KelText& commandLine)
{
    return CanonicalProductName(CommandLineSwitch(commandLine, u"-app="));
}

KelText StartupLanguage(const KelText& commandLine, const KelText& product)
{
    KelText language = TextHolder::LanguageFromCommandLine(commandLine);
    if (language.IsEmpty() && !product.IsEmpty())
    {
        RegistryKey key(AppEntry::RegistryKeyPathFor(KelText(kRelease), product, true));
        if (key.IsOpen())
            key.ReadString(u"Language", language);
    }
    if (language.IsEmpty())
        language = u"English";
    return language;
}

void RegisterEditorSwitches(AppEntry& app)
{
    for (const SwitchRow& row : editorSwitches)
        app.MessageSwitches().Register(row.code, KelText(DictText(row.textNumber)),
                                       KelText(row.name));
}

void RegisterApplication(AppEntry& app, KelText& product, const char16_t* applicationName,
                         const char16_t* release)
{
    app.SetApplicationName(KelText(applicationName));
    (void)release; // the release is settled by RegisterRelease once the product is known
    product = ProductFromCommandLine(app.CommandLine());
    app.SetProductName(product);
}

KelText EditorTitle(const KelText& product)
{
    const EncodedText version(kVersionText, -1, EncodedText::Ansi);
    return KelText::Formatted(u"%s Config Editor - %s", product, version.ToText());
}

int32_t ProgramMain(AppEntry* app, const KelText& commandLine, int showCommand)
{
    (void)showCommand;
    if (!app)
        return 0;
    KelText command(commandLine);
    command.Trim();

    TextHolder::Instance().Load(KelText(u"diction.ary"),
                                StartupLanguage(command, ProductFromCommandLine(command)), true);
    RegisterEditorSwitches(*app);

    KelText product;
    RegisterApplication(*app, product, kApplicationName, kRelease);
    if (product.IsEmpty())
        return 0;

    const KelText fileName = SettingsFileNameFor(product);
    const int32_t* descriptor = FindProductDescriptor(product);
    app->RegisterRelease(product, KelText(kRelease), true);

    if (!LocateConfiguration(SettingsContext::Instance(), fileName, descriptor, nullptr, product, 1,
                             0, nullptr))
        return 0;

    auto dialog =
        std::make_unique<KelConfigDialog>(nullptr, EditorTitle(product), product, fileName);
    // The dialog is the main window while it runs, and no longer once it is
    // gone, also when it ends through an exception.
    struct MainFrameScope
    {
        AppEntry& app;
        KelConfigDialog* frame;
        MainFrameScope(AppEntry& entry, KelConfigDialog* dialog) : app(entry), frame(dialog) {}
        MainFrameScope(const MainFrameScope&) = delete;
        MainFrameScope& operator=(const MainFrameScope&) = delete;
        ~MainFrameScope()
        {
            if (app.MainFrame() == frame)
                app.SetMainFrame(nullptr);
        }
    } scope{*app, dialog.get()};
    if (!app->MainFrame())
        app->SetMainFrame(dialog.get());
    dialog->Show(true);
    return 0;
}

int32_t RunEditKel(HINSTANCE instance, const KelText& commandLine, int showCommand,
                   AppInteraction* interaction)
{
    const int32_t result = RunGuarded(
        [&]
        {
            ToggleExceptionPolicy();
            SetApplication(new AppEntry(instance, nullptr, nullptr, interaction));
            AppEntry* app = GetAppEntry();
            app->SetCommandLine(commandLine);
            return ProgramMain(app, app->CommandLine(), showCommand);
        });
    // After the report of a failure too: the report needs the application.
    DestroyApplication();
    return result;
}

void ToggleExceptionPolicy()
{
    using GetPolicy = BOOL(WINAPI*)(LPDWORD);
    using SetPolicy = BOOL(WINAPI*)(DWORD);
    HMODULE kernel = LoadSystemLibrary(L"kernel32.dll");
    if (!kernel)
        return;
    auto get = reinterpret_cast<GetPolicy>(
        reinterpret_cast<void (*)()>(GetProcAddress(kernel, "GetProcessUserModeExceptionPolicy")));
    auto set = reinterpret_cast<SetPolicy>(
        reinterpret_cast<void (*)()>(GetProcAddress(kernel, "SetProcessUserModeExceptionPolicy")));
    DWORD flags = 0;
    if (get && set && get(&flags))
        set(flags ^ 1);
    FreeLibrary(kernel);
}
