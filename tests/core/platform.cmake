# The file system's safe write and update locks, and the folder probes with
# their time limit: the same expectations natively and under Wine.
kel_add_test(core_platform
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/platform/SafeWriteTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/platform/FolderProbeTest.cpp
    LIBS kelsettings)
