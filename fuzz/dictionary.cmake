# fuzz_dictionary: the dictionary loader (text/Archive, text/TextHolder and the
# entry classes) fed with arbitrary files. Run it with tools/run-fuzzers.sh; its
# corpus starts from the dictionary built from lang/, in both text formats.
set(KEL_DICTIONARY_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR}/dictionary)

kel_fuzz_target(fuzz_dictionary ${KEL_DICTIONARY_FUZZ_DIR}/LoadFuzzer.cpp)

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
