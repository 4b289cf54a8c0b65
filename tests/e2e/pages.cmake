# The configuration dialog's pages as a user works them in EditKel.exe: one
# scenario file per page under pages/, all in one program.
file(GLOB _kel_page_scenarios CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/pages/*.cpp)
if(_kel_page_scenarios)
    kel_add_editkel_scenarios(e2e_pages ${_kel_page_scenarios})
endif()
