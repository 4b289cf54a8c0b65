#include "framework/ProgramGuard.h"

#include <windows.h>

#include <exception>

#include "framework/AppInterface.h"
#include "text/WideText.h"

namespace
{
void ReportEscapedFailure(const char* what) noexcept
{
    try
    {
        const KelText detail = KelText::FromUtf8(what ? what : "unknown failure");
        const KelText message(u"An internal error occurred; the program has to end.");
        if (AppInterface* app = GetApplication())
        {
            app->DebugWarning(u"Program main", detail, 0);
            app->ReportError(message, detail);
        }
        else
            MessageBoxW(nullptr, AsWide(message + u"\n\n" + detail), L"Problem",
                        MB_OK | MB_ICONHAND);
    }
    catch (...) // NOLINT(bugprone-empty-catch): nothing is left to report with
    {
        // The report itself failed (out of memory): the program ends without it.
    }
}
} // namespace

int32_t RunGuarded(const std::function<int32_t()>& body) noexcept
{
    try
    {
        return body();
    }
    catch (const std::exception& failure)
    {
        ReportEscapedFailure(failure.what());
    }
    catch (...)
    {
        ReportEscapedFailure(nullptr);
    }
    return 0;
}
