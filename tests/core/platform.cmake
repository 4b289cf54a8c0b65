# The file system's safe write, update locks and held-back writes, and the
# folder probes with their time limit: the same expectations natively and
# under Wine.
kel_add_test(core_platform
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/platform/SafeWriteTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/platform/FolderProbeTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/platform/StagedFilesTest.cpp
    LIBS kelsettings)
