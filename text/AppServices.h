#pragma once

class KelText;

// What the portable layers need of the running application: error reports to
// the user, finding the program's own files, and the number conventions of the
// user's locale. The application object implements it and installs itself;
// tests install doubles. With none installed, errors go nowhere and the
// conventions are "," and ".".
class AppServices
{
public:
    virtual ~AppServices() = default;

    // Shows an error to the user: a message and the thing it concerns (a path,
    // a class name, ...).
    virtual void ReportError(const KelText& message, const KelText& context) = 0;

    // Finds a file that belongs to the program (by name, in the program's
    // folders). Answers true and the full path when found.
    virtual bool ResolveProgramFile(const KelText& name, KelText& fullPath);

    // The dictionary hands over its product notice (texts 324 and 323) after a load.
    virtual void SetDictionaryNotice(const KelText& notice);
};

// The installed services, or null.
AppServices* GetAppServices();
// Installs `services` (may be null) and answers the previous ones.
AppServices* SetAppServices(AppServices* services);

// Separator characters used when numbers are turned into text. The application
// sets them from the user's locale; converters that must not depend on the
// locale (settings files) switch the decimal mark to "." while they run.
struct TextConventions
{
    char16_t thousandsSeparator = u',';
    char16_t decimalMark = u'.';
};
TextConventions& GetTextConventions();

// Sets the decimal mark for the lifetime of the object and restores the
// previous one afterwards.
class DecimalMarkScope
{
public:
    explicit DecimalMarkScope(char16_t mark);
    ~DecimalMarkScope();
    DecimalMarkScope(const DecimalMarkScope&) = delete;
    DecimalMarkScope& operator=(const DecimalMarkScope&) = delete;

private:
    char16_t previous;
};
