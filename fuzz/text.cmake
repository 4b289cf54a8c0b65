# The text library with fuzzer coverage and sanitizers, for every area's fuzz
# targets, and fuzz_format: the formatting engine driven with patterns and
# arguments made from the input bytes, into small buffers.
kel_fuzz_library(kelplatform)
kel_fuzz_library(keltext DEPENDS kelplatform_fuzz)

add_executable(fuzz_format ${CMAKE_CURRENT_LIST_DIR}/text/FormatFuzzer.cpp)
target_compile_options(fuzz_format PRIVATE -fsanitize=fuzzer,address,undefined
                                           -fno-sanitize-recover=all -fno-omit-frame-pointer)
target_link_options(fuzz_format PRIVATE -fsanitize=fuzzer,address,undefined)
target_link_libraries(fuzz_format PRIVATE keltext_fuzz)
kel_strict(fuzz_format)
