#include "app/ConfigCheck.h"

#include <windows.h>

#include <algorithm>
#include <string>

#include "app/ProductTable.h"
#include "app/SettingsContext.h"
#include "app/deploy/TransferTexts.h"
#include "app/pages/EditCADOptions.h"
#include "app/pages/EditCommonOptions.h"
#include "app/pages/EditTyxOptions.h"
#include "app/pages/EditWebLinks.h"
#include "framework/AppEntry.h"
#include "framework/FieldTable.h"
#include "framework/Folders.h"
#include "framework/RegistryKey.h"
#include "platform/FileSystem.h"
#include "text/TextHolder.h"

namespace
{
template <typename... Args>
KelText Say(TransferText number, const Args&... args)
{
    const KelText pattern = TransferMessage(number);
    return KelText::Formatted(pattern.c_str(), args...);
}

// The kinds whose folders the products write into.
const int32_t writtenKinds[] = {4, 8, 15, 33, 35, 38, 41, 45, 46};

KelText TypeName(DWORD type)
{
    switch (type)
    {
    case REG_SZ:
        return KelText(u"REG_SZ");
    case REG_EXPAND_SZ:
        return KelText(u"REG_EXPAND_SZ");
    case REG_BINARY:
        return KelText(u"REG_BINARY");
    case REG_DWORD:
        return KelText(u"REG_DWORD");
    case REG_MULTI_SZ:
        return KelText(u"REG_MULTI_SZ");
    case REG_QWORD:
        return KelText(u"REG_QWORD");
    default:
        return KelText::Formatted(u"type %u", uint32_t(type));
    }
}

bool IsText(DWORD type)
{
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

// A registry value's data as a short text: strings as they are, a DWORD as
// its number, anything else as hexadecimal bytes (the first 16).
KelText DataText(const RegistryValue& value)
{
    const std::string& data = value.data;
    if (IsText(value.type) || value.type == REG_MULTI_SZ)
    {
        std::u16string text(data.size() / 2, u'\0');
        std::copy_n(data.data(), text.size() * 2, reinterpret_cast<char*>(text.data()));
        for (char16_t& unit : text)
            if (unit == 0)
                unit = u' ';
        while (!text.empty() && text.back() == u' ')
            text.pop_back();
        return KelText(text.c_str());
    }
    if (value.type == REG_DWORD && data.size() == 4)
    {
        uint32_t number = 0;
        std::copy_n(data.data(), 4, reinterpret_cast<char*>(&number));
        return KelText::Formatted(u"%u", number);
    }
    KelText bytes;
    for (size_t i = 0; i < data.size() && i < 16; ++i)
        bytes += KelText::Formatted(i ? u" %02X" : u"%02X", uint32_t(uint8_t(data[i])));
    return bytes;
}

// Whether the bytes are UTF-8 with at least one character beyond ASCII.
bool IsUtf8BeyondAscii(const std::string& bytes)
{
    bool beyond = false;
    for (size_t i = 0; i < bytes.size();)
    {
        const auto lead = uint8_t(bytes[i]);
        size_t length = 1;
        if (lead >= 0xC2 && lead <= 0xDF)
            length = 2;
        else if (lead >= 0xE0 && lead <= 0xEF)
            length = 3;
        else if (lead >= 0xF0 && lead <= 0xF4)
            length = 4;
        else if (lead >= 0x80)
            return false;
        if (i + length > bytes.size())
            return false;
        for (size_t k = 1; k < length; ++k)
            if ((uint8_t(bytes[i + k]) & 0xC0) != 0x80)
                return false;
        beyond = beyond || length > 1;
        i += length;
    }
    return beyond;
}

// The encoding of a settings file that the products do not read, or 0: they
// read UTF-8 and UTF-16 little-endian with their marks, and ANSI text.
TransferText UnreadEncoding(const std::string& bytes)
{
    auto starts = [&bytes](std::initializer_list<uint8_t> mark)
    {
        if (bytes.size() < mark.size())
            return false;
        size_t i = 0;
        for (const uint8_t byte : mark)
            if (uint8_t(bytes[i++]) != byte)
                return false;
        return true;
    };
    if (starts({0xFF, 0xFE, 0x00, 0x00}) || starts({0x00, 0x00, 0xFE, 0xFF}))
        return kTextCheckUtf32;
    if (starts({0xEF, 0xBB, 0xBF}) || starts({0xFF, 0xFE}))
        return TransferText(0);
    if (starts({0xFE, 0xFF}))
        return kTextCheckUtf16Be;
    if (bytes.find('\0') != std::string::npos)
        return kTextCheckUtf16NoMark;
    if (IsUtf8BeyondAscii(bytes))
        return kTextCheckUtf8NoMark;
    return TransferText(0);
}

// Whether an address reads as a URL: a scheme of two or more letters, digits,
// "+", "-" or "." beginning with a letter (one letter is a drive), a ":" and
// more after it, and no blank.
bool LooksLikeUrl(const KelText& address)
{
    const std::u16string_view text = address.View();
    const size_t colon = text.find(u':');
    if (colon == std::u16string_view::npos || colon < 2 || colon + 1 >= text.size())
        return false;
    auto letter = [](char16_t unit)
    { return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z'); };
    if (!letter(text[0]))
        return false;
    for (size_t i = 1; i < colon; ++i)
        if (!letter(text[i]) && !(text[i] >= u'0' && text[i] <= u'9') && text[i] != u'+' &&
            text[i] != u'-' && text[i] != u'.')
            return false;
    return text.find_first_of(u" \t") == std::u16string_view::npos;
}

CheckFinding Finding(CheckArea area, const KelText& option, const KelText& value,
                     CheckProblem problem, const KelText& reason)
{
    CheckFinding finding;
    finding.area = area;
    finding.option = option;
    finding.value = value;
    finding.problem = problem;
    finding.reason = reason;
    return finding;
}
} // namespace

ConfigCheck::ConfigCheck(AppEntry& app, const KelText& product, const KelText& folder)
    : app(app), product(product), folder(NormaliseFolder(folder)),
      fileName(SettingsFileNameFor(product)),
      dictionaryPath(app.ExecutableFolder() + u"diction.ary")
{
}

bool ConfigCheck::NeedsWriting(int32_t kind)
{
    return std::find(std::begin(writtenKinds), std::end(writtenKinds), kind) !=
           std::end(writtenKinds);
}

bool ConfigCheck::FolderProblem(const FolderAnswer& answer, CheckProblem& problem)
{
    switch (answer.state)
    {
    case FolderState::Fine:
        return false;
    case FolderState::Missing:
        problem = CheckProblem::Missing;
        break;
    case FolderState::NotFolder:
        problem = CheckProblem::NotFolder;
        break;
    case FolderState::NotReadable:
        problem = CheckProblem::NotReadable;
        break;
    case FolderState::NotWritable:
        problem = CheckProblem::NotWritable;
        break;
    case FolderState::Unreachable:
        problem = CheckProblem::Unreachable;
        break;
    case FolderState::NoAnswer:
        problem = CheckProblem::NoAnswer;
        break;
    }
    return true;
}

KelText ConfigCheck::Reason(CheckProblem problem, const KelText& detail, const KelText& expected,
                            uint32_t seconds)
{
    switch (problem)
    {
    case CheckProblem::Missing:
        return TransferMessage(kTextCheckMissing);
    case CheckProblem::NotFolder:
        return TransferMessage(kTextCheckNotFolder);
    case CheckProblem::NotReadable:
        return TransferMessage(kTextCheckNotReadable);
    case CheckProblem::NotWritable:
        return TransferMessage(kTextCheckNotWritable);
    case CheckProblem::Unreachable:
        return TransferMessage(kTextCheckUnreachable);
    case CheckProblem::NoAnswer:
        return Say(kTextCheckNoAnswer, int32_t(seconds));
    case CheckProblem::LacksSettingsFile:
        return Say(kTextCheckLacksSettings, detail);
    case CheckProblem::FileMissing:
        return TransferMessage(kTextCheckFileMissing);
    case CheckProblem::ReadOnly:
        return TransferMessage(kTextCheckReadOnly);
    case CheckProblem::Unreadable:
        return TransferMessage(kTextCheckUnreadable);
    case CheckProblem::Encoding:
        return Say(kTextCheckEncoding, detail);
    case CheckProblem::DictionaryMissing:
        return TransferMessage(kTextCheckDictMissing);
    case CheckProblem::DictionaryDamaged:
        return TransferMessage(kTextCheckDictDamaged);
    case CheckProblem::WrongType:
        return Say(kTextCheckWrongType, detail, expected);
    case CheckProblem::EmptyAddress:
        return TransferMessage(kTextCheckEmptyAddress);
    case CheckProblem::NotUrl:
        return TransferMessage(kTextCheckNotUrl);
    }
    return KelText();
}

KelText ConfigCheck::FolderTip(const FolderAnswer& answer)
{
    CheckProblem problem = CheckProblem::Missing;
    if (!FolderProblem(answer, problem))
        return KelText();
    return Say(kTextCheckTip, Reason(problem, KelText(), KelText(), answer.limitSeconds));
}

const char16_t* ConfigCheck::ProblemCode(CheckProblem problem)
{
    switch (problem)
    {
    case CheckProblem::Missing:
        return u"missing";
    case CheckProblem::NotFolder:
        return u"not-a-folder";
    case CheckProblem::NotReadable:
        return u"not-readable";
    case CheckProblem::NotWritable:
        return u"not-writable";
    case CheckProblem::Unreachable:
        return u"not-reachable";
    case CheckProblem::NoAnswer:
        return u"no-answer";
    case CheckProblem::LacksSettingsFile:
        return u"no-settings-file";
    case CheckProblem::FileMissing:
        return u"file-missing";
    case CheckProblem::ReadOnly:
        return u"read-only";
    case CheckProblem::Unreadable:
        return u"unreadable";
    case CheckProblem::Encoding:
        return u"encoding";
    case CheckProblem::DictionaryMissing:
        return u"dictionary-missing";
    case CheckProblem::DictionaryDamaged:
        return u"dictionary-damaged";
    case CheckProblem::WrongType:
        return u"wrong-type";
    case CheckProblem::EmptyAddress:
        return u"empty-address";
    case CheckProblem::NotUrl:
        return u"not-a-url";
    }
    return u"";
}

const char16_t* ConfigCheck::AreaCode(CheckArea area)
{
    switch (area)
    {
    case CheckArea::ProgramPaths:
        return u"program-paths";
    case CheckArea::StartFolder:
        return u"start-folder";
    case CheckArea::SettingsFile:
        return u"settings-file";
    case CheckArea::Dictionary:
        return u"dictionary";
    case CheckArea::Registry:
        return u"registry";
    case CheckArea::WebLinks:
        return u"web-links";
    }
    return u"";
}

std::vector<CheckFinding> ConfigCheck::Run()
{
    std::vector<CheckFinding> found;
    CheckFolders(found);
    CheckSettingsFile(found);
    CheckDictionary(found);
    CheckRegistry(found);
    CheckWebLinks(found);
    return found;
}

void ConfigCheck::CheckFolders(std::vector<CheckFinding>& found)
{
    // The store of this configuration, apart from the process's own.
    SettingsContext store;
    store.SetSettingsFile(folder + fileName, product, FindProductDescriptor(product));
    struct Asked
    {
        CheckArea area;
        KelText option;
        KelText value;
    };
    std::vector<Asked> asked;
    std::vector<FolderQuestion> questions;
    for (int32_t i = 0; i < store.Kinds().Count(); ++i)
    {
        const int32_t kind = store.Kinds().At(i);
        const KelText name = SettingsContext::KindName(kind);
        const bool twice =
            std::any_of(asked.begin(), asked.end(),
                        [&name](const Asked& earlier) { return earlier.option == name; });
        if (twice || name == u"ERROR")
            continue;
        const KelText path = store.PathOf(kind);
        asked.push_back({CheckArea::ProgramPaths, name, path});
        questions.push_back({std::u16string(path.View()), NeedsWriting(kind)});
    }
    // The start folder as the common options page reads it.
    CommonOptionsValues common(product, fileName);
    common.Load();
    if (common.useStartFolder != 0 && !common.startFolder.IsEmpty())
    {
        asked.push_back({CheckArea::StartFolder, KelText(u"StartIn"), common.startFolder});
        questions.push_back({std::u16string(common.startFolder.View()), false});
    }

    const std::vector<FolderAnswer> answers = FolderProbes::ProbeAll(questions);
    for (size_t i = 0; i < asked.size(); ++i)
    {
        CheckProblem problem = CheckProblem::Missing;
        if (FolderProblem(answers[i], problem))
            found.push_back(
                Finding(asked[i].area, asked[i].option, WithBackslashes(asked[i].value), problem,
                        Reason(problem, KelText(), KelText(), answers[i].limitSeconds)));
        else if (asked[i].area == CheckArea::StartFolder &&
                 !GetFileSystem().Exists(NormaliseFolder(asked[i].value) + fileName))
            found.push_back(Finding(asked[i].area, asked[i].option, WithBackslashes(asked[i].value),
                                    CheckProblem::LacksSettingsFile,
                                    Reason(CheckProblem::LacksSettingsFile, fileName)));
    }
}

void ConfigCheck::CheckSettingsFile(std::vector<CheckFinding>& found)
{
    const KelText path = folder + fileName;
    const KelText shown = WithBackslashes(path);
    auto add = [&](CheckProblem problem, const KelText& detail = KelText())
    {
        found.push_back(
            Finding(CheckArea::SettingsFile, fileName, shown, problem, Reason(problem, detail)));
    };
    const FileState state = GetFileSystem().Query(path);
    if (!state.exists || state.folder)
    {
        add(CheckProblem::FileMissing);
        return;
    }
    if (state.readOnly)
        add(CheckProblem::ReadOnly);
    std::string bytes;
    if (!GetFileSystem().ReadBytes(path, bytes))
    {
        add(CheckProblem::Unreadable);
        return;
    }
    if (const TransferText encoding = UnreadEncoding(bytes); encoding != TransferText(0))
        add(CheckProblem::Encoding, TransferMessage(encoding));
}

void ConfigCheck::CheckDictionary(std::vector<CheckFinding>& found)
{
    const KelText& path = dictionaryPath;
    const KelText shown = WithBackslashes(path);
    const FileState state = GetFileSystem().Query(path);
    CheckProblem problem = CheckProblem::DictionaryMissing;
    if (state.exists && !state.folder)
    {
        // Read into a dictionary of its own: the one in use stays as it is.
        TextHolder dictionary;
        if (dictionary.Load(path, KelText(), false) && dictionary.Count() > 0)
            return;
        problem = CheckProblem::DictionaryDamaged;
    }
    found.push_back(
        Finding(CheckArea::Dictionary, KelText(u"diction.ary"), shown, problem, Reason(problem)));
}

void ConfigCheck::CheckRegistry(std::vector<CheckFinding>& found)
{
    auto wrong = [&](const KelText& key, const RegistryValue& value, const char16_t* expected)
    {
        // The key as the registry editor shows it, then the value's name.
        const bool slash = !key.IsEmpty() && key.At(key.Length() - 1) == u'\\';
        const KelText keyText(key.c_str(), key.Length() - (slash ? 1 : 0));
        found.push_back(
            Finding(CheckArea::Registry, keyText + u"\\" + value.name, DataText(value),
                    CheckProblem::WrongType,
                    Reason(CheckProblem::WrongType, TypeName(value.type), KelText(expected))));
    };
    // Every registry field of the product's pages, as their tables declare them.
    auto checkTable = [&](const FieldTable& table)
    {
        for (const auto& owned : table.Fields())
        {
            const StoredField& field = *owned;
            const KelText keyPath = table.KeyPath(field.branch, field.place);
            const RegistryKey key(keyPath);
            if (!key.IsOpen())
                continue;
            if (field.kind == StoredField::Kind::ValueList)
            {
                std::vector<RegistryValue> values;
                key.ReadValues(values);
                for (const RegistryValue& value : values)
                    if (!IsText(value.type))
                        wrong(keyPath, value, u"REG_SZ");
                continue;
            }
            if (!field.IsRegistry())
                continue;
            RegistryValue value;
            if (key.ReadRaw(field.name, value) != RegistryRead::Ok)
                continue;
            const bool dword = field.kind == StoredField::Kind::Dword;
            if (dword ? value.type != REG_DWORD : !IsText(value.type))
                wrong(keyPath, value, dword ? u"REG_DWORD" : u"REG_SZ");
        }
    };
    if (product == u"Plotwise")
        checkTable(CadOptionsValues(product).Fields());
    else if (product != u"Ledgerline")
    {
        checkTable(TyxOptionsValues(product).Fields());
        checkTable(WebLinksValues(product).Fields());
    }
    checkTable(CommonOptionsValues(product, fileName).Fields());

    // The message switches: one REG_DWORD each; any other type reads as off.
    const KelText switchKey = app.SwitchKeyPath();
    const RegistryKey prompts(switchKey);
    const MsgSwitchList& switches = app.MessageSwitches();
    for (int32_t i = 0; prompts.IsOpen() && i < switches.Count(); ++i)
    {
        const MsgSwitch* known = switches.At(i);
        RegistryValue value;
        if (known && prompts.ReadRaw(known->name, value) == RegistryRead::Ok &&
            value.type != REG_DWORD)
            wrong(switchKey, value, u"REG_DWORD");
    }
}

void ConfigCheck::CheckWebLinks(std::vector<CheckFinding>& found)
{
    if (product == u"Plotwise" || product == u"Ledgerline")
        return;
    WebLinksValues links(product);
    links.Load();
    for (const KelText& link : links.links)
    {
        KelText address = WebLinksValues::AddressOf(link);
        address.Trim();
        if (!address.IsEmpty() && LooksLikeUrl(address))
            continue;
        const CheckProblem problem =
            address.IsEmpty() ? CheckProblem::EmptyAddress : CheckProblem::NotUrl;
        found.push_back(Finding(CheckArea::WebLinks, WebLinksValues::ShownName(link), address,
                                problem, Reason(problem)));
    }
}
