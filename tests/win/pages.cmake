# The configuration dialog's pages in-process under Wine: each page built in a
# real dialog, driven with messages, applied, and the registry and settings
# file checked; and their window-free value classes. One test file per page
# under pages/, all in one program.
if(NOT TARGET kelwinsupport)
    include(${CMAKE_CURRENT_LIST_DIR}/support/support.cmake)
endif()
file(GLOB _kel_page_tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/pages/*.cpp)
if(_kel_page_tests)
    kel_add_test(win_pages
        SOURCES ${_kel_page_tests}
        LIBS kelwinsupport kelapp
        TIMEOUT 300)
    kel_app_resources(win_pages)
endif()
