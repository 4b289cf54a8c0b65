#include "app/deploy/TransferTexts.h"

namespace
{
struct EnglishText
{
    int32_t number;
    const char16_t* text;
};

// The English wording of every text, as lang/English.txt has it.
const EnglishText englishTexts[] = {
    {9800,
     u"Usage:\n%s  kelcfg --help [<command>]   (also -h, /?)\n  kelcfg --version\n\nProducts: "
     u"Plotwise, Shopwise, Tallywise, Cutwise, CutwiseComponents, Ledgerline, Fieldpost.\n-config= "
     u"names the configuration folder or a registered configuration.\n/l=<language> chooses the "
     u"language of the messages.\nExit codes: 0 done, 1 the file has errors or the settings could "
     u"not be written, 2 the command line is wrong."},
    {9801, u"Unknown command \"%s\"."},
    {9802, u"Name the product with -app=<product>."},
    {9803, u"\"%s\" is not a product."},
    {9804, u"Unknown option \"%s\"."},
    {9805, u"The command %s needs a file."},
    {9806, u"Name one file only; \"%s\" is one too many."},
    {9807, u"--dry-run goes with the command import only."},
    {9808, u"No configuration of %s was found. Name its folder with -config=<folder>."},
    {9809, u"%s has several configurations; choose one with -config=<folder>:"},
    {9810,
     u"\"%s\" is neither a folder that holds the settings file %s nor a configuration of %s."},
    {9811, u"The file \"%s\" could not be read."},
    {9812, u"The file \"%s\" could not be written."},
    {9813, u"line %i: %s"},
    {9814, u"the line is neither a [Section], a \"Key = Value\" line nor a comment"},
    {9815, u"the value comes before the first [Section]"},
    {9816, u"%s has no section [%s]"},
    {9817, u"section [%s] has no key \"%s\""},
    {9818, u"\"%s\" must be one of %s"},
    {9819, u"\"%s\" is already given on line %i"},
    {9820, u"section [%s] is already given on line %i"},
    {9821, u"automatic login can be switched off here, never on"},
    {9822, u"only Cutwise can change \"%s\""},
    {9823, u"\"%s\" needs a folder"},
    {9824, u"remove the note \"%s\" from the value of \"%s\""},
    {9825, u"%s does not store \"%s\"; it is left as it is"},
    {9826, u"a web link is \"name=address\" with an address (no name for the default link)"},
    {9827, u"The file has errors; nothing was written."},
    {9828, u"No changes."},
    {9829, u"Values changed: %i."},
    {9830, u"Dry run: nothing was written."},
    {9831, u"The settings could not be written: %s"},
    {9832, u"Everything that had been written was put back as it was."},
    {9833, u"Putting back failed: %s"},
    {9834, u"%s was not stored as meant"},
    {9835, u"the text is not UTF-8"},
    {9836, u"The settings of %s were exported to \"%s\"."},
    {9837, u"Note: %s"},
    {9838, u"Nothing was written: \"%s\" could not be read first."},
    {9839, u"Values that an import would change: %i."},
    {9840, u"\"%s =\" without a value stands for no links at all; it cannot come with other links"},
    {9841, u"The settings file \"%s\" is read-only; nothing was changed."},
    {9842, u"The settings file \"%s\" is being saved by another program; nothing was changed. Try "
           u"again in a moment."},
    {9843, u"  kelcfg history -app=<product> [-config=<folder>]\n      lists the recorded saves, "
           u"newest first."},
    {9844, u"  kelcfg undo -app=<product> [-config=<folder>] [<entry>] [--force]\n      puts back "
           u"the settings as they were before the newest (or the named) save; --force: also when "
           u"the settings file was changed by a save that is not in the history."},
    {9847, u"  kelcfg export -app=<product> [-config=<folder>] [<file>]\n      writes the "
           u"product's settings to the file (to standard output without a file)."},
    {9848, u"  kelcfg import -app=<product> [-config=<folder>] <file> [--dry-run]\n      sets the "
           u"values that the file gives; --dry-run shows the changes and writes nothing."},
    {9849, u"  kelcfg diff -app=<product> [-config=<folder>] <file>\n      shows the changes that "
           u"an import would make."},
    {9890, u"No saves of %s are recorded."},
    {9891, u"The history entry %s is damaged and was skipped."},
    {9892, u" (and %i more)"},
    {9893, u"no value of the pages changed"},
    {9894, u"No recorded save \"%s\" of %s."},
    {9895, u"The settings file \"%s\" was changed by a save that is not in the history; nothing "
           u"was put back. Add --force to put the entry back anyway."},
    {9896, u"Warning: the history could not be written to \"%s\"; the settings were saved."},
    {9897, u"The settings as they were before save %s (%s) were put back."},
    {9898, u"--force goes with the command undo only."},
    {9899, u"The command %s takes no file; \"%s\" is one too many."},
    {9900, u"Nothing was put back: the settings are as they were before save %s."},
    {9910, u"  kelcfg check -app=<product> [-config=<folder>] [--format=json]\n      checks the "
           u"configuration: one line per problem; exit code 0 without problems, 1 with problems."},
    {9911, u"%s \"%s\": %s"},
    {9912, u"No problems were found in the configuration of %s in \"%s\"."},
    {9913, u"Problems found in the configuration of %s in \"%s\": %i."},
    {9914, u"the folder does not exist"},
    {9915, u"this is a file, not a folder"},
    {9916, u"this user cannot read the folder"},
    {9917, u"this user cannot write to the folder"},
    {9918, u"its drive or network share is not reachable"},
    {9919, u"not reachable (no answer in %i s)"},
    {9920, u"the folder does not hold the settings file %s"},
    {9921, u"the settings file does not exist"},
    {9922, u"the settings file is read-only; the programs cannot save their settings"},
    {9923, u"the settings file cannot be read"},
    {9924, u"the settings file is in an encoding the programs do not read (%s)"},
    {9925, u"the dictionary is missing; the editor runs with built-in English texts"},
    {9926, u"the dictionary is damaged; the editor runs with built-in English texts"},
    {9927, u"stored as %s where the programs expect %s; they read the default"},
    {9928, u"the web link has no address"},
    {9929, u"the address is not a URL (such as https://example.com/)"},
    {9930, u"UTF-16 without a byte-order mark"},
    {9931, u"UTF-8 without a byte-order mark"},
    {9932, u"UTF-16 big-endian"},
    {9933, u"UTF-32"},
    {9934, u"--format= goes with the command check only."},
    {9935, u"Unknown format \"%s\"; the one format is json."},
    {9936, u"Problem: %s"},
};
} // namespace

KelText TransferMessage(TransferText number)
{
    for (const EnglishText& english : englishTexts)
        if (english.number == number)
            return DictTextOr(number, english.text);
    return DictTextOr(number, u"");
}
