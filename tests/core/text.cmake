# Strings, code pages and formatting: the same expectations natively and under Wine.
kel_add_test(core_text
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/text/KelTextTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/text/EncodingTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/text/FormatTest.cpp
    LIBS keltext)
