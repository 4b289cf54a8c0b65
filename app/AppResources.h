#pragma once
// Resource and control ids of EditKel.exe (app/EditKel.rc). The toolkit's own
// lie from 20000 on (framework/FrameworkResources.h); the option pages use the
// templates 500 to 505 and the controls 800 to 840.

#define kEditKelIcon 1

// The configuration picker.
#define kConfigPickerTemplate 600
#define kConfigPickerText 601
#define kConfigPickerList 602
#define kConfigPickerBrowse 603
