# The application object in-process under Wine: registry keys and paths,
# folders, message switches and the message box, the message loop.
if(NOT TARGET kelwinsupport)
    include(${CMAKE_CURRENT_LIST_DIR}/support/support.cmake)
endif()

kel_add_test(win_app
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/app/AppEntryTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/app/RegistryTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/app/SwitchesTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/app/MessageLoopTest.cpp
    LIBS kelwinsupport kelframework
    TIMEOUT 120)
