// The process entry of kelcfg.exe, the console companion of EditKel.exe that
// exports and imports a product's settings.
#include <windows.h>

#include <vector>

#include "app/deploy/KelCfgCommand.h"
#include "platform/FolderProbes.h"
#include "text/WideText.h"

namespace
{
// Standard output and standard error: UTF-16 to a console window, UTF-8 to a
// file or a pipe.
class StandardStreams : public CfgConsole
{
public:
    void Out(const KelText& text) override { Write(STD_OUTPUT_HANDLE, text); }
    void Err(const KelText& line) override { Write(STD_ERROR_HANDLE, line + u"\r\n"); }

private:
    static void Write(DWORD which, const KelText& text)
    {
        HANDLE stream = GetStdHandle(which);
        if (stream == nullptr || stream == INVALID_HANDLE_VALUE || text.IsEmpty())
            return;
        DWORD mode = 0;
        DWORD written = 0;
        if (GetConsoleMode(stream, &mode))
        {
            WriteConsoleW(stream, AsWide(text), DWORD(text.Length()), &written, nullptr);
            return;
        }
        const std::string bytes = text.ToUtf8();
        WriteFile(stream, bytes.data(), DWORD(bytes.size()), &written, nullptr);
    }
};
} // namespace

int wmain(int argc, wchar_t** argv)
{
    SetConsoleOutputCP(CP_UTF8);
    std::vector<KelText> arguments;
    for (int i = 1; i < argc; ++i)
        arguments.push_back(FromWide(argv[i]));
    StandardStreams console;
    const int result = KelCfgMain(arguments, FromWide(GetCommandLineW()), console);
    FolderProbes::EndProgramWhenBusy(result);
    return result;
}
