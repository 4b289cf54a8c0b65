// EditKel's MSI package as an administrator deploys it: msiexec installs it
// silently, again, into a chosen folder, over an older version and under a
// newer one, and removes it, while this program checks what reached the
// disk, the machine registry and the Start menu, and runs the installed
// editor as a user would. It runs in a Wine prefix of its own (see
// CMakeLists.txt); every test starts with nothing of EditKel installed.
#include "tests/e2e/support/EditKelSession.h"

#include <shobjidl.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

using namespace EditKelSession;
using namespace std::chrono_literals;

namespace
{
const std::vector<std::wstring> Products = {L"Plotwise", L"Shopwise",  L"Ledgerline",
                                            L"Cutwise",  L"Fieldpost", L"CutwiseComponents",
                                            L"Tallywise"};
const std::wstring Release = L"Brindlecove " + Wide(KEL_RELEASE);
const std::wstring MachineBranch = L"Software\\Orvantix\\" + Release;
const std::wstring UninstallKey = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
const std::wstring NewCode = Wide(KEL_PRODUCT_CODE);
const std::wstring OldCode = Wide(KEL_OLD_PRODUCT_CODE);

bool UnderWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

fs::path KnownFolder(int csidl)
{
    wchar_t path[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, csidl, nullptr, 0, path);
    return path;
}

fs::path DefaultFolder()
{
    return KnownFolder(CSIDL_PROGRAM_FILES) / L"Orvantix" / Release;
}

// Windows puts the shortcuts of a per-machine package into the Start menu of
// all users. Wine's installer resolves the Start-menu folder to the installing
// user's even then, so under Wine they are looked for there.
fs::path MenuFolder()
{
    return KnownFolder(UnderWine() ? CSIDL_PROGRAMS : CSIDL_COMMON_PROGRAMS) / Release;
}

// A folder as a comparable text: backslashes, no trailing one, lower case.
std::wstring FolderKey(std::wstring path)
{
    std::replace(path.begin(), path.end(), L'/', L'\\');
    while (!path.empty() && path.back() == L'\\')
        path.pop_back();
    CharLowerBuffW(path.data(), DWORD(path.size()));
    return path;
}

std::optional<std::wstring> MachineString(const std::wstring& key, const wchar_t* name)
{
    return GetString(HKEY_LOCAL_MACHINE, key, name);
}

bool MachineKeyExists(const std::wstring& key)
{
    return KeyExists(HKEY_LOCAL_MACHINE, key);
}

struct Shortcut
{
    std::wstring target, arguments, workingFolder;
};

Shortcut ReadShortcut(const fs::path& file)
{
    const HRESULT com = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    IShellLinkW* link = nullptr;
    IPersistFile* persist = nullptr;
    wchar_t target[1024] = {}, arguments[1024] = {}, folder[1024] = {};
    if (SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                   reinterpret_cast<void**>(&link))) &&
        SUCCEEDED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&persist))) &&
        SUCCEEDED(persist->Load(file.c_str(), STGM_READ)))
    {
        link->GetPath(target, 1024, nullptr, 0);
        link->GetArguments(arguments, 1024);
        link->GetWorkingDirectory(folder, 1024);
    }
    if (persist)
        persist->Release();
    if (link)
        link->Release();
    if (SUCCEEDED(com))
        CoUninitialize();
    return {target, arguments, folder};
}

// --- msiexec -------------------------------------------------------------------------
// Runs msiexec silently and answers its exit code; `log` receives its verbose
// log as plain 8-bit text.
DWORD Msiexec(const std::wstring& arguments, std::string* log = nullptr)
{
    const fs::path file = fs::temp_directory_path() / L"kel-msiexec.log";
    std::error_code ignored;
    fs::remove(file, ignored);
    TargetProcess msiexec =
        TargetProcess::Start(L"msiexec.exe", arguments + L" /qn /l*v \"" + file.wstring() + L"\"");
    const DWORD exitCode = msiexec.WaitForExit(180s);
    std::string bytes = FileBytes(file);
    // A log in UTF-16 keeps its ASCII letters in every other byte.
    if (log && bytes.starts_with("\xFF\xFE"))
        for (size_t at = 2; at < bytes.size(); at += 2)
            *log += bytes[at];
    else if (log)
        *log = std::move(bytes);
    return exitCode;
}

std::wstring Quoted(const fs::path& path)
{
    return L"\"" + path.wstring() + L"\"";
}

const fs::path NewMsi = WindowsPath(KEL_MSI);
const fs::path OldMsi = WindowsPath(KEL_OLD_MSI);

DWORD Install(const fs::path& msi, const std::wstring& extra = {})
{
    std::string log;
    const DWORD exitCode =
        Msiexec(L"/i " + Quoted(msi) + (extra.empty() ? L"" : L" " + extra), &log);
    EXPECT_EQ(exitCode, 0u) << Utf8(msi.wstring()) << "\n" << log;
    return exitCode;
}

class Installer : public Scenario
{
protected:
    void SetUp() override
    {
        Scenario::SetUp();
        RemoveBoth();
        ASSERT_FALSE(MachineKeyExists(UninstallKey + NewCode));
        ASSERT_FALSE(MachineKeyExists(UninstallKey + OldCode));
    }
    // Also removes what a test put beside the installed files or into a
    // folder of its own.
    void TearDown() override
    {
        RemoveBoth();
        std::error_code ignored;
        fs::remove_all(DefaultFolder().parent_path(), ignored);
        fs::remove_all(fs::temp_directory_path() / L"kel-install", ignored);
        Scenario::TearDown();
    }

    static void RemoveBoth()
    {
        Msiexec(L"/x " + NewCode);
        Msiexec(L"/x " + OldCode);
    }

    // Everything an install of `version` leaves in `folder`: the shipped
    // files, every product's "InstallPath", the Start-menu shortcuts and the
    // uninstall entry.
    static void ExpectInstalled(const fs::path& folder, const std::wstring& code,
                                const std::string& version)
    {
        SCOPED_TRACE(Utf8(folder.wstring()) + " " + version);
        // The shipped files, and nothing else.
        std::set<std::wstring> expected, found;
        std::wistringstream names(Wide(KEL_SHIPPED_NAMES));
        for (std::wstring name; std::getline(names, name, L'|');)
            expected.insert(name);
        uintmax_t bytes = 0;
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
            found.insert(entry.path().filename().wstring());
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder, error))
            if (entry.is_regular_file())
                bytes += entry.file_size();
        EXPECT_EQ(found, expected);
        // The Group Policy templates: the ADMX and one ADML per language.
        if (expected.count(L"PolicyDefinitions"))
        {
            for (const wchar_t* file : {L"EditKel.admx", L"en-US/EditKel.adml",
                                        L"de-DE/EditKel.adml", L"fr-FR/EditKel.adml"})
                EXPECT_TRUE(fs::is_regular_file(folder / L"PolicyDefinitions" / file))
                    << Utf8(file);
        }

        const std::wstring branch = MachineBranch + L"\\";
        for (const std::wstring& product : Products)
        {
            const std::optional<std::wstring> path =
                MachineString(branch + product, L"InstallPath");
            ASSERT_TRUE(path) << Utf8(product);
            EXPECT_EQ(FolderKey(path.value_or(std::wstring())), FolderKey(folder.wstring()))
                << Utf8(product);
        }

        EXPECT_EQ(std::distance(fs::directory_iterator(MenuFolder(), error), {}),
                  ptrdiff_t(Products.size()))
            << Utf8(MenuFolder().wstring());
        for (const std::wstring& product : Products)
        {
            const Shortcut link = ReadShortcut(MenuFolder() / (L"EditKel - " + product + L".lnk"));
            EXPECT_EQ(FolderKey(link.target), FolderKey((folder / L"EditKel.exe").wstring()))
                << Utf8(product);
            EXPECT_EQ(link.arguments, L"-app=" + product);
            EXPECT_EQ(FolderKey(link.workingFolder), FolderKey(folder.wstring())) << Utf8(product);
        }

        const std::wstring entry = UninstallKey + code;
        EXPECT_EQ(MachineString(entry, L"DisplayVersion"), Wide(version));
        EXPECT_EQ(MachineString(entry, L"Publisher"), L"Orvantix");
        EXPECT_NE(MachineString(entry, L"DisplayName").value_or(L"").find(L"EditKel"),
                  std::wstring::npos);
        EXPECT_EQ(MachineString(entry, L"DisplayIcon"),
                  (folder / L"EditKel.exe").wstring() + L",0");
        EXPECT_EQ(GetDword(HKEY_LOCAL_MACHINE, entry, L"EstimatedSize"),
                  (long long)((bytes + 1023) / 1024));
        EXPECT_NE(MachineString(entry, L"UninstallString").value_or(L"").find(code),
                  std::wstring::npos);
    }

    // Nothing of EditKel left in `folder`, in the machine registry or in the
    // Start menu.
    static void ExpectRemoved(const fs::path& folder)
    {
        EXPECT_FALSE(fs::exists(folder)) << Utf8(folder.wstring());
        EXPECT_FALSE(fs::exists(DefaultFolder().parent_path()));
        EXPECT_FALSE(fs::exists(MenuFolder()));
        const std::wstring branch = MachineBranch + L"\\";
        for (const std::wstring& product : Products)
            EXPECT_FALSE(MachineString(branch + product, L"InstallPath")) << Utf8(product);
        EXPECT_FALSE(MachineKeyExists(MachineBranch + L"\\EditKel"));
        EXPECT_FALSE(MachineKeyExists(UninstallKey + NewCode));
        EXPECT_FALSE(MachineKeyExists(UninstallKey + OldCode));
    }
};

TEST_F(Installer, SilentInstallPlacesFilesValuesShortcutsAndUninstallEntryAndAgainIsHarmless)
{
    for (int round = 1; round <= 2; ++round)
    {
        SCOPED_TRACE("install " + std::to_string(round));
        ASSERT_EQ(Install(NewMsi), 0u);
        ExpectInstalled(DefaultFolder(), NewCode, KEL_PACKAGE_VERSION);
    }
}

// The editor started from another working directory resolves its program
// folder from the machine's "InstallPath": the only configuration there is
// is the settings file in the install folder, which the picker offers as
// "Default" only when that folder is the program folder.
TEST_F(Installer, InstalledEditorFindsItsProgramFolderFromAnotherWorkingDirectory)
{
    ASSERT_EQ(Install(NewMsi), 0u);
    fs::copy_file(fs::path(WindowsPath(KEL_DEMO_DIR)) / L"KEL.INI", DefaultFolder() / L"KEL.INI");

    TargetProcess editor =
        TargetProcess::Start((DefaultFolder() / L"EditKel.exe").wstring(), L"-app=Shopwise",
                             fs::temp_directory_path().wstring());
    HWND picker = editor.WaitForWindow(L"Select Configuration - Shopwise");
    const auto rows = ListRows(Control(picker, PickerList));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0][0], L"Default");
    EXPECT_EQ(FolderKey(rows[0][1]), FolderKey(DefaultFolder().wstring()));

    HWND dialog = PickConfiguration(editor, L"Shopwise", L"Default");
    HWND tree = ShowSwitchTree(dialog);
    SetTreeItemChecked(tree, FindTreeItem(tree, L"Cost tables missing or invalid").handle, false);
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(PromptValue(L"BadCostTables"), 0);
}

// INSTALLDIR= chooses the folder (a name with blanks); a newer version
// replaces an older one where that one was installed (one entry in Programs
// and Features, the newer files). The uninstall finds the files there again.
TEST_F(Installer, InstallDirOrTheOlderVersionChoosesTheFolderAndUninstallFindsIt)
{
    const fs::path folder = fs::temp_directory_path() / L"kel-install" / L"Config Editor";
    const std::wstring chosen = L"INSTALLDIR=" + Quoted(folder);
    for (const bool upgrade : {false, true})
    {
        SCOPED_TRACE(upgrade ? "upgrade" : "INSTALLDIR");
        fs::create_directories(folder.parent_path());
        if (upgrade)
        {
            ASSERT_EQ(Install(OldMsi, chosen), 0u);
            EXPECT_EQ(MachineString(UninstallKey + OldCode, L"DisplayVersion"),
                      Wide(KEL_OLD_VERSION));
        }
        ASSERT_EQ(Install(NewMsi, upgrade ? L"" : chosen), 0u);
        EXPECT_FALSE(MachineKeyExists(UninstallKey + OldCode));
        ExpectInstalled(folder, NewCode, KEL_PACKAGE_VERSION);
        EXPECT_FALSE(fs::exists(DefaultFolder()));

        EXPECT_EQ(Msiexec(L"/x " + Quoted(NewMsi)), 0u);
        ExpectRemoved(folder);
        fs::remove_all(folder.parent_path());
    }
}

// With the basic interface (/qb) the refusal shows its reason in a message
// box; silently (/qn) only the exit code tells.
TEST_F(Installer, OlderVersionOverANewerOneIsRefusedWithAMessage)
{
    ASSERT_EQ(Install(NewMsi), 0u);
    TargetProcess msiexec = TargetProcess::Start(L"msiexec.exe", L"/i " + Quoted(OldMsi) + L" /qb");
    HWND box = nullptr;
    auto findBox = [&]
    {
        for (const WindowInfo& info : msiexec.Windows())
            if (info.visible && info.className == DialogClass && GetDlgItem(info.handle, 0xFFFF))
                box = info.handle;
        return box != nullptr;
    };
    ASSERT_TRUE(WaitUntil(findBox, 60s)) << Utf8(msiexec.DescribeWindows());
    EXPECT_EQ(MessageBoxText(box), L"A newer version of Brindlecove " + Wide(KEL_RELEASE) +
                                       L" Config Editor (EditKel) is already installed. "
                                       L"Uninstall it first to install this one.");
    CloseMessageBox(box, IDOK);
    EXPECT_EQ(msiexec.WaitForExit(60s), DWORD(ERROR_INSTALL_FAILURE));

    EXPECT_EQ(Msiexec(L"/i " + Quoted(OldMsi)), DWORD(ERROR_INSTALL_FAILURE));
    EXPECT_FALSE(MachineKeyExists(UninstallKey + OldCode));
    ExpectInstalled(DefaultFolder(), NewCode, KEL_PACKAGE_VERSION);
}

// The uninstall removes what the package installed and nothing of the
// users': their configuration folders, their values, and the machine's
// registered configurations. Uninstalling again changes nothing.
TEST_F(Installer, UninstallRemovesWhatItInstalledAndKeepsTheUsersData)
{
    ASSERT_EQ(Install(NewMsi), 0u);
    const fs::path configuration = SharedDocuments() / L"Demo";
    fs::create_directories(configuration);
    fs::copy(fs::path(WindowsPath(KEL_DEMO_DIR)), configuration, fs::copy_options::recursive);
    const std::string settings = FileBytes(configuration / L"KEL.INI");
    ASSERT_FALSE(settings.empty());
    WriteString(L"Plotwise", L"StartIn", configuration.wstring());
    WriteDword(L"COMMON\\PROMPTS", L"BadSpec", 0);
    const std::wstring machineConfigurations = MachineBranch + L"\\Plotwise\\Configurations";
    const std::wstring site = configuration.wstring() + L"\\";
    SetString(HKEY_LOCAL_MACHINE, machineConfigurations, L"Site", site);

    for (int round = 1; round <= 2; ++round)
    {
        SCOPED_TRACE("uninstall " + std::to_string(round));
        const DWORD code = Msiexec(L"/x " + Quoted(NewMsi));
        // Windows answers a second uninstall with "not installed", Wine with 0.
        EXPECT_TRUE(code == 0 || (round == 2 && code == ERROR_UNKNOWN_PRODUCT)) << code;
        ExpectRemoved(DefaultFolder());
        EXPECT_EQ(FileBytes(configuration / L"KEL.INI"), settings);
        EXPECT_EQ(ReadString(L"Plotwise", L"StartIn"), configuration.wstring());
        EXPECT_EQ(PromptValue(L"BadSpec"), 0);
        EXPECT_EQ(MachineString(machineConfigurations, L"Site"), site);
    }
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, MachineBranch.c_str());
}
} // namespace
