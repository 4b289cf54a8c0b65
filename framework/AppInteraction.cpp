#include "framework/AppInteraction.h"

#include <shobjidl.h>

#include "framework/AppEntry.h"
#include "framework/CheckMessageBox.h"
#include "framework/Folders.h"
#include "framework/SystemLibrary.h"
#include "text/WideText.h"

int32_t MessageBoxButtons(uint32_t style, int32_t (&ids)[3])
{
    auto set = [&ids](std::initializer_list<int32_t> list)
    {
        int32_t count = 0;
        for (int32_t id : list)
            ids[count++] = id;
        return count;
    };
    switch (style & MB_TYPEMASK)
    {
    case MB_OKCANCEL:
        return set({IDOK, IDCANCEL});
    case MB_ABORTRETRYIGNORE:
        return set({IDABORT, IDRETRY, IDIGNORE});
    case MB_YESNOCANCEL:
        return set({IDYES, IDNO, IDCANCEL});
    case MB_YESNO:
        return set({IDYES, IDNO});
    case MB_RETRYCANCEL:
        return set({IDRETRY, IDCANCEL});
    case MB_CANCELTRYCONTINUE:
        return set({IDCANCEL, IDTRYAGAIN, IDCONTINUE});
    default:
        return set({IDOK});
    }
}

int32_t MessageBoxDefaultButton(uint32_t style)
{
    int32_t ids[3];
    int32_t count = MessageBoxButtons(style, ids);
    int32_t index = int32_t((style & MB_DEFMASK) >> 8);
    return index < count ? ids[index] : ids[0];
}

int32_t MessageBoxEscapeButton(uint32_t style)
{
    int32_t ids[3];
    int32_t count = MessageBoxButtons(style, ids);
    for (int32_t i = 0; i < count; ++i)
        if (ids[i] == IDCANCEL)
            return IDCANCEL;
    return count == 1 && ids[0] == IDOK ? IDOK : 0;
}

int32_t SystemInteraction::ShowMessageBox(HWND owner, const KelText& text, const KelText& caption,
                                          uint32_t style, uint32_t switchCode,
                                          const KelText& checkLabel, bool& dontShowAgain)
{
    dontShowAgain = false;
    if (switchCode == 0)
        return MessageBoxW(owner, AsWide(text), AsWide(caption), style);
    return ShowCheckMessageBox(owner, text, caption, style, checkLabel, dontShowAgain);
}

void SystemInteraction::Alert(HWND owner, uint32_t beepType)
{
    HWND top = owner ? GetAncestor(owner, GA_ROOT) : nullptr;
    if (top)
    {
        // Each call inverts the caption: two calls flash it once and leave it
        // as it was.
        FlashWindow(top, TRUE);
        Sleep(500);
        FlashWindow(top, TRUE);
    }
    MessageBeep(beepType);
}

bool SystemInteraction::BrowseForFolder(HWND owner, const KelText& title,
                                        const KelText& startFolder, KelText& chosen)
{
    // COM and its library are taken up with the first folder browser.
    AppEntry* app = GetAppEntry();
    if (!(app ? app->EnsureCom() : EnterComOnThisThread()))
        return false;
    using CreateProc = HRESULT(WINAPI*)(REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID*);
    using FreeProc = void(WINAPI*)(LPVOID);
    auto create = ComEntry<CreateProc>("CoCreateInstance");
    auto freeMemory = ComEntry<FreeProc>("CoTaskMemFree");
    IFileOpenDialog* dialog = nullptr;
    if (!create || !freeMemory ||
        FAILED(create(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOpenDialog,
                      reinterpret_cast<void**>(&dialog))))
        return false;

    FILEOPENDIALOGOPTIONS options = 0;
    dialog->GetOptions(&options);
    dialog->SetOptions(options | FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST);
    if (!title.IsEmpty())
        dialog->SetTitle(AsWide(title));
    if (!startFolder.IsEmpty())
    {
        IShellItem* start = nullptr;
        KelText path = WithBackslashes(startFolder);
        if (SUCCEEDED(SHCreateItemFromParsingName(AsWide(path), nullptr, IID_IShellItem,
                                                  reinterpret_cast<void**>(&start))))
        {
            dialog->SetFolder(start);
            start->Release();
        }
    }

    bool picked = false;
    IShellItem* result = nullptr;
    if (SUCCEEDED(dialog->Show(owner)) && SUCCEEDED(dialog->GetResult(&result)))
    {
        PWSTR path = nullptr;
        if (SUCCEEDED(result->GetDisplayName(SIGDN_FILESYSPATH, &path)) && path)
        {
            chosen = NormaliseFolder(FromWide(path));
            picked = true;
            freeMemory(path);
        }
        result->Release();
    }
    dialog->Release();
    return picked;
}

bool SystemInteraction::IsKeyDown(int virtualKey)
{
    return (GetAsyncKeyState(virtualKey) & 0x8000) != 0 || (GetKeyState(virtualKey) & 0x8000) != 0;
}

int32_t SystemInteraction::ChooseModal(const KelText&, const std::function<int32_t()>& show)
{
    return show ? show() : -1;
}
