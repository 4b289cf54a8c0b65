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
# The same windows made on screens of 144 dpi from the start (a prefix of its
# own: see cmake/wine-run-at-dpi.sh), and moved from there to 96 dpi.
add_test(NAME win_accessibility_144dpi
         COMMAND ${PROJECT_SOURCE_DIR}/cmake/wine-run-at-dpi.sh ${KEL_WINE_DIR} 144
                 $<TARGET_FILE:win_accessibility> --gtest_brief=1
                 --gtest_filter=Accessibility.EveryWindow*)
set_tests_properties(win_accessibility_144dpi PROPERTIES TIMEOUT 300 FIXTURES_REQUIRED wine
                     WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
