#pragma once
#include "text/KelText.h"

// Access keys of labels and buttons. In a caption "&" marks the letter that
// Alt+letter reaches ("&Apply", "Log &in automatically"); "&&" stands for one
// "&" shown as it is.

// The caption as it reads where no key is shown (a list cell, a tool tip, a
// screen reader's announcement, a console message): marks removed, "&&"
// becomes "&".
KelText WithoutAccessKey(const KelText& caption);

// The access key of a caption, upper case for the letters a-z and the
// Latin-1 letters (so that keys compare without regard to case); 0 when the
// caption has none.
char16_t AccessKeyOf(const KelText& caption);
