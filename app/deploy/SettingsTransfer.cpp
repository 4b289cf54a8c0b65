#include "app/deploy/SettingsTransfer.h"

#include <algorithm>
#include <exception>

#include "app/ProductTable.h"
#include "app/SettingsContext.h"
#include "app/Version.h"
#include "app/deploy/StateSnapshot.h"
#include "app/deploy/TransferFile.h"
#include "app/deploy/TransferPages.h"
#include "app/deploy/TransferTexts.h"
#include "framework/AppEntry.h"
#include "framework/Folders.h"
#include "platform/FileSystem.h"
#include "platform/StagedFiles.h"
#include "text/EncodedText.h"

namespace
{
using Items = std::vector<KelText>;

template <typename... Args>
KelText Say(TransferText number, const Args&... args)
{
    const KelText pattern = TransferMessage(number);
    return KelText::Formatted(pattern.c_str(), args...);
}

// A text on one line of the file or of a message.
KelText OneLine(const KelText& text)
{
    KelText line;
    for (char16_t unit : text.View())
    {
        if (unit == u'\r' || unit == u'\n')
        {
            if (!line.IsEmpty() && line.At(line.Length() - 1) != u' ')
                line += u' ';
            continue;
        }
        line += unit;
    }
    return line.Trim();
}

bool SameItems(const Items& left, const Items& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const KelText& a, const KelText& b) { return a.SameAs(b); });
}

KelText Shown(const KelText& value)
{
    return value.IsEmpty() ? KelText(u"\"\"") : value;
}

KelText ChangeLine(const KelText& where, const KelText& before, bool beforeStored,
                   const KelText& after)
{
    return where + u": " + Shown(before) + (beforeStored ? u"" : u" (default)") + u" -> " +
           Shown(after);
}

bool EndsWithFolded(const KelText& text, const KelText& tail)
{
    if (text.Length() < tail.Length())
        return false;
    return text.Sub(text.Length() - tail.Length() + 1, tail.Length()) == tail;
}

// The notes that an export puts after a commented-out value.
const char16_t kNoteDefault[] = u"default";
const char16_t kNoteFixed[] = u"only Cutwise can change this";
const char16_t kNoteSwitchOffOnly[] = u"can only be switched off";
const char16_t kNoteNotStoredFor[] = u"not stored for ";

struct LineProblem
{
    int32_t line;
    KelText text;
};

void SortByLine(std::vector<LineProblem>& problems)
{
    std::stable_sort(problems.begin(), problems.end(),
                     [](const LineProblem& a, const LineProblem& b) { return a.line < b.line; });
}
} // namespace

SettingsTransfer::SettingsTransfer(AppEntry& app, SettingsContext& store, const KelText& product,
                                   const KelText& folderIn)
    : app(app), product(product)
{
    app.SetSettingsFolder(folderIn);
    // Read back once set: the application object normalises the folder.
    folder = app.SettingsFolder(); // NOLINT(cppcoreguidelines-prefer-member-initializer)
    pages = MakeTransferPages(app, store, product);
}

SettingsTransfer::~SettingsTransfer() = default;

std::vector<SettingsTransfer::ViewEntry> SettingsTransfer::View() const
{
    std::vector<ViewEntry> view;
    for (size_t p = 0; p < pages.size(); ++p)
    {
        const std::vector<TransferKey>& keys = pages[p]->Keys();
        for (size_t k = 0; k < keys.size(); ++k)
            view.push_back({p, k, keys[k].get(), keys[k].stored()});
    }
    return view;
}

KelText SettingsTransfer::Export(const KelText& timestamp)
{
    for (auto& page : pages)
        page->Load();
    const EncodedText version(KEL_VERSION_TEXT, -1, EncodedText::Ansi);

    TransferWriter file;
    file.Comment(u"EditKel settings of " + product);
    file.Comment(u"Configuration: " + folder);
    file.Comment(u"Editor version: " + version.ToText());
    file.Comment(u"Exported: " + timestamp);
    file.Comment(KelText());
    file.Comment(
        u"kelcfg import sets each \"Key = Value\" line and leaves every other value as it is.");
    file.Comment(
        u"A value in a comment is not set by an import: its note says why. \"(default)\" means");
    file.Comment(
        u"that the product shows its default (a folder: the one inside the configuration);");
    file.Comment(u"to set such a value, remove the \"#\" and the note.");
    file.Blank();

    for (const ViewEntry& entry : View())
    {
        const TransferPage& page = *pages[entry.page];
        const TransferKey& key = page.Keys()[entry.key];
        if (entry.key == 0)
            file.Section(page.Section());
        if (!key.comment.IsEmpty())
            file.Comment(key.comment);
        if (key.type == TransferType::List)
        {
            for (const KelText& item : entry.items)
                file.Value(key.name, OneLine(item));
            if (entry.items.empty())
                file.CommentedValue(key.name, KelText(), kNoteDefault);
            continue;
        }
        const KelText value = OneLine(entry.items.empty() ? KelText() : entry.items.front());
        KelText note;
        if (key.access == TransferAccess::Fixed)
            note = kNoteFixed;
        else if (key.access == TransferAccess::NotStored)
            note = kNoteNotStoredFor + product;
        else if (key.access == TransferAccess::SwitchOffOnly && value == kTransferYes)
            note = kNoteSwitchOffOnly;
        else if (!entry.stored)
            note = kNoteDefault;
        if (note.IsEmpty())
            file.Value(key.name, value);
        else
            file.CommentedValue(key.name, value, note);
    }
    return file.Text();
}

void SettingsTransfer::AddPlaces(StateSnapshot& snapshot) const
{
    for (const auto& page : pages)
    {
        const TransferPlaces places = page->Places();
        for (const KelText& file : places.files)
            snapshot.AddFile(file);
        for (const KelText& key : places.keys)
            snapshot.AddRegistryTree(key);
    }
}

std::vector<SettingsTransfer::ViewEntry> SettingsTransfer::ReadView()
{
    for (auto& page : pages)
        page->Load();
    return View();
}

std::vector<KelText> SettingsTransfer::Changes(const std::vector<ViewEntry>& before,
                                               const std::vector<ViewEntry>& after) const
{
    std::vector<KelText> changes;
    for (size_t i = 0; i < before.size() && i < after.size(); ++i)
    {
        if (SameItems(before[i].items, after[i].items))
            continue;
        const TransferPage& page = *pages[before[i].page];
        const TransferKey& key = page.Keys()[before[i].key];
        const KelText where = page.Section() + u"/" + key.name;
        if (key.type != TransferType::List)
        {
            changes.push_back(ChangeLine(where, before[i].items.front(), before[i].stored,
                                         after[i].items.front()));
            continue;
        }
        const size_t count = std::max(before[i].items.size(), after[i].items.size());
        for (size_t n = 0; n < count; ++n)
        {
            const bool had = n < before[i].items.size();
            const bool has = n < after[i].items.size();
            if (had && has && before[i].items[n].SameAs(after[i].items[n]))
                continue;
            const KelText place = KelText::Formatted(u"%s %i", where, int32_t(n + 1));
            changes.push_back(place + u": " + (had ? before[i].items[n] : KelText(u"(none)")) +
                              u" -> " + (has ? after[i].items[n] : KelText(u"(none)")));
        }
    }
    return changes;
}

TransferOutcome SettingsTransfer::Import(const std::string& bytes, Mode mode)
{
    TransferOutcome outcome;
    std::vector<LineProblem> errors;
    std::vector<LineProblem> notes;

    std::vector<TransferSection> sections;
    KelText text;
    int32_t badLine = 0;
    if (!DecodeTransferBytes(bytes, text, badLine))
        errors.push_back({badLine, TransferMessage(kTextCfgNotUtf8)});
    else
    {
        std::vector<TransferProblem> syntax;
        sections = ParseTransferText(text, syntax);
        for (TransferProblem& problem : syntax)
            errors.push_back({problem.line, std::move(problem.text)});
    }
    for (auto& page : pages)
        page->Load();

    // --- what the file gives, checked against the pages -----------------------------
    struct Given
    {
        const TransferKey* key;
        int32_t line;
        Items items;
        bool apply;
    };
    std::vector<Given> given;
    std::vector<std::pair<const TransferPage*, int32_t>> seenSections;
    const KelText markers[] = {KelText(kNoteDefault), KelText(kNoteFixed),
                               KelText(kNoteSwitchOffOnly), kNoteNotStoredFor + product};

    for (const TransferSection& section : sections)
    {
        const auto found =
            std::find_if(pages.begin(), pages.end(),
                         [&section](const auto& page) { return page->Section() == section.name; });
        if (found == pages.end())
        {
            errors.push_back({section.line, Say(kTextCfgUnknownSection, product, section.name)});
            continue;
        }
        const TransferPage* page = found->get();
        const auto seen = std::find_if(seenSections.begin(), seenSections.end(),
                                       [page](const auto& known) { return known.first == page; });
        if (seen != seenSections.end())
        {
            errors.push_back(
                {section.line, Say(kTextCfgSectionTwice, page->Section(), seen->second)});
            continue;
        }
        seenSections.emplace_back(page, section.line);

        for (const TransferValue& value : section.values)
        {
            const TransferKey* key = page->FindKey(value.key);
            if (!key)
            {
                errors.push_back({value.line, Say(kTextCfgUnknownKey, page->Section(), value.key)});
                continue;
            }
            auto earlier = std::find_if(given.begin(), given.end(),
                                        [key](const Given& known) { return known.key == key; });
            if (earlier != given.end() && key->type != TransferType::List)
            {
                errors.push_back({value.line, Say(kTextCfgKeyTwice, key->name, earlier->line)});
                continue;
            }

            KelText item = value.value;
            bool good = true;
            for (const KelText& marker : markers)
                if (good && EndsWithFolded(item, u"(" + marker + u")"))
                {
                    errors.push_back(
                        {value.line, Say(kTextCfgMarkerInValue, u"(" + marker + u")", key->name)});
                    good = false;
                }
            if (!good)
                continue;
            switch (key->type)
            {
            case TransferType::Switch:
            case TransferType::Choice:
            {
                const auto choice = std::find_if(key->choices.begin(), key->choices.end(),
                                                 [&item](const KelText& c) { return c == item; });
                if (choice == key->choices.end())
                {
                    KelText list;
                    for (const KelText& c : key->choices)
                        list += (list.IsEmpty() ? KelText() : KelText(u", ")) + c;
                    errors.push_back({value.line, Say(kTextCfgNotAChoice, key->name, list)});
                    good = false;
                }
                else
                    item = *choice;
                break;
            }
            case TransferType::Folder:
                if (item.IsEmpty())
                {
                    errors.push_back({value.line, Say(kTextCfgNeedsFolder, key->name)});
                    good = false;
                }
                break;
            case TransferType::List:
                // An empty value alone stands for the empty list.
                if (item.IsEmpty())
                    break;
                if (key->canonical)
                    item = key->canonical(item);
                if (key->itemProblem && key->itemProblem(item) != 0)
                {
                    errors.push_back({value.line, TransferMessage(kTextCfgBadLink)});
                    good = false;
                }
                break;
            case TransferType::Text:
                break;
            }
            if (!good)
                continue;
            if (earlier != given.end())
            {
                if (item.IsEmpty() || earlier->items.front().IsEmpty())
                    errors.push_back({value.line, Say(kTextCfgEmptyListMixed, key->name)});
                earlier->items.push_back(item);
            }
            else
                given.push_back({key, value.line, Items{item}, true});
        }
    }

    // --- what the product's pages let an import change --------------------------------
    for (Given& wanted : given)
    {
        const TransferKey& key = *wanted.key;
        if (key.type == TransferType::List)
        {
            if (wanted.items.size() == 1 && wanted.items.front().IsEmpty())
                wanted.items.clear();
            continue;
        }
        const Items now = key.get();
        const KelText current = now.empty() ? KelText() : now.front();
        const KelText& item = wanted.items.front();
        if (item.SameAs(current))
            continue;
        switch (key.access)
        {
        case TransferAccess::Fixed:
            errors.push_back({wanted.line, Say(kTextCfgOnlyCutwise, key.name)});
            break;
        case TransferAccess::SwitchOffOnly:
            if (item == kTransferYes)
                errors.push_back({wanted.line, TransferMessage(kTextCfgAutoLoginOn)});
            break;
        case TransferAccess::NotStored:
            notes.push_back({wanted.line, Say(kTextCfgNotStored, product, key.name)});
            wanted.apply = false;
            break;
        case TransferAccess::Free:
            break;
        }
    }

    SortByLine(errors);
    SortByLine(notes);
    for (const LineProblem& note : notes)
        outcome.messages.push_back(Say(kTextCfgNote, Say(kTextCfgLine, note.line, note.text)));
    if (!errors.empty())
    {
        for (const LineProblem& error : errors)
            outcome.messages.push_back(Say(kTextCfgLine, error.line, error.text));
        outcome.messages.push_back(TransferMessage(kTextCfgNothingWritten));
        outcome.exitCode = 1;
        return outcome;
    }

    // --- the changes: what the pages hold now against what they will store -----------
    const std::vector<ViewEntry> before = View();
    for (const Given& wanted : given)
        if (wanted.apply && !SameItems(wanted.key->get(), wanted.items))
            wanted.key->set(wanted.items);
    const std::vector<ViewEntry> after = View();

    std::vector<bool> pageChanged(pages.size(), false);
    for (size_t i = 0; i < before.size(); ++i)
        if (!SameItems(before[i].items, after[i].items))
            pageChanged[before[i].page] = true;
    outcome.changes = Changes(before, after);

    const int32_t changed = int32_t(outcome.changes.size());
    if (changed == 0)
    {
        outcome.messages.push_back(TransferMessage(kTextCfgNoChanges));
        return outcome;
    }
    if (mode != Mode::Apply)
    {
        outcome.messages.push_back(Say(kTextCfgWouldChange, changed));
        if (mode == Mode::DryRun)
            outcome.messages.push_back(TransferMessage(kTextCfgDryRun));
        return outcome;
    }

    // --- writing, with everything put back on any failure ---------------------------
    StateSnapshot snapshot;
    KelText unreadable;
    AddPlaces(snapshot);
    if (!snapshot.Take(unreadable))
    {
        outcome.messages.push_back(Say(kTextCfgSnapshotFailed, unreadable));
        outcome.exitCode = 1;
        return outcome;
    }

    KelText failure;
    {
        // The pages' saves of the settings file are held back and reach the disk
        // in one write at the end: a crash or a refusal part way through the
        // pages leaves the file as it was.
        StagedFiles staged;
        try
        {
            for (size_t p = 0; p < pages.size() && failure.IsEmpty(); ++p)
            {
                if (!pageChanged[p])
                    continue;
                const PageReport report = pages[p]->Save();
                if (report.refuse)
                    failure = pages[p]->Section() + u": " +
                              OneLine(KelText::Formatted(u"%s - %s", report.caption, report.text));
                else if (report.HasBox())
                    outcome.messages.push_back(Say(kTextCfgNote, OneLine(report.text)));
            }
            if (failure.IsEmpty())
            {
                // Read back: what a page did not store as meant (including writes
                // that its own rules do not report) is a failure too.
                for (auto& page : pages)
                    page->Load();
                const std::vector<ViewEntry> stored = View();
                for (size_t i = 0; i < stored.size() && failure.IsEmpty(); ++i)
                    if (!SameItems(stored[i].items, after[i].items))
                    {
                        const TransferPage& page = *pages[stored[i].page];
                        failure = Say(kTextCfgNotStoredAsMeant,
                                      page.Section() + u"/" + page.Keys()[stored[i].key].name);
                    }
            }
        }
        catch (const std::exception& error)
        {
            failure = KelText::FromUtf8(error.what());
        }
        catch (...)
        {
            failure = u"?";
        }
        if (failure.IsEmpty())
        {
            std::u16string failedPath;
            if (!staged.Commit(failedPath))
                failure = Say(kTextCfgFileNotWritten, WithBackslashes(KelText(failedPath.c_str())));
        }
    }

    if (failure.IsEmpty())
    {
        outcome.messages.push_back(Say(kTextCfgChanged, changed));
        outcome.wrote = true;
        return outcome;
    }

    outcome.exitCode = 1;
    outcome.messages.push_back(Say(kTextCfgWriteFailed, failure));
    // A read-only settings file is refused before anything of it is written;
    // say which file, since that is what the administrator has to look at.
    const KelText settingsFile = folder + SettingsFileNameFor(product);
    if (GetFileSystem().Query(settingsFile).readOnly)
        outcome.messages.push_back(Say(kTextCfgReadOnly, WithBackslashes(settingsFile)));
    std::vector<KelText> notBack = snapshot.Restore();
    if (notBack.empty() && !snapshot.Unchanged())
        notBack.push_back(folder);
    if (notBack.empty())
        outcome.messages.push_back(TransferMessage(kTextCfgPutBack));
    else
    {
        KelText list;
        for (const KelText& place : notBack)
            list += (list.IsEmpty() ? KelText() : KelText(u", ")) + place;
        outcome.messages.push_back(Say(kTextCfgPutBackFailed, list));
    }
    for (auto& page : pages)
        page->Load();
    return outcome;
}
