#pragma once
#include <windows.h>

// The toolkit's window base: wraps a window handle that it does not own (the
// window's lifetime is the system's). Windows get their behaviour by deriving from
// this class; a Window cannot be copied, because the system window refers to
// exactly one C++ object.
class Window
{
public:
    explicit Window(HWND handle = nullptr) : hwnd(handle) {}
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window() = default;

    // The wrapped window, null before creation or after it was given up.
    HWND Handle() const { return hwnd; }

protected:
    // Derived classes set the handle once the system window exists.
    void SetHandle(HWND handle) { hwnd = handle; }

private:
    HWND hwnd;
};
