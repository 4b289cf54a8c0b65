# The file system's safe write on real files under Wine: attributes kept by a
# replacement, a target held open written in place, read-only files refused,
# the update lock, and a crash at any step of a kelcfg import.
kel_add_test(win_platform
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/platform/RealFilesTest.cpp
    LIBS kelplatform)
