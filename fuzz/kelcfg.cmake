# fuzz_kelcfg: the reader of kelcfg's settings files (app/deploy/TransferFile,
# which with its texts needs nothing of Windows) fed with arbitrary files.
# Run it with tools/run-fuzzers.sh; its corpus starts from exports of the demo
# configuration, one per product (fuzz/kelcfg/inputs/).
set(KEL_KELCFG_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR}/kelcfg)

function(kel_add_kelcfg_fuzzer)
    add_executable(fuzz_kelcfg ${KEL_KELCFG_FUZZ_DIR}/TransferFileFuzzer.cpp
                               ${PROJECT_SOURCE_DIR}/app/deploy/TransferFile.cpp
                               ${PROJECT_SOURCE_DIR}/app/deploy/TransferTexts.cpp)
    target_compile_options(fuzz_kelcfg PRIVATE -fsanitize=fuzzer,address,undefined
                                               -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(fuzz_kelcfg PRIVATE -fsanitize=fuzzer,address,undefined)
    target_include_directories(fuzz_kelcfg PRIVATE ${PROJECT_SOURCE_DIR})
    if(TARGET keltext_fuzz)
        target_link_libraries(fuzz_kelcfg PRIVATE keltext_fuzz)
    else()
        # No instrumented copy of the text library: build its sources in here.
        file(GLOB text_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/text/*.cpp ${PROJECT_SOURCE_DIR}/platform/*.cpp)
        list(FILTER text_sources EXCLUDE REGEX "Win\\.cpp$")
        target_sources(fuzz_kelcfg PRIVATE ${text_sources})
    endif()
    kel_strict(fuzz_kelcfg)
endfunction()

# Deferred to the end of the folder, so that a keltext_fuzz target declared by
# a list included after this one is seen.
cmake_language(DEFER CALL kel_add_kelcfg_fuzzer)

file(COPY ${KEL_KELCFG_FUZZ_DIR}/inputs/ DESTINATION ${CMAKE_BINARY_DIR}/corpus/fuzz_kelcfg)
