# The text library with fuzzer coverage and sanitizers, for every area's fuzz
# targets, and fuzz_format: the formatting engine driven with patterns and
# arguments made from the input bytes, into small buffers.
kel_fuzz_library(kelplatform)
kel_fuzz_library(keltext DEPENDS kelplatform_fuzz)

kel_fuzz_target(fuzz_format ${CMAKE_CURRENT_LIST_DIR}/text/FormatFuzzer.cpp)
