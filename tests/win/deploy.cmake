# kelcfg's export and import engine in-process under Wine: every product's
# settings exported and imported into a release of the test's own, the pages'
# rules on hand-written files, malformed files, a failure part-way through an
# import, dry runs, the command line with its configuration search, the
# history of saves (the editor's OK, imports, undo), and the configuration
# check.
if(NOT TARGET kelwinsupport)
    include(${CMAKE_CURRENT_LIST_DIR}/support/support.cmake)
endif()
file(GLOB _kel_deploy_tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/deploy/*.cpp)
kel_add_test(win_deploy
    SOURCES ${_kel_deploy_tests}
    LIBS kelwinsupport kelapp
    TIMEOUT 300)
# The editor's dialog (its templates and pages) for the history of its saves.
kel_app_resources(win_deploy)
# The configuration check reads a whole dictionary.
add_dependencies(win_deploy dictionary)
target_compile_definitions(win_deploy PRIVATE KEL_DICTIONARY="${KEL_DICTIONARY}")
