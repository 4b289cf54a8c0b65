#pragma once
#include "text/KelText.h"

// The value of a switch on a program's command line, such as "-app=" or "/l=":
// the rest of the first token that begins with `name` (ASCII letters in any
// case). Tokens are separated by blanks and tabs outside double quotes, and
// the quotes are dropped, so -app=Plotwise, "-app=Plotwise" and
// -app="Plotwise" all answer Plotwise, and /l="Deutsch (Schweiz)" answers
// Deutsch (Schweiz). A quoted program path is one token, so a switch-like
// piece inside it is not taken. Empty when no token begins with the switch.
KelText CommandLineSwitch(const KelText& commandLine, const char16_t* name);
