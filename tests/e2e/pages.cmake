# The configuration dialog's pages as a user works them in EditKel.exe: one
# scenario file per page under pages/, all in one program. Like e2e_editkel
# it resets the "Brindlecove 2023" branch, so the two never run together.
file(GLOB _kel_page_scenarios CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/pages/*.cpp)
if(_kel_page_scenarios)
    kel_add_test(e2e_pages
        SOURCES ${_kel_page_scenarios}
        LIBS uidriver
        TIMEOUT 600
        LABELS e2e
        LOCKS editkel-release-branch)
    add_dependencies(e2e_pages EditKel dictionary)
    target_compile_definitions(e2e_pages PRIVATE
        KEL_EDITKEL="$<TARGET_FILE:EditKel>"
        KEL_DEMO_DIR="${PROJECT_SOURCE_DIR}/samples/Demo"
        KEL_SCREENSHOT_DIR="${CMAKE_BINARY_DIR}/screenshots")
endif()
