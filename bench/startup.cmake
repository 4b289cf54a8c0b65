# Start-up under Wine: MinimalDialog.exe (a program that shows one dialog)
# and StartupBench.exe, which times EditKel.exe to its first window beside it.
# Both are Windows programs, built here with MinGW-w64 when it is installed;
# bench/startup/run-startup.sh runs them in a Wine prefix of the harness.
find_program(KEL_MINGW_CXX NAMES x86_64-w64-mingw32-g++-posix x86_64-w64-mingw32-g++)
if(KEL_MINGW_CXX)
    set(startup_dir ${CMAKE_CURRENT_BINARY_DIR}/startup)
    set(startup_flags -std=c++20 -O2 -Wall -Wextra -Werror -municode -static
                      -DUNICODE -D_UNICODE -I${PROJECT_SOURCE_DIR})
    set(startup_programs)
    foreach(program MinimalDialog StartupBench)
        set(subsystem)
        if(program STREQUAL "MinimalDialog")
            set(subsystem -mwindows)
        endif()
        add_custom_command(
            OUTPUT ${startup_dir}/${program}.exe
            COMMAND ${CMAKE_COMMAND} -E make_directory ${startup_dir}
            COMMAND ${KEL_MINGW_CXX} ${startup_flags} ${subsystem} -o ${startup_dir}/${program}.exe
                    ${CMAKE_CURRENT_LIST_DIR}/startup/${program}.cpp
            DEPENDS ${CMAKE_CURRENT_LIST_DIR}/startup/${program}.cpp ${PROJECT_SOURCE_DIR}/app/Version.h
            VERBATIM)
        list(APPEND startup_programs ${startup_dir}/${program}.exe)
    endforeach()
    add_custom_target(startup_programs ALL DEPENDS ${startup_programs})
endif()
