// The process entry of EditKel.exe.
#include <windows.h>

#include "app/ProgramMain.h"
#include "framework/AppEntry.h"
#include "framework/SystemLibrary.h"
#include "text/WideText.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR commandLine, int showCommand)
{
    ToggleExceptionPolicy();

    AppEntry* app = new AppEntry(instance);
    SetApplication(app);
    // The command line arrives as UTF-16 already, so nothing is lost to the
    // ANSI code page on the way in.
    app->SetCommandLine(FromWide(commandLine));

    const int32_t result = ProgramMain(app, app->CommandLine(), showCommand);

    DestroyApplication();
    return result;
}
