#pragma once
#include <cstdint>
#include <vector>

#include "platform/FolderProbes.h"
#include "text/KelText.h"

class AppEntry;

// What the configuration check looks at.
enum class CheckArea
{
    ProgramPaths, // a folder of the program paths page
    StartFolder,  // the start folder of the common options page
    SettingsFile, // KEL.INI or QUORLIN.INI
    Dictionary,   // diction.ary beside the program
    Registry,     // a registry value that a page owns
    WebLinks,     // a web link
};

// What is wrong. The codes (ProblemCode) are the stable names that kelcfg's
// JSON carries.
enum class CheckProblem
{
    Missing,
    NotFolder,
    NotReadable,
    NotWritable,
    Unreachable,
    NoAnswer,
    LacksSettingsFile,
    FileMissing,
    ReadOnly,
    Unreadable,
    Encoding,
    DictionaryMissing,
    DictionaryDamaged,
    WrongType,
    EmptyAddress,
    NotUrl,
};

// One problem: the option it concerns, the value as stored, and the reason in
// the user's language.
struct CheckFinding
{
    CheckArea area = CheckArea::ProgramPaths;
    KelText option;
    KelText value;
    CheckProblem problem = CheckProblem::Missing;
    KelText reason;
};

// The health check of one product's configuration, without a window: the
// program paths and the start folder (probed side by side, each within the
// probes' time limit), the settings file, the dictionary, the registry values
// that the pages own, and the web links. The configuration dialog's pages use
// the folder parts; kelcfg check uses the whole.
class ConfigCheck
{
public:
    // `folder` is the configuration folder (it holds the settings file).
    ConfigCheck(AppEntry& app, const KelText& product, const KelText& folder);

    // The dictionary to check (diction.ary beside the program unless set).
    void SetDictionaryPath(const KelText& path) { dictionaryPath = path; }

    // Every problem found, in the order of the areas above.
    std::vector<CheckFinding> Run();

    // --- shared with the pages -------------------------------------------------
    // Whether the products write into the folders of a path kind (output,
    // projects, backups...), so that the folder must be writable.
    static bool NeedsWriting(int32_t kind);
    // The problem of a probed folder; false when it is fine.
    static bool FolderProblem(const FolderAnswer& answer, CheckProblem& problem);
    // The reason of a problem in the user's language; `detail` fills the
    // reasons that name something (the settings file's name, an encoding,
    // the type a registry value has, with `expected` the type it should
    // have); `seconds` is the time limit that NoAnswer ran out of.
    static KelText Reason(CheckProblem problem, const KelText& detail = KelText(),
                          const KelText& expected = KelText(), uint32_t seconds = 0);
    // The reason of a probed folder's problem as a tool tip says it (empty
    // when the folder is fine).
    static KelText FolderTip(const FolderAnswer& answer);

    static const char16_t* ProblemCode(CheckProblem problem);
    static const char16_t* AreaCode(CheckArea area);

private:
    void CheckFolders(std::vector<CheckFinding>& found);
    void CheckSettingsFile(std::vector<CheckFinding>& found);
    void CheckDictionary(std::vector<CheckFinding>& found);
    void CheckRegistry(std::vector<CheckFinding>& found);
    void CheckWebLinks(std::vector<CheckFinding>& found);

    AppEntry& app;
    KelText product;
    KelText folder;
    KelText fileName;
    KelText dictionaryPath;
};
