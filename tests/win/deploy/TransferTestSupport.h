#pragma once
// Helpers of the export and import tests: the page test's application object
// with a release of the test's own (and the editor's message switches),
// configuration folders of the test's own, the engine run on them, and plain
// reads of everything an import may touch: every registry value of the
// release's branch and the bytes of the settings files.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "app/ProductTable.h"
#include "app/ProgramMain.h"
#include "app/SettingsContext.h"
#include "app/deploy/SettingsTransfer.h"
#include "tests/win/pages/PageTestSupport.h"

class TransferTest : public PageTest
{
protected:
    TransferTest() { RegisterEditorSwitches(app); }

    // A folder of the test's own holding the product's settings file.
    KelText Configuration(const char16_t* name, const KelText& product,
                          const std::string& content = "[GENERAL]\r\nUNITS=MM\r\n")
    {
        const KelText made = tree.Folder(name);
        GetFileSystem().WriteBytes(made + SettingsFileNameFor(product), content.data(),
                                   content.size());
        return made;
    }

    TransferOutcome Import(const KelText& product, const KelText& configuration,
                           const std::string& text,
                           SettingsTransfer::Mode mode = SettingsTransfer::Mode::Apply)
    {
        SettingsTransfer transfer(app, SettingsContext::Instance(), product, configuration);
        return transfer.Import(text, mode);
    }
    std::string Export(const KelText& product, const KelText& configuration)
    {
        SettingsTransfer transfer(app, SettingsContext::Instance(), product, configuration);
        return transfer.Export(u"2024-01-02 03:04").ToUtf8();
    }

    // Every value below the release's branch of the current user, one line
    // each ("sub\key\name = type:data"), in a fixed order.
    std::vector<std::string> RegistryState() const
    {
        std::vector<std::string> lines;
        HKEY root = nullptr;
        KelText sub;
        if (RegistryKey::SplitPath(AppKey(), root, sub))
            Dump(root, std::wstring(AsWide(sub)), "", lines);
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    static std::string Bytes(const KelText& path)
    {
        std::string bytes = "<absent>";
        GetFileSystem().ReadBytes(path, bytes);
        return bytes;
    }
    // The registry and the settings files of a configuration, for "nothing
    // changed" checks.
    std::vector<std::string> State(const KelText& configuration) const
    {
        std::vector<std::string> state = RegistryState();
        state.push_back(Bytes(configuration + u"KEL.INI"));
        state.push_back(Bytes(configuration + u"QUORLIN.INI"));
        return state;
    }

    // The messages of an outcome in one text, for failure output and searches.
    static std::string Said(const TransferOutcome& outcome)
    {
        std::string text;
        for (const KelText& line : outcome.changes)
            text += line.ToUtf8() + "\n";
        for (const KelText& line : outcome.messages)
            text += line.ToUtf8() + "\n";
        return text;
    }

private:
    static void Dump(HKEY root, const std::wstring& path, const std::string& shown,
                     std::vector<std::string>& lines)
    {
        HKEY key = nullptr;
        if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
            return;
        const std::string prefix = shown + "\\";
        const std::wstring keyPrefix = path + L"\\";
        lines.push_back(prefix);
        wchar_t name[512];
        BYTE data[8192];
        for (DWORD i = 0;; ++i)
        {
            DWORD nameLength = 512, size = sizeof data, type = 0;
            if (RegEnumValueW(key, i, name, &nameLength, nullptr, &type, data, &size) !=
                ERROR_SUCCESS)
                break;
            std::string value(reinterpret_cast<const char*>(data), size);
            if (type == REG_SZ)
                value = FromWide(reinterpret_cast<const wchar_t*>(data)).ToUtf8();
            else if (type == REG_DWORD)
                value = std::to_string(*reinterpret_cast<const DWORD*>(data));
            std::string line = prefix;
            line += FromWide(name, int32_t(nameLength)).ToUtf8();
            line += " = ";
            line += std::to_string(type);
            line += ":";
            line += value;
            lines.push_back(std::move(line));
        }
        std::vector<std::wstring> subKeys;
        for (DWORD i = 0;; ++i)
        {
            DWORD nameLength = 512;
            if (RegEnumKeyExW(key, i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) !=
                ERROR_SUCCESS)
                break;
            subKeys.emplace_back(name, nameLength);
        }
        RegCloseKey(key);
        for (const std::wstring& subKey : subKeys)
            Dump(root, keyPrefix + subKey,
                 prefix + FromWide(subKey.c_str(), int32_t(subKey.size())).ToUtf8(), lines);
    }
};
