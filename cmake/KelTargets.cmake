# Helpers shared by every folder of the project.

# Our own code compiles without warnings.
function(kel_strict target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()

# A static library of one layer. Sources whose name ends in Win.cpp are built
# only for Windows, those ending in Posix.cpp only natively.
function(kel_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;WINLIBS" ${ARGN})
    set(sources)
    foreach(src IN LISTS ARG_SOURCES)
        if(src MATCHES "Win\\.cpp$" AND NOT WIN32)
            continue()
        endif()
        if(src MATCHES "Posix\\.cpp$" AND WIN32)
            continue()
        endif()
        list(APPEND sources ${src})
    endforeach()
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_DEPENDS})
    if(WIN32 AND ARG_WINLIBS)
        target_link_libraries(${name} PUBLIC ${ARG_WINLIBS})
    endif()
    kel_strict(${name})
endfunction()

# A GoogleTest program registered with ctest. Windows builds run it under
# Wine through the harness (fixture "wine"). LOCKS names the shared things
# the program resets or writes (for example the "2023" registry branch that
# EditKel.exe itself uses); programs that name the same lock never run at
# the same time.
function(kel_add_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBS;LABELS;LOCKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest_main GTest::gmock)
    kel_strict(${name})
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT}
                                            WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    if(ARG_LABELS)
        set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
    endif()
    if(ARG_LOCKS)
        set_tests_properties(${name} PROPERTIES RESOURCE_LOCK "${ARG_LOCKS}")
    endif()
    if(WIN32)
        set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED wine)
    endif()
endfunction()

# Folders shared by several areas (tests/core, bench, fuzz, ...) keep one
# <area>.cmake file per area; this includes all of them.
macro(kel_include_area_lists)
    file(GLOB _kel_area_lists CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cmake)
    foreach(_kel_list IN LISTS _kel_area_lists)
        include(${_kel_list})
    endforeach()
endmacro()

# Every sub-folder that holds a CMakeLists.txt.
macro(kel_add_subfolders)
    file(GLOB _kel_children RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS
         ${CMAKE_CURRENT_SOURCE_DIR}/*/CMakeLists.txt)
    foreach(_kel_child IN LISTS _kel_children)
        get_filename_component(_kel_dir ${_kel_child} DIRECTORY)
        add_subdirectory(${_kel_dir})
    endforeach()
endmacro()

# The sources of a layer folder: every .cpp in it.
function(kel_folder_sources out)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    set(${out} ${sources} PARENT_SCOPE)
endfunction()
