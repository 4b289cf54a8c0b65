#include "app/pages/ProgramPathsReport.h"

#include "app/SettingsContext.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

PageReport SaveProgramPaths(SettingsContext& store)
{
    return store.Save() ? PageReport::Accepted() : ProgramPathsNotSaved();
}

PageReport ProgramPathsNotSaved()
{
    // The box must not go missing for want of a dictionary: it is the only
    // sign that nothing was written. The page stays where it is; the box says
    // what failed.
    return PageReport::Refused(
        DictTextOr(kTextProgramPathsNotSaved,
                   u"The program paths could not be written to the settings file."),
        DictTextOr(kTextSaveFailedCaption, u"Unable to Save Settings"), false, true);
}
