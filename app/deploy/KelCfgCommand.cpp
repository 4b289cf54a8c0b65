#include "app/deploy/KelCfgCommand.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "app/ConfigCheck.h"
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
#include "text/EncodedText.h"
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

// The commands: the name typed, what it runs, its usage lines and what it
// takes beside -app= and -config=. The usage lists them in this order.
struct CfgCommandRow
{
    const char16_t* name;
    KelCfgRequest::Command command;
    TransferText usage;
    bool takesFile; // a file (for undo: the entry) may follow
    bool needsFile;
    bool takesDryRun;
    bool takesForce;
    bool takesFormat;
};

const CfgCommandRow cfgCommands[] = {
    {u"export", KelCfgRequest::Command::Export, kTextCfgUsageExport, true, false, false, false,
     false},
    {u"import", KelCfgRequest::Command::Import, kTextCfgUsageImport, true, true, true, false,
     false},
    {u"diff", KelCfgRequest::Command::Diff, kTextCfgUsageDiff, true, true, false, false, false},
    {u"history", KelCfgRequest::Command::History, kTextCfgUsageHistory, false, false, false, false,
     false},
    {u"undo", KelCfgRequest::Command::Undo, kTextCfgUsageUndo, true, false, false, true, false},
    {u"check", KelCfgRequest::Command::Check, kTextCfgUsageCheck, false, false, false, false, true},
};

const CfgCommandRow* FindCommand(const KelText& name)
{
    for (const CfgCommandRow& row : cfgCommands)
        if (name == row.name)
            return &row;
    return nullptr;
}

bool IsHelp(const KelText& argument)
{
    for (const char16_t* help : {u"--help", u"-h", u"-?", u"/?", u"/h"})
        if (argument == help)
            return true;
    return false;
}

bool LooksLikeOption(const KelText& argument)
{
    return argument.Length() > 1 && (argument.At(0) == u'-' || argument.At(0) == u'/');
}

// The usage of one command, or of all when `only` is null.
KelText UsageText(const CfgCommandRow* only)
{
    KelText commands;
    for (const CfgCommandRow& row : cfgCommands)
        if (!only || only == &row)
            commands += TransferMessage(row.usage) + u"\n";
    return Say(kTextCfgUsage, commands);
}

// A wrong command line: one line naming the problem (none when nothing was
// given at all), then the usage, on standard error.
CfgParsed Wrong(CfgConsole& console, const KelText& problem)
{
    if (!problem.IsEmpty())
        console.Err(problem);
    ErrLines(console, UsageText(nullptr));
    return CfgParsed::Wrong;
}

// Asked for: the text on standard output, with CR LF line ends.
CfgParsed Answer(CfgConsole& console, const KelText& text)
{
    KelText lines;
    for (const char16_t unit : text.View())
    {
        if (unit == u'\n')
            lines += u'\r';
        lines += unit;
    }
    console.Out(lines + u"\r\n");
    return CfgParsed::Answered;
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

CfgParsed ParseKelCfgArguments(const std::vector<KelText>& given, KelCfgRequest& request,
                               CfgConsole& console)
{
    request = KelCfgRequest();
    // "/l=" may come anywhere, also before the command; the dictionary took
    // it at start.
    std::vector<KelText> arguments;
    KelText language;
    for (const KelText& argument : given)
        if (!SwitchValue(argument, u"/l=", language))
            arguments.push_back(argument);
    if (arguments.empty())
        return Wrong(console, KelText());
    const KelText& first = arguments.front();
    if (IsHelp(first))
    {
        if (arguments.size() < 2)
            return Answer(console, UsageText(nullptr));
        const CfgCommandRow* asked = FindCommand(arguments[1]);
        if (!asked)
            return Wrong(console, Say(kTextCfgUnknownCommand, arguments[1]));
        return Answer(console, UsageText(asked));
    }
    if (first == u"--version")
        return Answer(console,
                      u"kelcfg " + EncodedText(kVersionText, -1, EncodedText::Ansi).ToText());

    const CfgCommandRow* row = FindCommand(first);
    if (!row)
        return Wrong(
            console,
            Say(LooksLikeOption(first) ? kTextCfgUnknownOption : kTextCfgUnknownCommand, first));
    request.command = row->command;
    // Help after a command answers with that command's usage, whatever else
    // the line holds.
    for (size_t i = 1; i < arguments.size(); ++i)
        if (IsHelp(arguments[i]))
            return Answer(console, UsageText(row));

    KelText typedProduct;
    bool productGiven = false;
    KelText format;
    bool formatGiven = false;
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
        else if (argument == u"--dry-run")
            request.dryRun = true;
        else if (argument == u"--force")
            request.force = true;
        else if (SwitchValue(argument, u"--format=", format))
            formatGiven = true;
        else if (LooksLikeOption(argument))
            return Wrong(console, Say(kTextCfgUnknownOption, argument));
        else if (!request.file.IsEmpty())
            return Wrong(console, Say(kTextCfgOneFile, argument));
        else
            request.file = argument;
    }

    if (!productGiven || typedProduct.IsEmpty())
        return Wrong(console, TransferMessage(kTextCfgNeedsProduct));
    request.product = CanonicalProductName(typedProduct);
    if (request.product.IsEmpty())
        return Wrong(console, Say(kTextCfgNoProduct, typedProduct));
    if (request.dryRun && !row->takesDryRun)
        return Wrong(console, TransferMessage(kTextCfgDryRunOnlyImport));
    if (request.force && !row->takesForce)
        return Wrong(console, TransferMessage(kTextCfgForceOnlyUndo));
    if (formatGiven && !row->takesFormat)
        return Wrong(console, TransferMessage(kTextCfgFormatOnlyCheck));
    if (formatGiven && !(format == u"json"))
        return Wrong(console, Say(kTextCfgUnknownFormat, format));
    request.json = formatGiven;
    if (!request.file.IsEmpty() && !row->takesFile)
        return Wrong(console, Say(kTextCfgTakesNoFile, first, request.file));
    if (request.file.IsEmpty() && row->needsFile)
        return Wrong(console, Say(kTextCfgNeedsFile, first));
    // What undo is given is the entry to put back, not a file.
    if (request.command == KelCfgRequest::Command::Undo)
        request.entry = std::exchange(request.file, KelText());
    return CfgParsed::Run;
}

KelText FindKelCfgConfiguration(AppEntry& app, const KelCfgRequest& request, CfgConsole& console)
{
    const KelText fileName = SettingsFileNameFor(request.product);
    if (!request.config.IsEmpty())
    {
        KelText folder = FullFolder(request.config);
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

namespace
{
// A JSON string: quotes, backslashes, control characters and everything
// beyond ASCII escaped, so the output reads the same in any code page.
KelText JsonString(const KelText& text)
{
    KelText json(u"\"");
    for (const char16_t unit : text.View())
    {
        if (unit == u'"' || unit == u'\\')
        {
            json += u'\\';
            json += unit;
        }
        else if (unit < 0x20 || unit > 0x7E)
            json += KelText::Formatted(u"\\u%04x", uint32_t(unit));
        else
            json += unit;
    }
    return json + u"\"";
}

// Checks the configuration: one line per problem and a summary on standard
// output (or the same as one JSON object); 1 when there is a problem.
int32_t Check(AppEntry& app, const KelCfgRequest& request, CfgConsole& console)
{
    const KelText folder = FindKelCfgConfiguration(app, request, console);
    if (folder.IsEmpty())
        return kCfgFailed;
    app.SetSettingsFolder(folder);
    const std::vector<CheckFinding> found = ConfigCheck(app, request.product, folder).Run();
    const KelText shownFolder = WithBackslashes(folder);
    if (request.json)
    {
        KelText json = u"{\r\n  \"product\": " + JsonString(request.product) +
                       u",\r\n  \"configuration\": " + JsonString(shownFolder) +
                       u",\r\n  \"problems\": [";
        for (size_t i = 0; i < found.size(); ++i)
        {
            const CheckFinding& finding = found[i];
            json += KelText(i ? u"," : u"") + u"\r\n    {\"area\": " +
                    JsonString(ConfigCheck::AreaCode(finding.area)) + u", \"option\": " +
                    JsonString(finding.option) + u", \"value\": " + JsonString(finding.value) +
                    u", \"problem\": " + JsonString(ConfigCheck::ProblemCode(finding.problem)) +
                    u", \"reason\": " + JsonString(finding.reason) + u"}";
        }
        json += found.empty() ? KelText(u"]\r\n}\r\n") : KelText(u"\r\n  ]\r\n}\r\n");
        console.Out(json);
    }
    else
    {
        for (const CheckFinding& finding : found)
            console.Out(Say(kTextCheckLine, finding.option, finding.value, finding.reason) +
                        u"\r\n");
        console.Out((found.empty() ? Say(kTextCheckNone, request.product, shownFolder)
                                   : Say(kTextCheckFound, request.product, shownFolder,
                                         int32_t(found.size()))) +
                    u"\r\n");
    }
    return found.empty() ? kCfgDone : kCfgFailed;
}
} // namespace

int32_t RunKelCfg(AppEntry& app, const KelCfgRequest& request, CfgConsole& console,
                  const KelText& timestamp)
{
    if (request.command == KelCfgRequest::Command::Check)
        return Check(app, request, console);
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
        const CfgParsed parsed = ParseKelCfgArguments(arguments, request, console);
        if (parsed == CfgParsed::Wrong)
            exitCode = kCfgUsage;
        else if (parsed == CfgParsed::Answered)
            exitCode = kCfgDone;
        else
        {
            app.SetApplicationName(KelText(kApplicationName));
            app.SetProductName(request.product);
            // Only an import that writes makes the product's data folders, as
            // the editor's start does; an export, a diff and a dry run leave
            // the disk as it was.
            const bool writes =
                request.command == KelCfgRequest::Command::Import && !request.dryRun;
            app.RegisterRelease(request.product, KelText(kRelease), true, writes);
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
