# fuzz_settings: settings files of arbitrary bytes read into every kind of
# entry, written back and read again (settings/ through an in-memory file
# system). Run it with tools/run-fuzzers.sh.
function(kel_add_settings_fuzzer)
    file(GLOB settings_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/settings/*.cpp)
    add_executable(fuzz_settings ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/settings/SettingsFuzzer.cpp
                                 ${settings_sources})
    target_compile_options(fuzz_settings PRIVATE -fsanitize=fuzzer,address,undefined
                                                 -fno-omit-frame-pointer)
    target_link_options(fuzz_settings PRIVATE -fsanitize=fuzzer,address,undefined)
    target_include_directories(fuzz_settings PRIVATE ${PROJECT_SOURCE_DIR})
    if(TARGET keltext_fuzz)
        target_link_libraries(fuzz_settings PRIVATE keltext_fuzz)
    else()
        # No instrumented copy of the text library: build its sources in here.
        file(GLOB text_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/text/*.cpp ${PROJECT_SOURCE_DIR}/platform/*.cpp)
        list(FILTER text_sources EXCLUDE REGEX "Win\\.cpp$")
        target_sources(fuzz_settings PRIVATE ${text_sources})
    endif()
    kel_strict(fuzz_settings)
endfunction()

# Deferred to the end of the folder, so that a keltext_fuzz target declared by
# a list included after this one is seen.
cmake_language(DEFER CALL kel_add_settings_fuzzer)

# Start inputs: small files in the three encodings whose names match the entries.
file(COPY ${CMAKE_CURRENT_LIST_DIR}/settings/inputs/
     DESTINATION ${CMAKE_BINARY_DIR}/corpus/fuzz_settings)
