# Checks the language sources with dictool: complete in every language, and
# build + dump (wide and narrow archives) give back every lang/*.txt byte for
# byte, also with text numbers of a million and more. Finally a copy with a
# missing text must fail the check.
#   cmake -D DICTOOL=... -D EMULATOR=... -D LANG_DIR=... -D WORK_DIR=... -P RoundTrip.cmake

function(dictool expected)
    execute_process(COMMAND ${EMULATOR} ${DICTOOL} ${ARGN}
                    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT result EQUAL expected)
        message(FATAL_ERROR "dictool ${ARGN}: exit ${result}, expected ${expected}\n${out}${err}")
    endif()
    set(DICTOOL_OUTPUT "${out}${err}" PARENT_SCOPE)
endfunction()

function(compare_folders expected actual)
    file(GLOB wanted RELATIVE ${expected} ${expected}/*.txt)
    file(GLOB got RELATIVE ${actual} ${actual}/*)
    list(SORT wanted)
    list(SORT got)
    if(NOT wanted STREQUAL got)
        message(FATAL_ERROR "the dump holds ${got}, lang/ holds ${wanted}")
    endif()
    foreach(name IN LISTS wanted)
        execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${expected}/${name} ${actual}/${name}
                        RESULT_VARIABLE different)
        if(different)
            message(FATAL_ERROR "${name}: the dump differs from lang/${name}")
        endif()
    endforeach()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

dictool(0 check ${LANG_DIR})
message(STATUS "${DICTOOL_OUTPUT}")

foreach(variant wide narrow)
    set(extra)
    if(variant STREQUAL "narrow")
        set(extra --narrow)
    endif()
    dictool(0 build ${LANG_DIR} ${WORK_DIR}/${variant}.ary ${extra})
    dictool(0 check ${WORK_DIR}/${variant}.ary)
    dictool(0 dump ${WORK_DIR}/${variant}.ary ${WORK_DIR}/${variant})
    compare_folders(${LANG_DIR} ${WORK_DIR}/${variant})
endforeach()

# Text numbers of a million and more, up to the largest, build and dump like any other.
file(COPY ${LANG_DIR}/ DESTINATION ${WORK_DIR}/large FILES_MATCHING PATTERN "*.txt")
file(GLOB large_sources ${WORK_DIR}/large/*.txt)
foreach(source IN LISTS large_sources)
    file(APPEND ${source} "1000000\tMillion\n4294967295\tLast\n")
endforeach()
dictool(0 build ${WORK_DIR}/large ${WORK_DIR}/large.ary)
dictool(0 dump ${WORK_DIR}/large.ary ${WORK_DIR}/large-dump)
compare_folders(${WORK_DIR}/large ${WORK_DIR}/large-dump)

# A language that lacks a text is reported, with the number.
file(COPY ${LANG_DIR}/ DESTINATION ${WORK_DIR}/gap FILES_MATCHING PATTERN "*.txt")
file(READ ${WORK_DIR}/gap/Deutsch.txt german)
string(REGEX REPLACE "\n9705\t[^\n]*" "" german "${german}")
file(WRITE ${WORK_DIR}/gap/Deutsch.txt "${german}")
dictool(1 check ${WORK_DIR}/gap)
if(NOT DICTOOL_OUTPUT MATCHES "Deutsch.txt.*lacks 1 text: 9705")
    message(FATAL_ERROR "the missing text was not reported:\n${DICTOOL_OUTPUT}")
endif()
