# The settings files (settings/ through an in-memory file system):
# - fuzz_settings_parse: the input is a settings file, read as every kind of
#   entry reads it, in pieces and whole, its index checked against a scan.
# - fuzz_settings: a settings file read into every kind of entry, edited,
#   written back (sometimes with a failing write) and read again.
# Both start from real settings files (settings/inputs/, made by
# settings/make-inputs.sh) and use the tokens of settings/settings.dict.
kel_fuzz_library(kelsettings DEPENDS keltext_fuzz)
foreach(target IN ITEMS fuzz_settings fuzz_settings_parse)
    set(source ParseFuzzer.cpp)
    if(target STREQUAL fuzz_settings)
        set(source SettingsFuzzer.cpp)
    endif()
    kel_fuzz_target(${target} ${CMAKE_CURRENT_LIST_DIR}/settings/${source}
                    DICT ${CMAKE_CURRENT_LIST_DIR}/settings/settings.dict
                    INPUTS ${CMAKE_CURRENT_LIST_DIR}/settings/inputs)
    target_link_libraries(${target} PRIVATE kelsettings_fuzz)
endforeach()
