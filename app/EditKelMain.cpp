// The process entry of EditKel.exe.
#include <windows.h>

#include "app/ProgramMain.h"
#include "platform/FolderProbes.h"
#include "text/WideText.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR commandLine, int showCommand)
{
    // The command line arrives as UTF-16 already, so nothing is lost to the
    // ANSI code page on the way in.
    const int result = RunEditKel(instance, FromWide(commandLine), showCommand);
    FolderProbes::EndProgramWhenBusy(result);
    return result;
}
