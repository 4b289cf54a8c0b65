// The configuration check without a window: a configuration with one problem
// of each kind gives exactly those problems, a clean one none. Folder answers
// that a test cannot make for real (unreadable, unwritable, a dead share, a
// server that never answers) come from a file-system double.
#include <algorithm>
#include <string>
#include <vector>

#include "app/ConfigCheck.h"
#include "app/pages/EditWebLinks.h"
#include "tests/core/platform/FileSystemDoubles.h"
#include "tests/win/deploy/TransferTestSupport.h"

namespace
{
// The build's dictionary, by its Unix path on Wine's drive Z:.
KelText BuildDictionary()
{
    std::u16string path = u"Z:";
    for (const char* c = KEL_DICTIONARY; *c; ++c)
        path += char16_t(*c == '/' ? '\\' : *c);
    return KelText(path.c_str());
}

class ConfigCheckTest : public TransferTest
{
protected:
    ConfigCheckTest() { FolderProbes::SetLimitMilliseconds(1000); }

public:
    ConfigCheckTest(const ConfigCheckTest&) = delete;
    ConfigCheckTest& operator=(const ConfigCheckTest&) = delete;
    ~ConfigCheckTest() override { FolderProbes::SetLimitMilliseconds(4000); }

protected:
    // Shopwise's thirteen kinds, each with a folder of its own that exists.
    std::string PathsSection()
    {
        std::string section = "[PROGRAM PATHS]\r\n";
        for (const char* kind :
             {"Main", "Backup", "DXF", "Database", "Project", "Reports", "Images", "Items",
              "Scripts", "Profiles", "Download", "Common", "Textures"})
            section += std::string(kind) + "=" +
                       WithBackslashes(tree.Folder(KelText::FromUtf8(kind))).ToUtf8() + "\r\n";
        return section;
    }
    void Replace(std::string& text, const std::string& kind, const KelText& folder)
    {
        const size_t at = text.find("\r\n" + kind + "=") + 2;
        const size_t end = text.find("\r\n", at);
        text.replace(at, end - at, kind + "=" + WithBackslashes(folder).ToUtf8());
    }
    static std::vector<std::string> Codes(const std::vector<CheckFinding>& found)
    {
        std::vector<std::string> codes;
        codes.reserve(found.size());
        for (const CheckFinding& finding : found)
            codes.push_back(KelText(ConfigCheck::AreaCode(finding.area)).ToUtf8() + " " +
                            finding.option.ToUtf8() + " " +
                            KelText(ConfigCheck::ProblemCode(finding.problem)).ToUtf8());
        return codes;
    }
    std::vector<CheckFinding> Check(const KelText& configuration, const KelText& dictionary)
    {
        ConfigCheck check(app, u"Shopwise", configuration);
        check.SetDictionaryPath(dictionary);
        return check.Run();
    }
};
} // namespace

TEST_F(ConfigCheckTest, OneOfEachProblemAndNoneInACleanConfiguration)
{
    // Clean: every folder there, the settings file plain ANSI, the dictionary
    // whole, no registry value stored, no web link.
    const KelText clean = Configuration(u"clean", u"Shopwise", PathsSection());
    const std::vector<CheckFinding> none = Check(clean, BuildDictionary());
    EXPECT_TRUE(none.empty()) << (none.empty() ? "" : none[0].reason.ToUtf8());

    // One of each.
    ProbingFiles probing;
    std::string paths = PathsSection();
    Replace(paths, "Backup", tree.Folder(u"gone") + u"Backup/");
    const KelText aFile = tree.Folder(u"files") + u"dxf.txt";
    GetFileSystem().WriteBytes(aFile, "x", 1);
    Replace(paths, "DXF", aFile);
    const std::vector<std::pair<const char*, FolderState>> answered = {
        {"Database", FolderState::NotReadable},
        {"Project", FolderState::NotWritable},
        {"Reports", FolderState::Unreachable}};
    for (const auto& [kind, state] : answered)
        probing.Answer(std::u16string(tree.Folder(KelText::FromUtf8(kind)).View()), state);
    probing.Hang(std::u16string(tree.Folder(u"Images").View()), std::chrono::seconds(60));
    // A settings file in UTF-8 without its mark (read as ANSI by the
    // programs), read-only.
    const KelText broken =
        Configuration(u"broken", u"Shopwise", paths + "[GENERAL]\r\nCOMPANY=M\xC3\xBCller\r\n");
    SetFileAttributesW(AsWide(WithBackslashes(broken + u"KEL.INI")), FILE_ATTRIBUTE_READONLY);
    // A start folder without the settings file.
    RegistryKey branch;
    branch.Create(ProductKey(u"Shopwise"));
    branch.WriteString(u"StartIn", tree.Folder(u"Items"));
    // A switch stored as text, a per-user switch as text, a web link as a
    // number, a link without address and one that is no URL.
    RegistryKey prompts;
    prompts.Create(AppKey(u"COMMON\\PROMPTS"));
    prompts.WriteString(u"BadSpec", u"0");
    RegistryKey common;
    common.Create(AppKey(u"COMMON"));
    common.WriteString(u"CachePatterns", u"1");
    RegistryKey links;
    links.Create(ProductKey(u"Shopwise", u"WebLinks"));
    links.WriteString(u"0:Home", u"https://example.com/");
    links.WriteString(u"1:Intranet", u"intranet home page");
    links.WriteString(u"2:Blank", u"");
    links.WriteDword(u"3:Number", 7);
    // A damaged dictionary.
    const KelText damaged = tree.Folder(u"bin") + u"diction.ary";
    GetFileSystem().WriteBytes(damaged, "not a dictionary", 16);

    const std::vector<CheckFinding> found = Check(broken, damaged);
    SetFileAttributesW(AsWide(WithBackslashes(broken + u"KEL.INI")), FILE_ATTRIBUTE_NORMAL);
    std::vector<std::string> codes = Codes(found);
    std::vector<std::string> expected = {
        "program-paths Backup missing",
        "program-paths DXF not-a-folder",
        "program-paths Database not-readable",
        "program-paths Project not-writable",
        "program-paths Reports not-reachable",
        "program-paths Images no-answer",
        "start-folder StartIn no-settings-file",
        "settings-file KEL.INI read-only",
        "settings-file KEL.INI encoding",
        "dictionary diction.ary dictionary-damaged",
        "registry " + AppKey(u"COMMON").ToUtf8() + "CachePatterns wrong-type",
        "registry " + ProductKey(u"Shopwise", u"WebLinks").ToUtf8() + "3:Number wrong-type",
        "registry " + AppKey(u"COMMON\\PROMPTS").ToUtf8() + "BadSpec wrong-type",
        "web-links Intranet not-a-url",
        "web-links Blank empty-address",
    };
    std::sort(codes.begin(), codes.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(codes, expected);

    // The reasons say it in words, with what they name.
    for (const CheckFinding& finding : found)
    {
        EXPECT_FALSE(finding.reason.IsEmpty());
        if (finding.problem == CheckProblem::NoAnswer)
        {
            EXPECT_EQ(finding.reason.ToUtf8(), "not reachable (no answer in 1 s)");
        }
        if (finding.problem == CheckProblem::WrongType &&
            finding.option.View().ends_with(u"CachePatterns"))
        {
            EXPECT_EQ(finding.value.ToUtf8(), "1");
            EXPECT_NE(finding.reason.ToUtf8().find("REG_SZ"), std::string::npos);
            EXPECT_NE(finding.reason.ToUtf8().find("REG_DWORD"), std::string::npos);
        }
        if (finding.problem == CheckProblem::Encoding)
        {
            EXPECT_NE(finding.reason.ToUtf8().find("UTF-8 without"), std::string::npos);
        }
    }
}
