#pragma once
#include <cstdint>
#include <vector>

#include "text/KelText.h"

class AppEntry;

// The console of kelcfg: standard output for the export and the change lines,
// standard error for every message.
class CfgConsole
{
public:
    virtual ~CfgConsole() = default;
    // Writes `text` as it is.
    virtual void Out(const KelText& text) = 0;
    // Writes one line of a message.
    virtual void Err(const KelText& line) = 0;
};

// A command line of kelcfg:
//   kelcfg export -app=<product> [-config=<folder>] [<file>]
//   kelcfg import -app=<product> [-config=<folder>] <file> [--dry-run]
//   kelcfg diff -app=<product> [-config=<folder>] <file>
//   kelcfg history -app=<product> [-config=<folder>]
//   kelcfg undo -app=<product> [-config=<folder>] [<entry>] [--force]
//   kelcfg check -app=<product> [-config=<folder>] [--format=json]
//   kelcfg --help [<command>]      (also -h, -?, /?; also after a command)
//   kelcfg --version
// "/l=<language>" may come anywhere (it chooses the dictionary's language).
// The commands, their usage and what they take are one table in
// KelCfgCommand.cpp.
struct KelCfgRequest
{
    enum class Command
    {
        Export,
        Import,
        Diff,
        History, // lists the recorded saves
        Undo,    // puts back the state before a recorded save
        Check,   // tells what is wrong with the configuration
    };
    Command command = Command::Export;
    KelText product; // canonical spelling
    KelText config;  // as given; empty: found as the editor finds it
    KelText file;    // empty: standard output (export only)
    bool dryRun = false;
    KelText entry;      // undo: the recorded save to undo (empty: the newest)
    bool force = false; // undo: also over a save that is not in the history
    bool json = false;  // check: the problems as JSON (--format=json)
};

// kelcfg's exit codes.
constexpr int32_t kCfgDone = 0;
constexpr int32_t kCfgFailed = 1;
constexpr int32_t kCfgUsage = 2;

// What the command line asks for.
enum class CfgParsed
{
    Run,      // `request` holds a command to run
    Answered, // the usage or the version went to standard output (exit 0)
    Wrong,    // one line naming the problem and the usage went to standard error (exit 2)
};

// Reads the arguments (without the program's name) into `request`; the
// help and version requests are answered on `console` at once.
CfgParsed ParseKelCfgArguments(const std::vector<KelText>& arguments, KelCfgRequest& request,
                               CfgConsole& console);

// The configuration folder of a request: the folder given with -config= when
// it holds the product's settings file, else the registered configuration of
// that name; without -config=, the product's stored start folder ("StartIn")
// when it holds the settings file, else the single configuration that the
// editor would offer. Empty, and the user told why (with the candidates when
// there are several), when there is none.
KelText FindKelCfgConfiguration(AppEntry& app, const KelCfgRequest& request, CfgConsole& console);

// Runs a request; the application's release and switches are registered.
// `timestamp` goes into an export's header. Answers the exit code.
int32_t RunKelCfg(AppEntry& app, const KelCfgRequest& request, CfgConsole& console,
                  const KelText& timestamp);

// kelcfg.exe from its entry: makes the application object (its message
// boxes go to standard error), loads the dictionary in the language of "/l="
// or the product's, registers the editor's message switches and the release,
// and runs the command. Answers the exit code.
int32_t KelCfgMain(const std::vector<KelText>& arguments, const KelText& commandLine,
                   CfgConsole& console);
