# Settings files and their typed entries: the same expectations natively and under Wine.
kel_add_test(core_settings
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/settings/iniFileTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/settings/iniEntriesTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/settings/iniPropertyTest.cpp
    LIBS kelsettings)
