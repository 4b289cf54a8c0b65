#pragma once
#include <concepts>
#include <string>
#include <string_view>

// A file or folder path as the platform layer takes it: a view of a
// zero-terminated UTF-16 text that the caller keeps alive for the call. Any
// text type with a c_str() of UTF-16 units converts to it, so callers pass
// their own strings as they are. A null text is the empty path.
class PathRef
{
public:
    PathRef(const char16_t* text) : text(text ? text : u"") {}
    template <typename Text>
    requires requires(const Text& t)
    {
        {
            t.c_str()
            } -> std::convertible_to<const char16_t*>;
    }
    PathRef(const Text& text) : PathRef(static_cast<const char16_t*>(text.c_str())) {}

    const char16_t* c_str() const { return text; }
    std::u16string_view View() const { return std::u16string_view(text); }
    bool IsEmpty() const { return *text == 0; }
    // The path as UTF-8 (for the portable implementation's system calls).
    std::string ToUtf8() const;

private:
    const char16_t* text;
};
