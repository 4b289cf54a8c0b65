// Screen captures saved as PNG through the Windows Imaging Component.
#include "tools/uidriver/UiDriver.h"

#include <objbase.h>
#include <wincodec.h>

#include <filesystem>
#include <thread>

namespace UiDriver
{

namespace
{

// Releases a COM interface pointer when it goes out of scope.
template <class T>
class ComPtr
{
public:
    ComPtr() = default;
    ~ComPtr()
    {
        if (pointer_)
            pointer_->Release();
    }
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;
    T** operator&() { return &pointer_; }
    T* operator->() const { return pointer_; }
    T* get() const { return pointer_; }

private:
    T* pointer_ = nullptr;
};

class ComScope
{
public:
    ComScope() : result_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ~ComScope()
    {
        if (SUCCEEDED(result_))
            CoUninitialize();
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

private:
    HRESULT result_;
};

void Check(HRESULT result, const wchar_t* step, const std::wstring& path)
{
    if (FAILED(result))
    {
        wchar_t code[16];
        wsprintfW(code, L"0x%08X", static_cast<unsigned>(result));
        throw Error(L"cannot save screenshot " + path + L": " + step + L" failed with " + code);
    }
}

// 32-bit pixels of a screen rectangle, top row first.
struct Capture
{
    int width = 0;
    int height = 0;
    std::vector<BYTE> pixels;
};

Capture CaptureScreen(RECT rect)
{
    Capture capture;
    capture.width = rect.right - rect.left;
    capture.height = rect.bottom - rect.top;
    if (capture.width <= 0 || capture.height <= 0)
        throw Error(L"nothing to capture: the rectangle is empty");
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = capture.width;
    info.bmiHeader.biHeight = -capture.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    bool copied = false;
    if (bitmap)
    {
        HGDIOBJ old = SelectObject(memory, bitmap);
        copied = BitBlt(memory, 0, 0, capture.width, capture.height, screen, rect.left, rect.top,
                        SRCCOPY | CAPTUREBLT) != FALSE;
        GdiFlush();
        SelectObject(memory, old);
        if (copied)
        {
            auto* begin = static_cast<BYTE*>(bits);
            capture.pixels.assign(begin, begin + size_t(capture.width) * capture.height * 4);
        }
        DeleteObject(bitmap);
    }
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    if (!copied)
        throw Error(L"cannot copy the screen (error " + std::to_wstring(GetLastError()) + L")");
    return capture;
}

void SavePng(Capture& capture, const std::wstring& path)
{
    ComScope com;
    ComPtr<IWICImagingFactory> factory;
    Check(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                           IID_IWICImagingFactory, reinterpret_cast<void**>(&factory)),
          L"creating the imaging factory", path);
    ComPtr<IWICBitmap> bitmap;
    UINT stride = static_cast<UINT>(capture.width) * 4;
    Check(factory->CreateBitmapFromMemory(
              static_cast<UINT>(capture.width), static_cast<UINT>(capture.height),
              GUID_WICPixelFormat32bppBGR, stride, static_cast<UINT>(capture.pixels.size()),
              capture.pixels.data(), &bitmap),
          L"wrapping the pixels", path);

    ComPtr<IWICStream> stream;
    Check(factory->CreateStream(&stream), L"creating the stream", path);
    Check(stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE), L"opening the file", path);
    ComPtr<IWICBitmapEncoder> encoder;
    Check(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, &encoder),
          L"creating the PNG encoder", path);
    Check(encoder->Initialize(stream.get(), WICBitmapEncoderNoCache), L"starting the encoder",
          path);
    ComPtr<IWICBitmapFrameEncode> frame;
    Check(encoder->CreateNewFrame(&frame, nullptr), L"creating the frame", path);
    Check(frame->Initialize(nullptr), L"starting the frame", path);
    Check(frame->SetSize(static_cast<UINT>(capture.width), static_cast<UINT>(capture.height)),
          L"sizing the frame", path);
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    Check(frame->SetPixelFormat(&format), L"choosing the pixel format", path);
    Check(frame->WriteSource(bitmap.get(), nullptr), L"writing the pixels", path);
    Check(frame->Commit(), L"finishing the frame", path);
    Check(encoder->Commit(), L"finishing the file", path);
}

} // namespace

void SaveScreenshot(const std::wstring& path, HWND window)
{
    RECT rect{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    if (window)
    {
        if (!IsWindow(window))
            throw Error(L"cannot capture " + path + L": the window no longer exists");
        // Other tests may share the display and open windows of their own at
        // any moment: keep the window above them (topmost) while its
        // rectangle is copied, and let it paint first.
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
        RedrawWindow(window, nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
        Send(window, WM_NULL);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        RECT windowRect{};
        GetWindowRect(window, &windowRect);
        IntersectRect(&rect, &rect, &windowRect);
    }
    std::error_code ignored;
    std::filesystem::path file(path);
    if (file.has_parent_path())
        std::filesystem::create_directories(file.parent_path(), ignored);
    Capture capture = CaptureScreen(rect);
    if (window)
        SetWindowPos(window, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    try
    {
        SavePng(capture, path);
    }
    catch (const Error&)
    {
        DeleteFileW(path.c_str()); // no half-written picture left behind
        throw;
    }
}

} // namespace UiDriver
