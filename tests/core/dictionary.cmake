# The dictionary and its archive: the same expectations natively and under Wine.
kel_add_test(core_dictionary
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/dictionary/TextHolderTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/dictionary/DamagedFileTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/dictionary/ArchiveReadingTest.cpp
    LIBS keltext)

# The language sources: complete in every language, and a build/dump round trip
# that gives back lang/*.txt byte for byte. dictool runs under the emulator
# (Wine) in the Windows build.
add_test(NAME dictionary_sources
    COMMAND ${CMAKE_COMMAND}
            -D "DICTOOL=$<TARGET_FILE:dictool>"
            -D "EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}"
            -D "LANG_DIR=${PROJECT_SOURCE_DIR}/lang"
            -D "WORK_DIR=${CMAKE_CURRENT_BINARY_DIR}/dictionary_sources"
            -P ${CMAKE_CURRENT_LIST_DIR}/dictionary/RoundTrip.cmake)
set_tests_properties(dictionary_sources PROPERTIES TIMEOUT 120)
if(WIN32)
    set_tests_properties(dictionary_sources PROPERTIES FIXTURES_REQUIRED wine)
endif()
