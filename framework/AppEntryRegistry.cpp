// The application's registry branches, data folders and message switches.
#include <shlobj.h>

#include "framework/AppEntry.h"
#include "framework/Folders.h"
#include "framework/RegistryKey.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
// "Orvantix/Brindlecove[ <release>]/" and, when given, "<product>/".
KelText RelativeProductFolder(const KelText& release, const KelText& product)
{
    KelText folder(u"Orvantix/Brindlecove");
    if (!release.IsEmpty())
    {
        folder += u' ';
        folder += release;
    }
    folder += u'/';
    if (!product.IsEmpty())
    {
        folder += product;
        folder += u'/';
    }
    return folder;
}
} // namespace

KelText AppEntry::GetRegistryKeyPath(const KelText& subKey, bool currentUser) const
{
    return RegistryKeyPathFor(release, subKey, currentUser);
}

KelText AppEntry::RegistryKeyPathFor(const KelText& release, const KelText& subKey,
                                     bool currentUser)
{
    KelText path(currentUser ? u"HKEY_CURRENT_USER\\" : u"HKEY_LOCAL_MACHINE\\");
    path += u"Software\\Orvantix\\";
    if (!release.IsEmpty())
    {
        path += u"Brindlecove ";
        path += release;
        path += u'\\';
    }
    if (!subKey.IsEmpty())
    {
        path += subKey;
        path += u'\\';
    }
    return path;
}

KelText AppEntry::ResolveInstallPath(const KelText& product, bool skipProgramFolder)
{
    if (!skipProgramFolder && PathExists(programFolder + executableName))
        return programFolder;

    struct Source
    {
        bool currentUser;
        const char16_t* value;
    };
    static const Source sources[] = {
        {false, u"InstallPath"},
        {true, u"LastRun"},
        {true, u"InstallPath"},
    };
    for (const Source& source : sources)
    {
        RegistryKey key(GetRegistryKeyPath(product, source.currentUser));
        KelText path;
        if (key.ReadString(source.value, path) == RegistryRead::Ok && PathExists(path))
            return NormaliseFolder(path);
    }
    return KelText();
}

void AppEntry::RegisterRelease(const KelText& product, const KelText& releaseText, bool checkCloud,
                               bool createFolders)
{
    release = releaseText;
    if (!product.IsEmpty())
        productName = product;

    // Without a known root there is no data folder: never create one
    // relative to the current directory.
    const KelText relative = RelativeProductFolder(release, product);
    localDataRoot = KnownFolder(CSIDL_LOCAL_APPDATA);
    roamingDataRoot = KnownFolder(CSIDL_APPDATA);
    localProductFolder = localDataRoot.IsEmpty() ? KelText() : localDataRoot + relative;
    roamingProductFolder = roamingDataRoot.IsEmpty() ? KelText() : roamingDataRoot + relative;
    userDataFolder = localProductFolder;
    if (createFolders && !localProductFolder.IsEmpty())
        CreateFolderPath(localProductFolder);
    if (createFolders && !roamingProductFolder.IsEmpty())
        CreateFolderPath(roamingProductFolder);

    KelText documents = KnownFolder(CSIDL_COMMON_DOCUMENTS);
    sharedDocumentsFolder =
        documents.IsEmpty() ? KelText() : documents + RelativeProductFolder(release, KelText());

    KelText installed = ResolveInstallPath(product, false);
    if (!installed.IsEmpty())
        programFolder = installed;
    if (checkCloud && !programFolder.IsEmpty() && PathExists(programFolder + u"Cloud"))
        cloudInstall = true;

    messageSwitches.Register(1, u"Incorrect Unicode Version", u"WrongUnicode");
}

KelText AppEntry::GetLanguage(const KelText& product)
{
    KelText language;
    RegistryKey(GetRegistryKeyPath(product, true)).ReadString(u"Language", language);
    return language;
}

KelText AppEntry::SwitchKeyPath() const
{
    return GetRegistryKeyPath(KelText(), true) + u"COMMON\\PROMPTS";
}

bool AppEntry::IsSwitchShown(uint32_t code) const
{
    const MsgSwitch* known = messageSwitches.Find(code);
    if (!known)
        return true;
    uint32_t state = 1;
    switch (RegistryKey(SwitchKeyPath()).ReadDword(known->name, state))
    {
    case RegistryRead::Ok:
        return state != 0;
    case RegistryRead::OtherType:
        // A value of any other type switches the message off.
        return false;
    default:
        return true;
    }
}

bool AppEntry::SetSwitchShown(uint32_t code, bool shown)
{
    const MsgSwitch* known = messageSwitches.Find(code);
    if (!known)
        return false;
    RegistryKey key;
    return key.Create(SwitchKeyPath()) && key.WriteDword(known->name, shown ? 1 : 0);
}

int32_t AppEntry::ShowMessageBox(HWND owner, const KelText& text, const KelText& caption,
                                 uint32_t style, uint32_t switchCode)
{
    // Only a registered switch has a place to keep "don't show again".
    const bool switched = switchCode != 0 && messageSwitches.Find(switchCode);
    if (switched && !IsSwitchShown(switchCode))
        return MessageBoxDefaultButton(style);

    bool dontShowAgain = false;
    int32_t answer = Interaction().ShowMessageBox(
        owner, text, caption, style, switched ? switchCode : 0,
        switched ? KelText(DictText(kTextDontShowAgain)) : KelText(), dontShowAgain);
    if (switched && dontShowAgain)
        SetSwitchShown(switchCode, false);
    return answer;
}
