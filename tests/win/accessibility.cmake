# Keyboard access, screen-reader names and text that fits, for every window
# the editor shows (the picker, every page of every product, the link dialog)
# in every language of the dictionary built from lang/.
if(NOT TARGET kelwinsupport)
    include(${CMAKE_CURRENT_LIST_DIR}/support/support.cmake)
endif()
kel_add_test(win_accessibility
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/accessibility/AccessibilityTest.cpp
    LIBS kelwinsupport kelapp oleacc
    TIMEOUT 300)
kel_app_resources(win_accessibility)
add_dependencies(win_accessibility dictionary)
target_compile_definitions(win_accessibility PRIVATE KEL_DICTIONARY="${KEL_DICTIONARY}")
