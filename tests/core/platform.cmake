# The file system's safe write and update locks: the same expectations
# natively and under Wine.
kel_add_test(core_platform
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/platform/SafeWriteTest.cpp
    LIBS kelsettings)
