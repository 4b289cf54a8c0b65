#pragma once
// The sample page of the toolkit demo (ToolkitDemo.rc).
#define kSamplePage 30500
#define kSampleList 30501
#define kSampleUp 30502
#define kSampleAdd 30503
#define kSampleEdit 30504
#define kSampleDelete 30505
#define kSampleDown 30506
#define kSampleTips 30507
#define kSampleCache 30508
#define kSampleLanguage 30509
#define kSampleFolder 30510
#define kSampleBrowse 30511
#define kSampleUseFolder 30512
#define kSampleLanguageLabel 30513
