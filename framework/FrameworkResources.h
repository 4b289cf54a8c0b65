#pragma once
// Resource and control ids of the toolkit (framework/Framework.rc). The
// toolkit's private ids lie from 20000 on, clear of the application's
// templates (500 to 505), its controls (800 to 840) and the message-switch
// page (template 1054, controls 1335 and 1336), which is the toolkit's.

// Bitmap strips of the shared image list (see SharedImageList.h).
#define kImageStrip16 20001
#define kImageStrip24 20002
#define kImageStrip32 20003
// The mask colour of the strips: magenta pixels are transparent.
#define kImageMaskColour RGB(255, 0, 255)

// The frame of StandardPropertyDialog and its controls.
#define kPropertyFrameTemplate 20100
#define kPropertyTabsId 20101
#define kPropertyApplyId 20102
#define kPropertyExtraId 20103

// The message-switch page (EditMsgManager).
#define kMessageSwitchTemplate 1054
#define kMessageSwitchTreeId 1335
#define kMessageSwitchTextId 1336
