#pragma once
#include <windows.h>

#include <cstdint>
#include <vector>

#include "text/KelText.h"

// The name of a dialog template in the resources: a number (500, 1054, ...) or
// a text. A text of digits, with or without a leading "#", names the number.
class TemplateName
{
public:
    TemplateName() = default;
    TemplateName(int32_t number) : id(number) {}
    TemplateName(const char16_t* name);
    TemplateName(const KelText& name) : TemplateName(name.c_str()) {}

    bool IsEmpty() const { return id == 0 && text.IsEmpty(); }
    // The name as FindResourceW takes it.
    const wchar_t* ResourceName() const;
    int32_t Number() const { return id; }

private:
    int32_t id = 0;
    KelText text;
};

// A copy of a dialog template (DLGTEMPLATE or DLGTEMPLATEEX), editable before
// the dialog is created from it.
class DialogTemplate
{
public:
    // Loads the template from the application's resource instance, else from
    // the executable (the toolkit's own templates live there). False when
    // neither holds it or the data is not a dialog template.
    bool Load(const TemplateName& name);
    // Whether a template of that name exists (see Load).
    static bool Exists(const TemplateName& name);

    bool IsLoaded() const { return !data.empty(); }
    bool IsExtended() const;
    DWORD Style() const;
    DWORD ExStyle() const;
    void SetStyle(DWORD style);
    void SetExStyle(DWORD exStyle);
    // The template's size in dialog units.
    SIZE Size() const;
    // The module the template came from (dialogs are created with it).
    HINSTANCE Module() const { return module; }
    const DLGTEMPLATE* Data() const { return reinterpret_cast<const DLGTEMPLATE*>(data.data()); }

    // Turns a template into a child page: WS_CHILD and DS_CONTROL instead of
    // the styles of a top-level window, hidden, and no caption or frame.
    void MakeChild();

private:
    std::vector<DWORD> data; // DWORD-aligned, as the dialog functions require
    HINSTANCE module = nullptr;
};

// Whether a text is a dictionary reference: "^" followed by decimal digits
// and nothing else. Answers the number.
bool IsTextReference(const KelText& text, int32_t& number);
// The text of a reference, or the text itself when it is not one.
KelText ResolveTextReference(const KelText& text);
// Replaces every reference in the window's caption and in the texts of its
// direct children by the dictionary text of that number.
void TranslateReferences(HWND window);
