# fuzz_settings: settings files of arbitrary bytes read into every kind of
# entry, written back and read again (settings/ through an in-memory file
# system). Run it with tools/run-fuzzers.sh.
file(GLOB settings_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/settings/*.cpp)
kel_fuzz_target(fuzz_settings ${CMAKE_CURRENT_LIST_DIR}/settings/SettingsFuzzer.cpp
                              ${settings_sources})

# Start inputs: small files in the three encodings whose names match the entries.
file(COPY ${CMAKE_CURRENT_LIST_DIR}/settings/inputs/
     DESTINATION ${CMAKE_BINARY_DIR}/corpus/fuzz_settings)
