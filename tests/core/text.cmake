# Strings, code pages and formatting: the same expectations natively and under Wine.
kel_add_test(core_text
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/text/SmokeTest.cpp
    LIBS keltext)
