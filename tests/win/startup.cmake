# Start-up in-process under Wine: product table, the program-paths store,
# locating the configuration (with scripted keys and picker answers), the
# configuration picker's Browse button and OK, the
# process entry's guard.
kel_add_test(win_startup
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/startup/StoreTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/startup/LocateTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/startup/EntryTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/startup/PickerTest.cpp
    LIBS kelwinsupport kelapp
    TIMEOUT 120)
kel_app_resources(win_startup)
