#include "text/AppServices.h"

#include "text/KelText.h"

namespace
{
AppServices* installedServices = nullptr;
}

bool AppServices::ResolveProgramFile(const KelText&, KelText&)
{
    return false;
}

void AppServices::SetDictionaryNotice(const KelText&) {}

AppServices* GetAppServices()
{
    return installedServices;
}

AppServices* SetAppServices(AppServices* services)
{
    AppServices* previous = installedServices;
    installedServices = services;
    return previous;
}

TextConventions& GetTextConventions()
{
    static TextConventions conventions;
    return conventions;
}

DecimalMarkScope::DecimalMarkScope(char16_t mark) : previous(GetTextConventions().decimalMark)
{
    GetTextConventions().decimalMark = mark;
}

DecimalMarkScope::~DecimalMarkScope()
{
    GetTextConventions().decimalMark = previous;
}
