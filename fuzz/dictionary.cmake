# The dictionary loader (text/Archive, text/TextHolder and the entry classes)
# fed with arbitrary files:
# - fuzz_dictionary_parse: the file read once, in one language or all.
# - fuzz_dictionary: the reading modes checked against each other, and a
#   loaded dictionary saved and read again.
# Run them with tools/run-fuzzers.sh; their corpus starts from the dictionary
# built from lang/ and a small one built from each language's first texts,
# each in both text formats, and they use the tokens of
# dictionary/dictionary.dict. Inputs stay within 8 KB: the shipped dictionary
# takes part with its header and first records, and the whole record set of
# the small ones fits.
set(KEL_DICTIONARY_FUZZ_DIR ${CMAKE_CURRENT_LIST_DIR}/dictionary)

kel_fuzz_target(fuzz_dictionary ${KEL_DICTIONARY_FUZZ_DIR}/LoadFuzzer.cpp
                DICT ${KEL_DICTIONARY_FUZZ_DIR}/dictionary.dict OPTIONS -max_len=8192)
kel_fuzz_target(fuzz_dictionary_parse ${KEL_DICTIONARY_FUZZ_DIR}/ParseFuzzer.cpp
                DICT ${KEL_DICTIONARY_FUZZ_DIR}/dictionary.dict OPTIONS -max_len=8192)

file(GLOB lang_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/lang/*.txt)

# Besides the shipped dictionary, small real dictionaries: every language's
# first texts only (lang-small/), a few hundred bytes to a few KB. Mutating a
# small file is many times faster than mutating the 80 KB one, and the loader
# meets the same records; the targets' -max_len (<target>.options) keeps the
# fuzzer's inputs near that size.
set(small_lang ${CMAKE_BINARY_DIR}/lang-small)
set(small_sources)
foreach(source IN LISTS lang_sources)
    get_filename_component(source_name ${source} NAME)
    add_custom_command(
        OUTPUT ${small_lang}/${source_name}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${small_lang}
        COMMAND sh -c "head -n 24 \"$0\" >\"$1\"" ${source} ${small_lang}/${source_name}
        DEPENDS ${source}
        VERBATIM)
    list(APPEND small_sources ${small_lang}/${source_name})
endforeach()

set(starting_files)
foreach(target IN ITEMS fuzz_dictionary fuzz_dictionary_parse)
    set(corpus ${CMAKE_BINARY_DIR}/corpus/${target})
    add_custom_command(
        OUTPUT ${corpus}/diction.ary ${corpus}/diction-narrow.ary ${corpus}/small.ary
               ${corpus}/small-narrow.ary
        COMMAND ${CMAKE_COMMAND} -E make_directory ${corpus}
        COMMAND dictool build ${PROJECT_SOURCE_DIR}/lang ${corpus}/diction.ary
        COMMAND dictool build ${PROJECT_SOURCE_DIR}/lang ${corpus}/diction-narrow.ary --narrow
        COMMAND dictool build ${small_lang} ${corpus}/small.ary
        COMMAND dictool build ${small_lang} ${corpus}/small-narrow.ary --narrow
        DEPENDS dictool ${lang_sources} ${small_sources}
        VERBATIM)
    list(APPEND starting_files ${corpus}/diction.ary ${corpus}/diction-narrow.ary
         ${corpus}/small.ary ${corpus}/small-narrow.ary)
endforeach()
add_custom_target(fuzz_dictionary_corpus ALL DEPENDS ${starting_files})
