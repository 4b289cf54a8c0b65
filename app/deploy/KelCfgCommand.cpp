#include "app/deploy/KelCfgCommand.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <string>

#include "app/LocateConfiguration.h"
#include "app/ProductTable.h"
#include "app/ProgramMain.h"
#include "app/SettingsContext.h"
#include "app/deploy/ConfigHistory.h"
#include "app/deploy/SettingsTransfer.h"
#include "app/deploy/TransferTexts.h"
#include "framework/AppEntry.h"
#include "framework/AppInteraction.h"
#include "framework/Folders.h"
#include "framework/RegistryKey.h"
#include "platform/FileSystem.h"
#include "text/TextHolder.h"
#include "text/WideText.h"

namespace
{
template <typename... Args>
KelText Say(TransferText number, const Args&... args)
{
    const KelText pattern = TransferMessage(number);
    return KelText::Formatted(pattern.c_str(), args...);
}

// Each line of a text that may hold line breaks.
void ErrLines(CfgConsole& console, const KelText& text)
{
    const std::u16string_view all = text.View();
    size_t at = 0;
    while (at <= all.size())
    {
        size_t end = all.find(u'\n', at);
        if (end == std::u16string_view::npos)
            end = all.size();
        console.Err(KelText(all.data() + at, int32_t(end - at)));
        at = end + 1;
    }
}

bool Usage(CfgConsole& console, const KelText& problem)
{
    if (!problem.IsEmpty())
        console.Err(problem);
    ErrLines(console, TransferMessage(kTextCfgUsage));
    return false;
}

// The value of a switch "<name><value>" (name matched without regard to case).
bool SwitchValue(const KelText& argument, const char16_t* name, KelText& value)
{
    if (!argument.StartsWith(name))
        return false;
    const int32_t length = KelText::Measure(name);
    value = argument.Sub(length + 1, argument.Length() - length);
    return true;
}

KelText FullFolder(const KelText& folder)
{
    wchar_t buffer[4096];
    const DWORD length = GetFullPathNameW(AsWide(WithBackslashes(folder)), 4096, buffer, nullptr);
    return NormaliseFolder(length > 0 && length < 4096 ? FromWide(buffer, int32_t(length))
                                                       : folder);
}

// Message boxes of the application's code become lines on standard error; a
// console program never opens a window and never waits for a user.
class ConsoleInteraction : public AppInteraction
{
public:
    explicit ConsoleInteraction(CfgConsole& console) : console(console) {}

    int32_t ShowMessageBox(HWND, const KelText& text, const KelText& caption, uint32_t style,
                           uint32_t, const KelText&, bool& dontShowAgain) override
    {
        dontShowAgain = false;
        ErrLines(console, caption.IsEmpty() ? text : caption + u": " + text);
        return MessageBoxDefaultButton(style);
    }
    void Alert(HWND, uint32_t) override {}
    bool BrowseForFolder(HWND, const KelText&, const KelText&, KelText&) override { return false; }
    bool IsKeyDown(int) override { return false; }
    int32_t ChooseModal(const KelText&, const std::function<int32_t()>&) override { return -1; }

private:
    CfgConsole& console;
};

KelText LocalTimestamp()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return KelText::Formatted(u"%04i-%02i-%02i %02i:%02i", int32_t(now.wYear), int32_t(now.wMonth),
                              int32_t(now.wDay), int32_t(now.wHour), int32_t(now.wMinute));
}
} // namespace

bool ParseKelCfgArguments(const std::vector<KelText>& arguments, KelCfgRequest& request,
                          CfgConsole& console)
{
    request = KelCfgRequest();
    if (arguments.empty())
        return Usage(console, KelText());
    const KelText& command = arguments.front();
    if (command == u"export")
        request.command = KelCfgRequest::Command::Export;
    else if (command == u"import")
        request.command = KelCfgRequest::Command::Import;
    else if (command == u"diff")
        request.command = KelCfgRequest::Command::Diff;
    else if (command == u"history")
        request.command = KelCfgRequest::Command::History;
    else if (command == u"undo")
        request.command = KelCfgRequest::Command::Undo;
    else
        return Usage(console, Say(kTextCfgUnknownCommand, command));

    KelText typedProduct;
    bool productGiven = false;
    for (size_t i = 1; i < arguments.size(); ++i)
    {
        const KelText& argument = arguments[i];
        KelText value;
        if (SwitchValue(argument, u"-app=", value))
        {
            typedProduct = value;
            productGiven = true;
        }
        else if (SwitchValue(argument, u"-config=", value))
            request.config = value;
        else if (SwitchValue(argument, u"/l=", value))
            continue; // the dictionary's language, taken at start
        else if (argument == u"--dry-run")
            request.dryRun = true;
        else if (argument == u"--force")
            request.force = true;
        else if (argument.Length() > 1 && (argument.At(0) == u'-' || argument.At(0) == u'/'))
            return Usage(console, Say(kTextCfgUnknownOption, argument));
        else if (!request.file.IsEmpty())
            return Usage(console, Say(kTextCfgOneFile, argument));
        else
            request.file = argument;
    }

    if (!productGiven || typedProduct.IsEmpty())
        return Usage(console, TransferMessage(kTextCfgNeedsProduct));
    request.product = CanonicalProductName(typedProduct);
    if (request.product.IsEmpty())
        return Usage(console, Say(kTextCfgNoProduct, typedProduct));
    if (request.dryRun && request.command != KelCfgRequest::Command::Import)
        return Usage(console, TransferMessage(kTextCfgDryRunOnlyImport));
    if (request.force && request.command != KelCfgRequest::Command::Undo)
        return Usage(console, TransferMessage(kTextCfgForceOnlyUndo));
    if (request.command == KelCfgRequest::Command::History && !request.file.IsEmpty())
        return Usage(console, Say(kTextCfgTakesNoFile, command, request.file));
    if (request.command == KelCfgRequest::Command::Undo)
    {
        request.entry = request.file;
        request.file = KelText();
        return true;
    }
    if (request.file.IsEmpty() && request.command != KelCfgRequest::Command::Export &&
        request.command != KelCfgRequest::Command::History)
        return Usage(console, Say(kTextCfgNeedsFile, command));
    return true;
}

KelText FindKelCfgConfiguration(AppEntry& app, const KelCfgRequest& request, CfgConsole& console)
{
    const KelText fileName = SettingsFileNameFor(request.product);
    if (!request.config.IsEmpty())
    {
        const KelText folder = FullFolder(request.config);
        if (FolderHoldsFile(app, folder, fileName))
            return folder;
        for (const ConfigCandidate& candidate :
             GatherConfigurations(app, request.product, fileName))
            if (candidate.name == request.config)
                return candidate.folder;
        console.Err(Say(kTextCfgNotAConfiguration, request.config, fileName, request.product));
        return KelText();
    }

    // As the editor starts: the stored start folder first.
    KelText startIn;
    RegistryKey branch(app.GetRegistryKeyPath(request.product, true));
    if (branch.IsOpen() && branch.ReadString(u"StartIn", startIn) == RegistryRead::Ok &&
        FolderHoldsFile(app, startIn, fileName))
        return NormaliseFolder(startIn);

    const std::vector<ConfigCandidate> candidates =
        GatherConfigurations(app, request.product, fileName);
    if (candidates.size() == 1)
        return candidates.front().folder;
    if (candidates.empty())
    {
        for (const KelText& fallback : {app.SettingsFolder(), app.ProgramFolder()})
            if (FolderHoldsFile(app, fallback, fileName))
                return NormaliseFolder(fallback);
        console.Err(Say(kTextCfgNoConfiguration, request.product));
        return KelText();
    }
    console.Err(Say(kTextCfgSeveralConfigurations, request.product));
    for (const ConfigCandidate& candidate : candidates)
        console.Err(u"  " + candidate.name + u"  " + candidate.folder);
    return KelText();
}

namespace
{
// The recorded saves of the request's product, newest first; those of the
// folder given with -config= only, when one is given. Damaged entries are
// told and left out. False (told) when the folder given is no configuration.
bool RecordedSaves(AppEntry& app, const KelCfgRequest& request, CfgConsole& console,
                   std::vector<HistoryEntry>& entries)
{
    KelText folder;
    if (!request.config.IsEmpty())
    {
        folder = FindKelCfgConfiguration(app, request, console);
        if (folder.IsEmpty())
            return false;
    }
    std::vector<KelText> damaged;
    entries = ConfigHistory(app, request.product).Entries(damaged);
    for (const KelText& id : damaged)
        console.Err(Say(kTextCfgEntryDamaged, id));
    if (!folder.IsEmpty())
        entries.erase(std::remove_if(entries.begin(), entries.end(),
                                     [&folder](const HistoryEntry& entry)
                                     { return !SameConfigurationFolder(entry.folder, folder); }),
                      entries.end());
    return true;
}

int32_t ListHistory(AppEntry& app, const KelCfgRequest& request, CfgConsole& console)
{
    std::vector<HistoryEntry> entries;
    if (!RecordedSaves(app, request, console, entries))
        return kCfgFailed;
    if (entries.empty())
        console.Err(Say(kTextCfgNoHistory, request.product));
    for (const HistoryEntry& entry : entries)
        console.Out(entry.id + u"  " + entry.time + u"  " + entry.user + u"  " +
                    WithBackslashes(entry.folder) + u"  " + HistorySummary(entry) + u"\r\n");
    return kCfgDone;
}

// Puts back the state before a recorded save, file and registry together,
// under the settings file's update lock, and records that as a save too.
int32_t Undo(AppEntry& app, const KelCfgRequest& request, CfgConsole& console)
{
    std::vector<HistoryEntry> entries;
    if (!RecordedSaves(app, request, console, entries))
        return kCfgFailed;
    if (entries.empty())
    {
        console.Err(Say(kTextCfgNoHistory, request.product));
        return kCfgFailed;
    }
    auto target = entries.begin();
    if (!request.entry.IsEmpty())
        target = std::find_if(entries.begin(), entries.end(),
                              [&request](const HistoryEntry& entry)
                              { return entry.id == request.entry; });
    if (target == entries.end())
    {
        console.Err(Say(kTextCfgNoSuchEntry, request.entry, request.product));
        return kCfgFailed;
    }

    const KelText settingsFile = target->folder + SettingsFileNameFor(request.product);
    FileLock lock = GetFileSystem().Lock(settingsFile);
    if (!lock.Held())
    {
        console.Err(Say(kTextCfgBusy, WithBackslashes(settingsFile)));
        return kCfgFailed;
    }
    // The newest save of that configuration must have left the file as it is
    // now; otherwise a save that the history does not know came after it,
    // and putting an older state back would silently undo that one too.
    const HistoryEntry& newest =
        *std::find_if(entries.begin(), entries.end(),
                      [&target](const HistoryEntry& entry)
                      { return SameConfigurationFolder(entry.folder, target->folder); });
    bool existed = false;
    std::string recorded, now;
    const bool known = newest.after.FileContent(settingsFile, existed, recorded);
    const bool exists = GetFileSystem().Exists(settingsFile);
    const bool same =
        known && existed == exists &&
        (!exists || (GetFileSystem().ReadBytes(settingsFile, now) && now == recorded));
    if (!same && !request.force)
    {
        console.Err(Say(kTextCfgChangedOutsideHistory, WithBackslashes(settingsFile)));
        return kCfgFailed;
    }

    SaveRecord record(app, request.product, target->folder, u"undo " + target->id);
    const std::vector<KelText> notBack = target->before.Restore();
    const SaveRecord::Outcome outcome = record.Finish();
    if (outcome == SaveRecord::Outcome::NotWritten)
        console.Err(Say(kTextCfgHistoryNotWritten, WithBackslashes(record.History().Folder())));
    if (!notBack.empty())
    {
        KelText list;
        for (const KelText& place : notBack)
            list += (list.IsEmpty() ? KelText() : KelText(u", ")) + place;
        console.Err(Say(kTextCfgPutBackFailed, list));
        return kCfgFailed;
    }
    if (outcome == SaveRecord::Outcome::Unchanged)
        console.Err(Say(kTextCfgNothingToUndo, target->id));
    else
        console.Err(Say(kTextCfgUndone, target->id, target->time));
    return kCfgDone;
}
} // namespace

int32_t RunKelCfg(AppEntry& app, const KelCfgRequest& request, CfgConsole& console,
                  const KelText& timestamp)
{
    if (request.command == KelCfgRequest::Command::History)
        return ListHistory(app, request, console);
    if (request.command == KelCfgRequest::Command::Undo)
        return Undo(app, request, console);

    const KelText folder = FindKelCfgConfiguration(app, request, console);
    if (folder.IsEmpty())
        return kCfgFailed;
    SettingsTransfer transfer(app, SettingsContext::Instance(), request.product, folder);

    if (request.command == KelCfgRequest::Command::Export)
    {
        const KelText text = transfer.Export(timestamp);
        if (request.file.IsEmpty())
        {
            console.Out(text);
            return kCfgDone;
        }
        const std::string utf8 = text.ToUtf8();
        if (!GetFileSystem().WriteBytes(WithBackslashes(request.file), utf8.data(), utf8.size()))
        {
            console.Err(Say(kTextCfgFileNotWritten, request.file));
            return kCfgFailed;
        }
        console.Err(Say(kTextCfgExported, request.product, request.file));
        return kCfgDone;
    }

    // An import holds the settings file's update lock from reading the
    // configuration to its last write, so that two imports (or an import and
    // the editor) behave as if one ran after the other.
    FileLock lock;
    if (request.command == KelCfgRequest::Command::Import && !request.dryRun)
    {
        const KelText settingsFile = folder + SettingsFileNameFor(request.product);
        lock = GetFileSystem().Lock(settingsFile);
        if (!lock.Held())
        {
            console.Err(Say(kTextCfgBusy, WithBackslashes(settingsFile)));
            return kCfgFailed;
        }
    }

    std::string bytes;
    if (!GetFileSystem().ReadBytes(request.file, bytes))
    {
        console.Err(Say(kTextCfgFileNotRead, request.file));
        return kCfgFailed;
    }
    SettingsTransfer::Mode mode = SettingsTransfer::Mode::Apply;
    if (request.command == KelCfgRequest::Command::Diff)
        mode = SettingsTransfer::Mode::Diff;
    else if (request.dryRun)
        mode = SettingsTransfer::Mode::DryRun;
    // The state before an import is recorded in the history (after the
    // import, when it changed anything); a history that cannot be written
    // never stops the import.
    std::unique_ptr<SaveRecord> record;
    if (mode == SettingsTransfer::Mode::Apply)
        record = std::make_unique<SaveRecord>(app, request.product, folder, KelText(u"import"));
    const TransferOutcome outcome = transfer.Import(bytes, mode);
    if (record && record->Finish() == SaveRecord::Outcome::NotWritten && outcome.wrote)
        console.Err(Say(kTextCfgHistoryNotWritten, WithBackslashes(record->History().Folder())));
    for (const KelText& change : outcome.changes)
        console.Out(change + u"\r\n");
    for (const KelText& message : outcome.messages)
        console.Err(message);
    return outcome.exitCode;
}

int32_t KelCfgMain(const std::vector<KelText>& arguments, const KelText& commandLine,
                   CfgConsole& console)
{
    ConsoleInteraction interaction(console);
    int32_t exitCode = kCfgFailed;
    try
    {
        SetApplication(new AppEntry(GetModuleHandleW(nullptr), nullptr, nullptr, &interaction));
        AppEntry& app = *GetAppEntry();
        app.SetCommandLine(commandLine);
        // As the editor starts: the dictionary in the language of "/l=" or
        // the product's, then the message switches, then the release.
        TextHolder::Instance().Load(
            KelText(u"diction.ary"),
            StartupLanguage(commandLine, ProductFromCommandLine(commandLine)), false);
        RegisterEditorSwitches(app);
        KelCfgRequest request;
        if (!ParseKelCfgArguments(arguments, request, console))
            exitCode = kCfgUsage;
        else
        {
            app.SetApplicationName(KelText(kApplicationName));
            app.SetProductName(request.product);
            app.RegisterRelease(request.product, KelText(kRelease), true);
            exitCode = RunKelCfg(app, request, console, LocalTimestamp());
        }
    }
    catch (const std::exception& error)
    {
        console.Err(KelText::FromUtf8(error.what()));
        exitCode = kCfgFailed;
    }
    DestroyApplication();
    return exitCode;
}
