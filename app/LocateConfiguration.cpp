#include "app/LocateConfiguration.h"

#include <windows.h>

#include <algorithm>

#include "app/SettingsContext.h"
#include "framework/AppEntry.h"
#include "framework/Folders.h"
#include "framework/RegistryKey.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"
#include "text/WideText.h"

namespace
{
bool SameFolder(const KelText& a, const KelText& b)
{
    return NormaliseFolder(a) == NormaliseFolder(b);
}

void AddCandidate(std::vector<ConfigCandidate>& list, ConfigCandidate candidate)
{
    for (const ConfigCandidate& known : list)
        if (SameFolder(known.folder, candidate.folder))
            return;
    list.push_back(std::move(candidate));
}

// The registered configurations of one registry branch, sorted by name.
std::vector<ConfigCandidate> RegisteredConfigurations(AppEntry& app, const KelText& product,
                                                      bool currentUser, const KelText& fileName)
{
    std::vector<ConfigCandidate> found;
    RegistryKey key(app.GetRegistryKeyPath(product, currentUser) + u"Configurations");
    if (!key.IsOpen())
        return found;
    for (const KelText& name : key.ValueNames())
    {
        KelText folder;
        if (name.IsEmpty() || key.ReadString(name, folder) != RegistryRead::Ok || folder.IsEmpty())
            continue;
        folder = NormaliseFolder(folder);
        if (FolderHoldsFile(app, folder, fileName))
            found.push_back({name, folder, 1});
    }
    std::sort(found.begin(), found.end(),
              [](const ConfigCandidate& a, const ConfigCandidate& b)
              { return KelText(a.name).ToUpper().View() < KelText(b.name).ToUpper().View(); });
    return found;
}

// Sub-folders of the shared documents folder that hold the settings file.
std::vector<ConfigCandidate> SharedConfigurations(AppEntry& app, const KelText& fileName)
{
    std::vector<ConfigCandidate> found;
    const KelText root = app.SharedDocumentsFolder();
    if (root.IsEmpty())
        return found;
    WIN32_FIND_DATAW data;
    HANDLE search = FindFirstFileW(AsWide(WithBackslashes(root) + u"*"), &data);
    if (search == INVALID_HANDLE_VALUE)
        return found;
    do
    {
        const KelText name = FromWide(data.cFileName);
        if (!(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) || name == u"." || name == u"..")
            continue;
        const KelText folder = root + name + u"/";
        if (FolderHoldsFile(app, folder, fileName))
            found.push_back({name, folder, 0});
    } while (FindNextFileW(search, &data));
    FindClose(search);
    std::sort(found.begin(), found.end(),
              [](const ConfigCandidate& a, const ConfigCandidate& b)
              { return KelText(a.name).ToUpper().View() < KelText(b.name).ToUpper().View(); });
    return found;
}

// The configuration picker, or -1 when the user cancels it.
int32_t Pick(AppEntry& app, std::vector<ConfigCandidate>& candidates, const KelText& fileName,
             const KelText& product)
{
    return app.ChooseModal(KelText(u"configuration"),
                           [&]() { return RunConfigurationPicker(candidates, fileName, product); });
}
} // namespace

bool FolderHoldsFile(AppEntry& app, const KelText& folder, const KelText& fileName)
{
    return !folder.IsEmpty() && app.PathExists(NormaliseFolder(folder) + fileName);
}

std::vector<ConfigCandidate> GatherConfigurations(AppEntry& app, const KelText& product,
                                                  const KelText& fileName)
{
    std::vector<ConfigCandidate> list;
    if (!product.IsEmpty())
        for (bool currentUser : {true, false})
            for (ConfigCandidate& candidate :
                 RegisteredConfigurations(app, product, currentUser, fileName))
                AddCandidate(list, std::move(candidate));
    for (ConfigCandidate& candidate : SharedConfigurations(app, fileName))
        AddCandidate(list, std::move(candidate));
    return list;
}

int32_t LocateConfiguration(SettingsContext& context, const KelText& fileNameIn,
                            const int32_t* descriptor, void*, const KelText& product,
                            int32_t alwaysPick, int32_t create, const char16_t* configurationName)
{
    AppEntry* app = GetAppEntry();
    if (!app)
        return 0;
    app->SetConfigurationName(KelText());
    app->SetConfigurationFlag(false);

    KelText folder, fileName;
    SplitFilePath(fileNameIn, folder, fileName);
    const KelText wantedName(configurationName);

    auto useFile = [&]()
    {
        context.SetSettingsFile(app->SettingsFolder() + fileName, product, descriptor);
        return 1;
    };

    // A settings file named with its folder is taken as it is.
    if (!folder.IsEmpty())
    {
        if (!app->PathExists(folder + fileName))
            return 0;
        app->SetSettingsFolder(folder);
        return useFile();
    }

    // The folder the user asked the product to start in, unless Alt is held.
    bool foundStart = false;
    if (!product.IsEmpty() && wantedName.IsEmpty())
    {
        RegistryKey key(app->GetRegistryKeyPath(product, true));
        KelText startIn;
        if (key.IsOpen() && key.ReadString(u"StartIn", startIn) == RegistryRead::Ok &&
            !startIn.IsEmpty() && !app->IsKeyDown(VK_MENU))
        {
            startIn = NormaliseFolder(startIn);
            if (app->PathExists(startIn + fileName))
            {
                app->SetSettingsFolder(startIn);
                foundStart = true;
            }
        }
        if (foundStart && !alwaysPick)
            return useFile();
    }

    std::vector<ConfigCandidate> candidates = GatherConfigurations(*app, product, fileName);
    if (candidates.empty())
    {
        for (const KelText& fallback : {app->SettingsFolder(), app->ProgramFolder()})
            if (FolderHoldsFile(*app, fallback, fileName))
            {
                candidates.push_back(
                    {KelText(DictText(kTextDefaultConfiguration)), NormaliseFolder(fallback), 0});
                break;
            }
    }
    if (candidates.empty() && create)
    {
        const KelText newFolder = app->NewConfigurationFolder();
        if (CreateFolderPath(newFolder))
        {
            const KelText path = newFolder + fileName;
            if (!app->PathExists(path))
            {
                // An empty settings file that marks the new folder as a
                // configuration. CREATE_NEW rather than the file system's
                // whole-file write: it never replaces a file that another
                // program made in the meantime, and it writes no bytes.
                HANDLE file = CreateFileW(AsWide(path), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                          FILE_ATTRIBUTE_NORMAL, nullptr);
                if (file != INVALID_HANDLE_VALUE)
                    CloseHandle(file);
            }
            candidates.push_back({KelText(DictText(kTextDefaultConfiguration)), newFolder, 0});
        }
    }

    int32_t chosen = -1;
    if (alwaysPick)
        chosen = Pick(*app, candidates, fileName, product);
    else
    {
        bool needPicker = true;
        if (wantedName.IsEmpty())
        {
            if (candidates.size() == 1)
            {
                chosen = 0;
                needPicker = false;
            }
        }
        else
        {
            for (size_t i = 0; i < candidates.size(); ++i)
                if (candidates[i].name == wantedName)
                {
                    chosen = int32_t(i);
                    needPicker = false;
                    break;
                }
        }
        // Shift and Ctrl held together ask for the picker after all.
        if (!needPicker && app->IsKeyDown(VK_SHIFT) && app->IsKeyDown(VK_CONTROL))
            needPicker = true;
        if (needPicker)
            chosen = Pick(*app, candidates, fileName, product);
    }

    if (chosen >= 0 && chosen < int32_t(candidates.size()))
    {
        const ConfigCandidate& candidate = candidates[size_t(chosen)];
        app->SetSettingsFolder(candidate.folder);
        app->SetConfigurationName(candidate.name);
        app->SetConfigurationFlag(candidate.flag != 0);
        return useFile();
    }
    if (foundStart)
        return useFile();

    const KelText message = KelText::Formatted(u"%s - %s", DictText(kTextNoConfiguration),
                                               DictText(kTextNeedsSettingsFile));
    const KelText caption = product.IsEmpty() ? KelText(DictText(kTextFamilyName)) : product;
    app->ShowMessageBox(nullptr, message, caption, MB_ICONHAND | MB_OK);
    return 0;
}
