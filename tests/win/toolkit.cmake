# The window toolkit in-process under Wine: property dialog and pages, bound
# controls, layout, window placement and the message-switch page.
if(NOT TARGET kelwinsupport)
    include(${CMAKE_CURRENT_LIST_DIR}/support/support.cmake)
endif()

kel_add_test(win_toolkit
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/toolkit/PropertyDialogTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/toolkit/MessageSwitchPageTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/toolkit/BoundControlsTest.cpp
            ${CMAKE_CURRENT_LIST_DIR}/toolkit/ToolkitTest.rc
    LIBS kelwinsupport kelframework
    TIMEOUT 180)
kel_framework_resources(win_toolkit)
