// kelpolicy: makes the Group Policy administrative templates of the editor's
// options from the pages' field tables and the dictionary.
//
//   kelpolicy <diction.ary> <out-folder> <revision>
//
// writes <out-folder>/EditKel.admx and <out-folder>/<culture>/EditKel.adml
// for every language of the dictionary. Exit codes: 0 done, 1 failed, 2 bad
// usage.
//
// It is a Windows program, built with the editor and run by the build
// through the cross-compiling emulator (Wine), as dictool is: the field tables
// live in the pages' value classes and the labels in the pages' dialog
// templates, both Windows code and resources, so the program that reads them
// is the editor's own code rather than a second, portable copy of them.
#include <windows.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/ProgramMain.h"
#include "framework/AppEntry.h"
#include "platform/FileSystem.h"
#include "text/TextHolder.h"
#include "text/TextLanguage.h"
#include "text/WideText.h"
#include "tools/policygen/PolicyTemplates.h"

namespace
{
struct Language
{
    KelText name;
    uint32_t id = 0;
};

// The dictionary's languages in its order (English first), with their ids.
std::vector<Language> Languages(const KelText& dictionary)
{
    TextHolder& holder = TextHolder::Instance();
    if (!holder.Load(dictionary, KelText(u"all"), false))
        throw std::runtime_error("the dictionary cannot be read");
    std::vector<Language> languages;
    for (int32_t i = 0; i < holder.LanguageObjectCount(); ++i)
        if (const TextLanguage* language = holder.Language(i))
            languages.push_back({language->Name(), language->FirstAttribute()});
    if (languages.empty())
        throw std::runtime_error("the dictionary has no languages");
    return languages;
}

void Write(const KelText& path, const std::string& text)
{
    if (!GetFileSystem().WriteBytes(path, text.data(), text.size()))
        throw std::runtime_error("cannot write " + path.ToUtf8());
}

void MakeFolder(const KelText& path)
{
    if (!CreateDirectoryW(AsWide(path), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
        throw std::runtime_error("cannot make the folder " + path.ToUtf8());
}
} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc != 4)
    {
        std::fputs("usage: kelpolicy <diction.ary> <out-folder> <revision>\n", stderr);
        return 2;
    }
    const KelText dictionary = FromWide(argv[1]);
    const KelText folder = FromWide(argv[2]);
    const std::string revision = FromWide(argv[3]).ToUtf8();
    try
    {
        const std::vector<Language> languages = Languages(dictionary);
        std::vector<KelText> names;
        names.reserve(languages.size());
        for (const Language& language : languages)
            names.push_back(language.name);
        MakeFolder(folder);
        bool first = true;
        for (const Language& language : languages)
        {
            // The texts of the switches are taken when they are registered,
            // so each language gets an application object of its own.
            if (!TextHolder::Instance().Load(dictionary, language.name, false))
                throw std::runtime_error("the dictionary cannot be read");
            SetApplication(new AppEntry(GetModuleHandleW(nullptr)));
            AppEntry& app = *GetAppEntry();
            app.SetApplicationName(KelText(kApplicationName));
            RegisterEditorSwitches(app);
            app.RegisterRelease(KelText(), KelText(kRelease), false);
            const PolicySet set = MakePolicySet(names);
            DestroyApplication();

            if (first)
                Write(folder + u"/EditKel.admx", AdmxText(set, revision));
            first = false;
            const KelText culture = folder + u"/" + CultureName(language.id);
            MakeFolder(culture);
            Write(culture + u"/EditKel.adml", AdmlText(set, revision));
            std::printf("%s: %zu policies\n", culture.ToUtf8().c_str(), set.policies.size());
        }
    }
    catch (const std::exception& error)
    {
        DestroyApplication();
        std::fprintf(stderr, "kelpolicy: %s\n", error.what());
        return 1;
    }
    return 0;
}
