#include "framework/SharedImageList.h"

#include "framework/AppEntry.h"
#include "framework/FrameworkResources.h"

namespace
{
// Destroys the list when the process ends.
struct SharedList
{
    HIMAGELIST list = nullptr;
    int32_t size = 16;
    bool made = false;
    ~SharedList()
    {
        if (list)
            ImageList_Destroy(list);
    }
};

SharedList& Shared()
{
    static SharedList shared;
    return shared;
}

int32_t ScreenDpi()
{
    HDC screen = GetDC(nullptr);
    int32_t dpi = screen ? GetDeviceCaps(screen, LOGPIXELSY) : 96;
    if (screen)
        ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : 96;
}

HBITMAP LoadStrip(int32_t resourceId)
{
    AppEntry* app = GetAppEntry();
    HINSTANCE candidates[] = {app ? app->ResourceInstance() : nullptr, GetModuleHandleW(nullptr)};
    for (HINSTANCE module : candidates)
    {
        if (!module)
            continue;
        auto* bitmap = static_cast<HBITMAP>(LoadImageW(module, MAKEINTRESOURCEW(resourceId),
                                                       IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
        if (bitmap)
            return bitmap;
    }
    return nullptr;
}
} // namespace

int32_t ImageSizeForDpi(int32_t dpi)
{
    if (dpi <= 120)
        return 16;
    if (dpi <= 168)
        return 24;
    return 32;
}

HIMAGELIST SharedImageList()
{
    SharedList& shared = Shared();
    if (shared.made)
        return shared.list;
    shared.made = true;

    shared.size = ImageSizeForDpi(ScreenDpi());
    int32_t resourceId = shared.size == 32   ? kImageStrip32
                         : shared.size == 24 ? kImageStrip24
                                             : kImageStrip16;
    HBITMAP strip = LoadStrip(resourceId);
    if (!strip)
        return nullptr;
    BITMAP info = {};
    GetObjectW(strip, sizeof(info), &info);
    int32_t count = info.bmHeight > 0 ? info.bmWidth / info.bmHeight : 0;
    shared.list = ImageList_Create(shared.size, shared.size, ILC_COLOR32 | ILC_MASK, count, 4);
    if (shared.list)
        ImageList_AddMasked(shared.list, strip, kImageMaskColour);
    DeleteObject(strip);
    return shared.list;
}

int32_t SharedImageSize()
{
    SharedImageList();
    return Shared().size;
}
