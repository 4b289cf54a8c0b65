# The dictionary loader (text/Archive, text/TextHolder and the entry classes)
# fed with arbitrary files:
# - fuzz_dictionary_parse: the file read once, in one language or all.
# - fuzz_dictionary: the reading modes checked against each other, and a
#   loaded dictionary saved and read again.
# Run them with tools/run-fuzzers.sh; their corpus starts from the dictionary
# built from lang/, in both text formats, and they use the tokens of
# dictionary/dictionary.dict.
set(KEL_DICTIONARY_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR}/dictionary)

kel_fuzz_target(fuzz_dictionary ${KEL_DICTIONARY_FUZZ_DIR}/LoadFuzzer.cpp
                DICT ${KEL_DICTIONARY_FUZZ_DIR}/dictionary.dict)
kel_fuzz_target(fuzz_dictionary_parse ${KEL_DICTIONARY_FUZZ_DIR}/ParseFuzzer.cpp
                DICT ${KEL_DICTIONARY_FUZZ_DIR}/dictionary.dict)

file(GLOB lang_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/lang/*.txt)
set(starting_files)
foreach(target IN ITEMS fuzz_dictionary fuzz_dictionary_parse)
    set(corpus ${CMAKE_BINARY_DIR}/corpus/${target})
    add_custom_command(
        OUTPUT ${corpus}/diction.ary ${corpus}/diction-narrow.ary
        COMMAND ${CMAKE_COMMAND} -E make_directory ${corpus}
        COMMAND dictool build ${PROJECT_SOURCE_DIR}/lang ${corpus}/diction.ary
        COMMAND dictool build ${PROJECT_SOURCE_DIR}/lang ${corpus}/diction-narrow.ary --narrow
        DEPENDS dictool ${lang_sources}
        VERBATIM)
    list(APPEND starting_files ${corpus}/diction.ary ${corpus}/diction-narrow.ary)
endforeach()
add_custom_target(fuzz_dictionary_corpus ALL DEPENDS ${starting_files})
