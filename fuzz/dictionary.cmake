# fuzz_dictionary: the dictionary loader (text/Archive, text/TextHolder and the
# entry classes) fed with arbitrary files. Run it with tools/run-fuzzers.sh; its
# corpus starts from the dictionary built from lang/, in both text formats.
set(KEL_DICTIONARY_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR}/dictionary)

function(kel_add_dictionary_fuzzer)
    add_executable(fuzz_dictionary ${KEL_DICTIONARY_FUZZ_DIR}/LoadFuzzer.cpp)
    target_compile_options(fuzz_dictionary PRIVATE -fsanitize=fuzzer,address,undefined
                                                   -fno-omit-frame-pointer)
    target_link_options(fuzz_dictionary PRIVATE -fsanitize=fuzzer,address,undefined)
    if(TARGET keltext_fuzz)
        target_link_libraries(fuzz_dictionary PRIVATE keltext_fuzz)
    else()
        # No instrumented copy of the text library: build its sources in here.
        file(GLOB text_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/text/*.cpp ${PROJECT_SOURCE_DIR}/platform/*.cpp)
        list(FILTER text_sources EXCLUDE REGEX "Win\\.cpp$")
        target_sources(fuzz_dictionary PRIVATE ${text_sources})
        target_include_directories(fuzz_dictionary PRIVATE ${PROJECT_SOURCE_DIR})
    endif()
    kel_strict(fuzz_dictionary)

    set(corpus ${CMAKE_BINARY_DIR}/corpus/fuzz_dictionary)
    file(GLOB lang_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/lang/*.txt)
    add_custom_command(
        OUTPUT ${corpus}/diction.ary ${corpus}/diction-narrow.ary
        COMMAND ${CMAKE_COMMAND} -E make_directory ${corpus}
        COMMAND dictool build ${PROJECT_SOURCE_DIR}/lang ${corpus}/diction.ary
        COMMAND dictool build ${PROJECT_SOURCE_DIR}/lang ${corpus}/diction-narrow.ary --narrow
        DEPENDS dictool ${lang_sources}
        VERBATIM)
    add_custom_target(fuzz_dictionary_corpus ALL
                      DEPENDS ${corpus}/diction.ary ${corpus}/diction-narrow.ary)
endfunction()

# Deferred to the end of the folder, so that a keltext_fuzz target added by a
# list included after this one is seen.
cmake_language(DEFER CALL kel_add_dictionary_fuzzer)
