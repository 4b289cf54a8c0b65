#include "app/deploy/ConfigHistory.h"

#include <windows.h>

#include <algorithm>
#include <lmcons.h>
#include <shlobj.h>

#include "app/SettingsContext.h"
#include "app/deploy/TransferTexts.h"
#include "framework/AppEntry.h"
#include "framework/Folders.h"
#include "platform/FileSystem.h"
#include "text/WideText.h"

namespace
{
constexpr char kHeader[] = "EditKel history entry 1\n";
const char16_t kExtension[] = u".khist";
// An id is the local time of the save as 17 digits, YYYYMMDDhhmmssmmm.
constexpr int32_t kIdDigits = 17;

KelText& Root()
{
    static KelText root;
    return root;
}

KelText WindowsUser()
{
    wchar_t name[UNLEN + 1];
    DWORD size = UNLEN + 1;
    return GetUserNameW(name, &size) ? FromWide(name) : KelText();
}

uint64_t IdNow(SYSTEMTIME& now)
{
    GetLocalTime(&now);
    uint64_t id = now.wYear;
    for (uint64_t part : {now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond})
        id = id * 100 + part;
    return id * 1000 + now.wMilliseconds;
}

KelText IdText(uint64_t id)
{
    char16_t digits[kIdDigits];
    for (int32_t i = kIdDigits - 1; i >= 0; --i, id /= 10)
        digits[i] = char16_t(u'0' + id % 10);
    return KelText(digits, kIdDigits);
}

bool ParseId(const KelText& text, uint64_t& id)
{
    if (text.Length() != kIdDigits)
        return false;
    id = 0;
    for (char16_t unit : text.View())
    {
        if (unit < u'0' || unit > u'9')
            return false;
        id = id * 10 + uint64_t(unit - u'0');
    }
    return true;
}

// One "Name: value" line of the entry's head.
bool TakeLine(const std::string& bytes, size_t& at, const char* name, KelText& value)
{
    const std::string prefix = std::string(name) + ": ";
    const size_t end = bytes.find('\n', at);
    if (end == std::string::npos || bytes.compare(at, prefix.size(), prefix) != 0)
        return false;
    value = KelText::FromUtf8(
        std::string_view(bytes).substr(at + prefix.size(), end - at - prefix.size()));
    at = end + 1;
    return true;
}

// "Name: <count>\n" and that many bytes, then "\n".
bool TakeBlock(const std::string& bytes, size_t& at, const char* name, std::string& block)
{
    KelText count;
    if (!TakeLine(bytes, at, name, count) || count.IsEmpty() || count.Length() > 10)
        return false;
    uint64_t size = 0;
    for (char16_t unit : count.View())
    {
        if (unit < u'0' || unit > u'9')
            return false;
        size = size * 10 + uint64_t(unit - u'0');
    }
    if (bytes.size() - at < size + 1 || bytes[at + size] != '\n')
        return false;
    block = bytes.substr(at, size);
    at += size + 1;
    return true;
}

// A value on one line of the entry's head.
std::string OneLine(const KelText& text)
{
    std::string line = text.ToUtf8();
    std::replace(line.begin(), line.end(), '\n', ' ');
    std::replace(line.begin(), line.end(), '\r', ' ');
    return line;
}

bool SameFolder(const KelText& left, const KelText& right)
{
    const KelText a = NormaliseFolder(left), b = NormaliseFolder(right);
    return CompareStringOrdinal(AsWide(a), a.Length(), AsWide(b), b.Length(), TRUE) == CSTR_EQUAL;
}
} // namespace

void ConfigHistory::SetRoot(const KelText& folder)
{
    Root() = folder.IsEmpty() ? KelText() : NormaliseFolder(folder);
}

ConfigHistory::ConfigHistory(AppEntry& app, const KelText& product)
{
    KelText root = Root();
    if (root.IsEmpty())
    {
        const KelText local =
            app.LocalDataRoot().IsEmpty() ? KnownFolder(CSIDL_LOCAL_APPDATA) : app.LocalDataRoot();
        if (!local.IsEmpty())
            root = local + u"Orvantix/Brindlecove " + app.Release() + u"/EditKel/History/";
    }
    folder = root.IsEmpty() ? KelText() : root + product + u"/";
}

std::vector<uint64_t> ConfigHistory::Ids() const
{
    std::vector<uint64_t> ids;
    if (folder.IsEmpty())
        return ids;
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW(AsWide(WithBackslashes(folder) + u"*" + kExtension), &found);
    if (search == INVALID_HANDLE_VALUE)
        return ids;
    do
    {
        const KelText name = FromWide(found.cFileName);
        uint64_t id = 0;
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) &&
            name.Length() == kIdDigits + KelText::Measure(kExtension) &&
            ParseId(name.Sub(1, kIdDigits), id))
            ids.push_back(id);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(ids.begin(), ids.end());
    return ids;
}

std::string ConfigHistory::Serialise(const HistoryEntry& entry)
{
    std::string bytes = kHeader;
    bytes += "Time: " + OneLine(entry.time) + "\n";
    bytes += "User: " + OneLine(entry.user) + "\n";
    bytes += "Folder: " + OneLine(entry.folder) + "\n";
    bytes += "Action: " + OneLine(entry.action) + "\n";
    bytes += "Changes: " + std::to_string(entry.changes.size()) + "\n";
    for (const KelText& change : entry.changes)
        bytes += "Change: " + OneLine(change) + "\n";
    for (const auto& [name, state] : {std::pair{"Before", &entry.before}, {"After", &entry.after}})
    {
        const std::string block = state->ToBytes();
        bytes += std::string(name) + ": " + std::to_string(block.size()) + "\n" + block + "\n";
    }
    return bytes;
}

bool ConfigHistory::Parse(const std::string& bytes, HistoryEntry& entry)
{
    size_t at = sizeof(kHeader) - 1;
    KelText count;
    if (bytes.compare(0, at, kHeader) != 0 || !TakeLine(bytes, at, "Time", entry.time) ||
        !TakeLine(bytes, at, "User", entry.user) || !TakeLine(bytes, at, "Folder", entry.folder) ||
        !TakeLine(bytes, at, "Action", entry.action) || !TakeLine(bytes, at, "Changes", count))
        return false;
    const int32_t changes = count.IntValue();
    if (changes < 0 || size_t(changes) > bytes.size())
        return false;
    entry.changes.assign(size_t(changes), KelText());
    for (KelText& change : entry.changes)
        if (!TakeLine(bytes, at, "Change", change))
            return false;
    std::string before, after;
    return TakeBlock(bytes, at, "Before", before) && TakeBlock(bytes, at, "After", after) &&
           at == bytes.size() && entry.before.FromBytes(before) && entry.after.FromBytes(after);
}

bool ConfigHistory::Add(HistoryEntry& entry)
{
    if (folder.IsEmpty() || !CreateFolderPath(folder))
        return false;
    SYSTEMTIME now;
    uint64_t id = IdNow(now);
    entry.time = KelText::Formatted(u"%04i-%02i-%02i %02i:%02i:%02i", int32_t(now.wYear),
                                    int32_t(now.wMonth), int32_t(now.wDay), int32_t(now.wHour),
                                    int32_t(now.wMinute), int32_t(now.wSecond));
    entry.user = WindowsUser();
    // The newest entry always has the largest number, even when the clock
    // was set back or two saves fall in one millisecond; two programs that
    // record at once take turns, so neither takes the other's number.
    const FileLock turn = GetFileSystem().Lock(folder + u"entries");
    std::vector<uint64_t> ids = Ids();
    if (!ids.empty() && id <= ids.back())
        id = ids.back() + 1;
    entry.id = IdText(id);
    const std::string bytes = Serialise(entry);
    if (!GetFileSystem().WriteBytes(folder + entry.id + kExtension, bytes.data(), bytes.size()))
        return false;
    ids.push_back(id);
    for (size_t i = 0; i + kKept < ids.size(); ++i)
        GetFileSystem().Remove(folder + IdText(ids[i]) + kExtension);
    return true;
}

std::vector<HistoryEntry> ConfigHistory::Entries(std::vector<KelText>& damaged) const
{
    std::vector<HistoryEntry> entries;
    std::vector<uint64_t> ids = Ids();
    std::reverse(ids.begin(), ids.end());
    for (const uint64_t id : ids)
    {
        HistoryEntry entry;
        entry.id = IdText(id);
        std::string bytes;
        if (!GetFileSystem().ReadBytes(folder + entry.id + kExtension, bytes) ||
            !Parse(bytes, entry))
        {
            damaged.push_back(entry.id);
            continue;
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

SaveRecord::SaveRecord(AppEntry& app, const KelText& product, const KelText& folder,
                       const KelText& action)
    : history(app, product), store(std::make_unique<SettingsContext>())
{
    transfer = std::make_unique<SettingsTransfer>(app, *store, product, folder);
    entry.folder = NormaliseFolder(folder);
    entry.action = action;
    transfer->AddPlaces(entry.before);
    transfer->AddPlaces(entry.after);
    KelText unreadable;
    started = entry.before.Take(unreadable);
    if (started)
        valuesBefore = transfer->ReadView();
}

SaveRecord::~SaveRecord() = default;

SaveRecord::Outcome SaveRecord::Finish()
{
    KelText unreadable;
    if (!started)
        return Outcome::NotWritten;
    if (!entry.after.Take(unreadable))
        return Outcome::NotWritten;
    if (entry.after == entry.before)
        return Outcome::Unchanged;
    entry.changes = transfer->Changes(valuesBefore, transfer->ReadView());
    return history.Add(entry) ? Outcome::Recorded : Outcome::NotWritten;
}

KelText HistorySummary(const HistoryEntry& entry)
{
    KelText summary = entry.action + u": ";
    if (entry.changes.empty())
        return summary + TransferMessage(kTextCfgNoPageValueChanged);
    summary += entry.changes.front();
    if (entry.changes.size() > 1)
        summary += KelText::Formatted(TransferMessage(kTextCfgAndMore).c_str(),
                                      int32_t(entry.changes.size() - 1));
    return summary;
}

bool SameConfigurationFolder(const KelText& left, const KelText& right)
{
    return SameFolder(left, right);
}
