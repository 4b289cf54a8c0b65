#pragma once
#include <windows.h>

#include <commctrl.h>

#include <cstdint>

// The application's shared image list: small pictures that buttons and lists
// of every page refer to by index (10 delete, 12 browse or edit, 16 add,
// 19 move up, 21 move down, and more, see tools/images/make_images.py).
// It is made once per process from the bitmap strip whose size suits the
// screen's resolution (16, 24 or 32 pixels) and lives until the process ends.
HIMAGELIST SharedImageList();
// The shared images in the size for a resolution (a window's, after it moved
// to a monitor of another resolution); made on first use like the above.
HIMAGELIST SharedImageListForDpi(int32_t dpi);
// The edge of the shared images in pixels.
int32_t SharedImageSize();
// The strip size for a screen resolution in dots per inch: 16 up to 120 dpi
// (125 %), 24 up to 168 dpi (175 %), 32 above.
int32_t ImageSizeForDpi(int32_t dpi);
