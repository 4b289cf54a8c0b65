#pragma once
// EditKel.exe as the end-to-end scenarios meet it: a fixture that starts every
// scenario from an empty "Brindlecove <release>" registry branch of the current
// user and an empty shared documents folder of the test prefix (the programs
// that use this fixture take the ctest lock "editkel-release-branch"), copies
// of the demo configuration, the editor started with a command line, the
// picker confirmed, and plain Win32 reads of what reached the registry and the
// settings files (never through the product's own code).
//
// Programs that include this header define KEL_EDITKEL (the program),
// KEL_DEMO_DIR (samples/Demo) and KEL_SCREENSHOT_DIR.
#include <windows.h>

#include <gtest/gtest.h>
#include <shlobj.h>

#include <filesystem>
#include <optional>
#include <sstream>
#include <string>

#include "app/Version.h"
#include "tools/uidriver/UiDriver.h"

namespace EditKelSession
{
namespace fs = std::filesystem;
using namespace UiDriver;

// The current user's branch of the release, below HKEY_CURRENT_USER.
inline const std::wstring BranchPath = L"Software\\Orvantix\\Brindlecove " + Wide(KEL_RELEASE);
// What follows the product in the dialog's title.
inline const std::wstring TitleTail = L" Config Editor - " + Wide(KEL_VERSION_TEXT);
inline constexpr int PickerList = 602;
inline constexpr int SwitchTree = 1335;
inline constexpr int TabsId = 20101;

inline std::wstring TestName()
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return Wide(info->test_suite_name()) + L"-" + Wide(info->name());
}

// Saves <build>/screenshots/<prefix>-<suite>-<test>-<what>.png.
inline void Screenshot(const wchar_t* what, HWND window = nullptr,
                       const wchar_t* prefix = L"editkel")
{
    SaveScreenshot(WindowsPath(KEL_SCREENSHOT_DIR) + L"\\" + prefix + L"-" + TestName() + L"-" +
                       what + L".png",
                   window);
}

inline fs::path SharedDocuments()
{
    wchar_t path[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_COMMON_DOCUMENTS, nullptr, 0, path);
    return fs::path(path) / L"Orvantix" / (L"Brindlecove " + Wide(KEL_RELEASE));
}

// A fresh copy of the demo configuration in `folder`.
inline fs::path CopyDemoTo(const fs::path& folder)
{
    fs::remove_all(folder);
    fs::create_directories(folder);
    fs::copy(fs::path(WindowsPath(KEL_DEMO_DIR)), folder, fs::copy_options::recursive);
    return folder;
}

// A fresh copy of the demo configuration, in a folder of the test's own.
inline fs::path DemoCopy(const wchar_t* name)
{
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    return CopyDemoTo(fs::path(temp) / L"kel-e2e" / name);
}

// The demo configuration where the run command installs it, the folder
// "Demo" of the shared documents (which every scenario starts without), so
// that screenshots show the paths a user sees.
inline fs::path SharedDemoCopy()
{
    return CopyDemoTo(SharedDocuments() / L"Demo");
}

// The full key below HKEY_CURRENT_USER: the branch, then `sub` when given.
inline std::wstring UserKey(const std::wstring& sub = {})
{
    return sub.empty() ? BranchPath : BranchPath + L"\\" + sub;
}

// --- registry values (keys of the current user are relative to the branch) ----
inline void SetString(HKEY root, const std::wstring& key, const wchar_t* name,
                      const std::wstring& value)
{
    ASSERT_EQ(RegSetKeyValueW(root, key.c_str(), name, REG_SZ, value.c_str(),
                              DWORD((value.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}
inline void WriteString(const std::wstring& key, const wchar_t* name, const std::wstring& value)
{
    SetString(HKEY_CURRENT_USER, UserKey(key), name, value);
}
inline void WriteDword(const std::wstring& key, const wchar_t* name, DWORD value)
{
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, UserKey(key).c_str(), name, REG_DWORD, &value,
                              sizeof value),
              ERROR_SUCCESS);
}
// The string, or nothing when the value is absent or no string.
inline std::optional<std::wstring> GetString(HKEY root, const std::wstring& key,
                                             const wchar_t* name)
{
    wchar_t buffer[4096] = {};
    DWORD size = sizeof buffer;
    if (RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, buffer, &size) !=
        ERROR_SUCCESS)
        return std::nullopt;
    return std::wstring(buffer);
}
// The DWORD, or -1 when the value is absent or no DWORD.
inline long long GetDword(HKEY root, const std::wstring& key, const wchar_t* name)
{
    DWORD value = 0, size = sizeof value;
    if (RegGetValueW(root, key.c_str(), name, RRF_RT_REG_DWORD, nullptr, &value, &size) !=
        ERROR_SUCCESS)
        return -1;
    return value;
}
inline bool KeyExists(HKEY root, const std::wstring& key)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS)
        return false;
    RegCloseKey(opened);
    return true;
}
inline std::optional<std::wstring> ReadString(const std::wstring& key, const wchar_t* name)
{
    return GetString(HKEY_CURRENT_USER, UserKey(key), name);
}
inline long long ReadDword(const std::wstring& key, const wchar_t* name)
{
    return GetDword(HKEY_CURRENT_USER, UserKey(key), name);
}
// A DWORD of the application's "COMMON\PROMPTS" key, or -1 when it is absent.
inline long long PromptValue(const wchar_t* name)
{
    return ReadDword(L"COMMON\\PROMPTS", name);
}

inline void RegisterConfiguration(const wchar_t* product, const wchar_t* name,
                                  const fs::path& folder)
{
    WriteString(std::wstring(product) + L"\\Configurations", name, folder.wstring() + L"\\");
}

// Brings the page of the tab named `tab` to the front and answers it: the
// window that holds the control `controlId` (a page's window exists once its
// tab has been shown).
inline HWND ShowPage(HWND dialog, std::wstring_view tab, int controlId)
{
    ClickTab(Control(dialog, TabsId), tab);
    return GetParent(Control(dialog, controlId));
}

// Brings the message-switch page (always the last tab) to the front and
// answers its tree of switches.
inline HWND ShowSwitchTree(HWND dialog)
{
    HWND tabs = Control(dialog, TabsId);
    ClickTab(tabs, int(TabTexts(tabs).size()) - 1);
    return Control(dialog, SwitchTree);
}

// --- settings files -------------------------------------------------------------
inline std::string FileBytes(const fs::path& path)
{
    std::string bytes;
    // Shared for writing too: the process that wrote it may still be closing
    // its handle.
    if (HANDLE file = CreateFileW(path.c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
        file != INVALID_HANDLE_VALUE)
    {
        char chunk[4096];
        DWORD read = 0;
        while (ReadFile(file, chunk, sizeof chunk, &read, nullptr) && read > 0)
            bytes.append(chunk, read);
        CloseHandle(file);
    }
    return bytes;
}

// The value of a key of a settings file (UTF-16 with its mark, UTF-8 with its
// mark, else the ANSI code page), trimmed; nothing when the key is missing.
// Section and key match without regard to case, as the editor reads them.
inline std::optional<std::wstring> SettingsValue(const fs::path& path, std::wstring_view section,
                                                 std::wstring_view key)
{
    const std::string bytes = FileBytes(path);
    std::wstring text;
    if (bytes.starts_with("\xFF\xFE"))
        text.assign(reinterpret_cast<const wchar_t*>(bytes.data() + 2), (bytes.size() - 2) / 2);
    else
    {
        const bool utf8 = bytes.starts_with("\xEF\xBB\xBF");
        const std::string body = bytes.substr(utf8 ? 3 : 0);
        text.resize(body.size());
        text.resize(size_t(MultiByteToWideChar(utf8 ? CP_UTF8 : CP_ACP, 0, body.data(),
                                               int(body.size()), text.data(), int(text.size()))));
    }
    auto same = [](std::wstring_view a, std::wstring_view b)
    {
        return CompareStringOrdinal(a.data(), int(a.size()), b.data(), int(b.size()), TRUE) ==
               CSTR_EQUAL;
    };
    std::wistringstream lines(text);
    bool inSection = false;
    for (std::wstring line; std::getline(lines, line);)
    {
        if (!line.empty() && line.back() == L'\r')
            line.pop_back();
        const std::wstring_view view(line);
        const size_t equals = view.find(L'=');
        if (!view.empty() && view.front() == L'[')
            inSection = view.back() == L']' && same(view.substr(1, view.size() - 2), section);
        else if (inSection && equals != view.npos && same(view.substr(0, equals), key))
        {
            const std::wstring_view value = view.substr(equals + 1);
            const size_t first = value.find_first_not_of(L" \t");
            if (first == value.npos)
                return std::wstring();
            return std::wstring(value.substr(first, value.find_last_not_of(L" \t") - first + 1));
        }
    }
    return std::nullopt;
}

// --- the editor ---------------------------------------------------------------------
inline TargetProcess StartEditKel(const std::wstring& arguments)
{
    const std::wstring program = WindowsPath(KEL_EDITKEL);
    return TargetProcess::Start(program, arguments, fs::path(program).parent_path().wstring());
}

class Scenario : public ::testing::Test
{
protected:
    void SetUp() override
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, BranchPath.c_str());
        std::error_code ignored;
        fs::remove_all(SharedDocuments(), ignored);
    }
    void TearDown() override { SetUp(); }

    // Picks the row named `name` in the picker and confirms it; answers the
    // configuration dialog that opens.
    // `pickerTitle` is the picker's title before " - <product>" in the
    // editor's language.
    HWND PickConfiguration(TargetProcess& editor, const wchar_t* product, const wchar_t* name,
                           const std::wstring& pickerTitle = L"Select Configuration")
    {
        HWND picker = editor.WaitForWindow(pickerTitle + L" - " + product);
        HWND list = Control(picker, PickerList);
        const int row = FindListRow(list, name);
        EXPECT_GE(row, 0) << "no row " << Utf8(name);
        SelectListRow(list, row);
        Screenshot(L"picker", picker);
        Press(Control(picker, IDOK));
        return editor.WaitForWindow(product + TitleTail);
    }

    // The picker's title (before " - <product>") for the language that
    // `extra` chooses: English, "/l=Deutsch" or "/l=Fr".
    static std::wstring PickerTitle(const std::wstring& extra)
    {
        if (extra.find(L"/l=Deutsch") != std::wstring::npos)
            return L"Konfiguration ausw\u00e4hlen";
        if (extra.find(L"/l=Fr") != std::wstring::npos)
            return L"S\u00e9lectionner une configuration";
        return L"Select Configuration";
    }

    // Registers a fresh shared demo copy for `product` as "Demo" (the shared
    // documents' sub-folder is found as "Demo" too), starts the editor
    // with "-app=<product>" and `extra` (a language among them, see
    // PickerTitle) and confirms the picker; `dialog` is the configuration
    // dialog that opens.
    TargetProcess OpenDemo(const wchar_t* product, const std::wstring& extra = {})
    {
        demo = SharedDemoCopy();
        RegisterConfiguration(product, L"Demo", demo);
        TargetProcess editor =
            StartEditKel(L"-app=" + std::wstring(product) + (extra.empty() ? L"" : L" " + extra));
        dialog = PickConfiguration(editor, product, L"Demo", PickerTitle(extra));
        return editor;
    }

    // The demo copy and the dialog of the last OpenDemo.
    fs::path demo;
    HWND dialog = nullptr;
};
} // namespace EditKelSession
