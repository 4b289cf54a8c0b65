// Every product: a configuration set up through an import of a file that
// changes every value the product can change, exported, and the export
// imported into an empty release and configuration. The second export, every
// registry value of the two releases and the two settings files must match.
#include <string>

#include "tests/win/deploy/TransferTestSupport.h"

namespace
{
// A value for everything the product's pages let an import set, none of them
// the default.
std::string FullFile(const std::u16string& product)
{
    std::string file = "[Program Paths]\nMain = D:/Kel/Main\nBackup = D:\\Kel\\Backup\\\n"
                       "Database = D:/Kel/Database/\n";
    if (product == u"Plotwise")
        file += "[CAD Options]\nIcons = D:/Kel/Icons/\nMenuGroup = KELMENU\nPop0 = Kel\n"
                "SkipMenuLoad = YES\nStoreEstDatabase = NO\nUseDWGDatabase = yes\n"
                "SkipValidateButtons = YES\nButtonLoadReport = YES\n";
    else if (product != u"Ledgerline")
    {
        file += "[Product Options]\nSUPPORT = Support: J\xC3\xBCrgen Wei\xC3\x9F, 214\n"
                "Caption = Acme = Werkstatt #1\nHelp File = D:/Help/kel.chm\n";
        if (product == u"Cutwise")
            file += "QUICKFULLEDIT = YES\nCANEDITCATS = YES\nPRINTWITHNONC = YES\n";
        if (product == u"Cutwise" || product == u"Tallywise")
            file += "HideWelcomeScreen = YES\n";
        file += "[Web Links]\nLink = = https://kel.example/help\n"
                "Link = Shop=https://shop.example/?item=1\n";
    }
    file += "[Common Options]\nLanguage = Deutsch\nVirtualItemFolders = YES\nCachePatterns = NO\n"
            "FancyToolbars = YES\nRegionalCSV = YES\nNUMPAD = ON\n"
            "[Message Prompts]\nBadSpec = NO\nFill2Ends = NO\nWrongUnicode = NO\n";
    return file;
}

// A settings file (UTF-16 with its mark, as the product writes it) as UTF-8.
std::string Text(const KelText& path)
{
    std::string bytes;
    GetFileSystem().ReadBytes(path, bytes);
    if (bytes.size() < 2)
        return bytes;
    return KelText(reinterpret_cast<const char16_t*>(bytes.data() + 2),
                   int32_t(bytes.size() / 2 - 1))
        .ToUtf8();
}

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

class RoundTrip : public TransferTest, public ::testing::WithParamInterface<const char16_t*>
{
protected:
    RoundTrip() : otherRelease(UniqueName(u"Q")), otherCleanup(otherRelease) {}
    KelText otherRelease;
    ReleaseCleanup otherCleanup;
};
} // namespace

TEST_P(RoundTrip, ExportThenImportIntoAnEmptyReleaseReproducesEveryValue)
{
    const KelText product(GetParam());
    const KelText fileName = SettingsFileNameFor(product);
    const KelText source = Configuration(u"source", product);
    const TransferOutcome setUp = Import(product, source, FullFile(std::u16string(product.View())));
    ASSERT_EQ(setUp.exitCode, 0) << Said(setUp);
    ASSERT_TRUE(setUp.wrote);
    const std::string exported = Export(product, source);
    const std::vector<std::string> sourceRegistry = RegistryState();
    // Every changed value was written as given and is no longer a default.
    EXPECT_NE(exported.find("Language = Deutsch\r\n"), std::string::npos) << exported;
    EXPECT_NE(exported.find("Backup = D:/Kel/Backup/\r\n"), std::string::npos) << exported;
    // The page stores every switch, also the ones the file left alone.
    EXPECT_NE(exported.find("\nBadCostTables = YES\r\n"), std::string::npos) << exported;

    // The other machine: a release and a configuration of their own.
    app.RegisterRelease(product, otherRelease, false);
    RegisterEditorSwitches(app);
    const KelText target = Configuration(u"target", product);
    ASSERT_TRUE(RegistryState().empty());
    const TransferOutcome imported = Import(product, target, exported);
    ASSERT_EQ(imported.exitCode, 0) << Said(imported);
    EXPECT_EQ(imported.changes.size(), setUp.changes.size()) << Said(imported);

    // Defaults stay defaults (inside the target's own folder): only the
    // configuration folder differs between the two exports.
    EXPECT_EQ(Export(product, target), Replaced(exported, source.ToUtf8(), target.ToUtf8()));
    EXPECT_EQ(RegistryState(), sourceRegistry);
    // The settings files alike, but for the default folders that saving the
    // program paths wrote, each inside its own configuration.
    EXPECT_EQ(Text(target + fileName),
              Replaced(Text(source + fileName), source.ToUtf8(), target.ToUtf8()));
}

INSTANTIATE_TEST_SUITE_P(EveryProduct, RoundTrip,
                         ::testing::Values(u"Plotwise", u"Shopwise", u"Tallywise", u"Cutwise",
                                           u"CutwiseComponents", u"Ledgerline", u"Fieldpost"),
                         [](const auto& info) { return KelText(info.param).ToUtf8(); });
