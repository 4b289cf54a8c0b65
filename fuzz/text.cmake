# The text library with fuzzer coverage and sanitizers, for every area's fuzz
# targets, and fuzz_format: the formatting engine driven with patterns and
# arguments made from the input bytes, into small buffers; it starts from the
# patterns of the dictionary sources (text/inputs/: lang/*.txt lines with "%").
kel_fuzz_library(kelplatform)
kel_fuzz_library(keltext DEPENDS kelplatform_fuzz)

kel_fuzz_target(fuzz_format ${CMAKE_CURRENT_LIST_DIR}/text/FormatFuzzer.cpp
                DICT ${CMAKE_CURRENT_LIST_DIR}/text/format.dict
                INPUTS ${CMAKE_CURRENT_LIST_DIR}/text/inputs)
