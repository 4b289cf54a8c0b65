// kelcfg's command line and how it finds the configuration without the
// editor's picker: the folder or configuration named with -config=, the
// stored start folder, the single configuration, and the candidates listed
// when there are several.
#include <string>

#include "app/Version.h"
#include "app/deploy/KelCfgCommand.h"
#include "tests/win/deploy/TransferTestSupport.h"

namespace
{
class RecordingConsole : public CfgConsole
{
public:
    void Out(const KelText& text) override { out += text.ToUtf8(); }
    void Err(const KelText& line) override { err += line.ToUtf8() + "\n"; }
    std::string out;
    std::string err;
};

std::vector<KelText> Arguments(std::initializer_list<const char16_t*> texts)
{
    return std::vector<KelText>(texts.begin(), texts.end());
}

class KelCfgCommand : public TransferTest
{
protected:
    KelText Found(const KelCfgRequest& request)
    {
        return FindKelCfgConfiguration(app, request, console);
    }
    void Register(const char16_t* name, const KelText& configuration)
    {
        PutString(ProductKey(u"Shopwise", u"Configurations"), name, configuration);
    }
    RecordingConsole console;
};
} // namespace

TEST_F(KelCfgCommand, AWrongCommandLineIsToldWithTheUsage)
{
    struct Row
    {
        std::vector<KelText> arguments;
        const char* said;
    };
    const Row rows[] = {
        {{}, ""},
        {Arguments({u"copy", u"-app=Shopwise"}), "Unknown command \"copy\"."},
        {Arguments({u"--force"}), "Unknown option \"--force\"."},
        {Arguments({u"--help", u"copy"}), "Unknown command \"copy\"."},
        {Arguments({u"export"}), "Name the product with -app=<product>."},
        {Arguments({u"export", u"-app=Teapot"}), "\"Teapot\" is not a product."},
        {Arguments({u"export", u"-app=Shopwise", u"-force"}), "Unknown option \"-force\"."},
        {Arguments({u"import", u"-app=Shopwise"}), "The command import needs a file."},
        {Arguments({u"diff", u"-app=Shopwise", u"a.txt", u"b.txt"}),
         "Name one file only; \"b.txt\" is one too many."},
        {Arguments({u"diff", u"-app=Shopwise", u"a.txt", u"--dry-run"}),
         "--dry-run goes with the command import only."},
    };
    for (const Row& row : rows)
    {
        console.err.clear();
        KelCfgRequest request;
        EXPECT_EQ(ParseKelCfgArguments(row.arguments, request, console), CfgParsed::Wrong)
            << row.said;
        EXPECT_EQ(console.err.find(row.said), 0u) << console.err;
        EXPECT_NE(console.err.find("Usage:\n  kelcfg export"), std::string::npos);
        EXPECT_TRUE(console.out.empty());
    }

    KelCfgRequest request;
    ASSERT_EQ(ParseKelCfgArguments(Arguments({u"IMPORT", u"/l=Deutsch", u"-app=shopwise",
                                              u"C:/a b.txt", u"--dry-run", u"-config=Demo"}),
                                   request, console),
              CfgParsed::Run);
    EXPECT_EQ(request.command, KelCfgRequest::Command::Import);
    EXPECT_EQ(request.product.ToUtf8(), "Shopwise");
    EXPECT_EQ(request.file.ToUtf8(), "C:/a b.txt");
    EXPECT_EQ(request.config.ToUtf8(), "Demo");
    EXPECT_TRUE(request.dryRun);
}

TEST_F(KelCfgCommand, HelpAndVersionAnswerOnStandardOutput)
{
    KelCfgRequest request;
    auto answer = [&](std::initializer_list<const char16_t*> texts)
    {
        console.out.clear();
        console.err.clear();
        EXPECT_EQ(ParseKelCfgArguments(Arguments(texts), request, console), CfgParsed::Answered);
        EXPECT_TRUE(console.err.empty()) << console.err;
        return console.out;
    };
    // Every command's usage, in CR LF lines.
    for (const char16_t* help : {u"--help", u"-h", u"/?", u"-?"})
    {
        const std::string all = answer({help});
        EXPECT_EQ(all.find("Usage:\r\n  kelcfg export -app=<product>"), 0u) << all;
        EXPECT_NE(all.find("\r\n  kelcfg import "), std::string::npos);
        EXPECT_NE(all.find("\r\n  kelcfg diff "), std::string::npos);
        EXPECT_NE(all.find("Exit codes:"), std::string::npos);
    }
    // One command's usage: after the command (whatever else is wrong), or
    // named after the help.
    for (const auto& line : {Arguments({u"import", u"-app=Teapot", u"/?"}),
                             Arguments({u"/l=Deutsch", u"--help", u"IMPORT"})})
    {
        console.out.clear();
        ASSERT_EQ(ParseKelCfgArguments(line, request, console), CfgParsed::Answered);
        EXPECT_EQ(console.out.find("Usage:\r\n  kelcfg import -app=<product>"), 0u) << console.out;
        EXPECT_EQ(console.out.find("kelcfg export"), std::string::npos);
    }
    EXPECT_EQ(answer({u"--version"}), "kelcfg " KEL_VERSION_TEXT "\r\n");
}

TEST_F(KelCfgCommand, TheConfigurationIsFoundAsTheEditorFindsItWithoutThePicker)
{
    KelCfgRequest request;
    request.product = u"Shopwise";
    const KelText first = Configuration(u"first", u"Shopwise");
    const KelText second = Configuration(u"second", u"Shopwise");
    const KelText empty = tree.Folder(u"empty");

    EXPECT_TRUE(Found(request).IsEmpty());
    EXPECT_EQ(console.err, "No configuration of Shopwise was found. Name its folder with "
                           "-config=<folder>.\n");

    Register(u"First", first);
    EXPECT_TRUE(Found(request).SameAs(first));

    console.err.clear();
    Register(u"Second", second);
    EXPECT_TRUE(Found(request).IsEmpty());
    EXPECT_EQ(console.err, "Shopwise has several configurations; choose one with "
                           "-config=<folder>:\n  First  " +
                               first.ToUtf8() + "\n  Second  " + second.ToUtf8() + "\n");

    // The stored start folder wins while it holds the settings file.
    PutString(ProductKey(u"Shopwise"), u"StartIn", WithBackslashes(second));
    EXPECT_TRUE(Found(request).SameAs(second));
    PutString(ProductKey(u"Shopwise"), u"StartIn", empty);
    EXPECT_TRUE(Found(request).IsEmpty());

    // -config= names a folder (relative ones too) or a configuration.
    request.config = u"second";
    EXPECT_TRUE(Found(request).SameAs(second));
    {
        CurrentDirectoryScope inside(first);
        request.config = u".";
        EXPECT_TRUE(Found(request).SameAs(first));
    }
    console.err.clear();
    request.config = empty;
    EXPECT_TRUE(Found(request).IsEmpty());
    EXPECT_EQ(console.err, "\"" + empty.ToUtf8() +
                               "\" is neither a folder that holds the settings file KEL.INI "
                               "nor a configuration of Shopwise.\n");
}
