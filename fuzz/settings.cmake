# The settings files (settings/ through an in-memory file system):
# - fuzz_settings_parse: the input is a settings file, read as every kind of
#   entry reads it (one input in eight also in pieces), its index checked
#   against a scan.
# - fuzz_settings: a settings file read into every kind of entry, edited,
#   written back (sometimes with a failing write) and read again.
# Both start from real settings files (settings/inputs/, made by
# settings/make-inputs.sh) and use the tokens of settings/settings.dict. The
# products' files are 0.3 to 2 KB in ANSI and UTF-8, so inputs stay within
# 2 KB: a UTF-16 copy cut there still starts with its mark and holds whole
# sections, and smaller inputs run faster.
kel_fuzz_library(kelsettings DEPENDS keltext_fuzz)
foreach(target IN ITEMS fuzz_settings fuzz_settings_parse)
    set(source ParseFuzzer.cpp)
    if(target STREQUAL fuzz_settings)
        set(source SettingsFuzzer.cpp)
    endif()
    kel_fuzz_target(${target} ${CMAKE_CURRENT_LIST_DIR}/settings/${source}
                    DICT ${CMAKE_CURRENT_LIST_DIR}/settings/settings.dict
                    INPUTS ${CMAKE_CURRENT_LIST_DIR}/settings/inputs
                    OPTIONS -max_len=2048)
    target_link_libraries(${target} PRIVATE kelsettings_fuzz)
endforeach()
