# Start-up under Wine: MinimalDialog.exe (a program that shows one dialog),
# ManifestDialog.exe (the same with EditKel's manifest), EditKelLibraries.exe
# (that, after the library calls that EditKel's start-up makes),
# PickerControlsDialog.exe (the manifest's dialog with the picker's controls),
# PropertyDialog.exe (whose OK opens a property dialog of empty pages),
# PageControlsDialog.exe (the same with the first page's controls) and
# StartupBench.exe, which times EditKel.exe beside them. All are Windows
# programs, built here with MinGW-w64 when it is installed;
# bench/startup/run-startup.sh runs them in a Wine prefix of the harness.
find_program(KEL_MINGW_CXX NAMES x86_64-w64-mingw32-g++-posix x86_64-w64-mingw32-g++)
find_program(KEL_MINGW_WINDRES NAMES x86_64-w64-mingw32-windres)
if(KEL_MINGW_CXX AND KEL_MINGW_WINDRES)
    set(startup_dir ${CMAKE_CURRENT_BINARY_DIR}/startup)
    set(startup_source ${CMAKE_CURRENT_LIST_DIR}/startup)
    set(startup_flags -std=c++20 -O2 -Wall -Wextra -Werror -municode -static
                      -DUNICODE -D_UNICODE -I${PROJECT_SOURCE_DIR})
    set(manifest ${PROJECT_SOURCE_DIR}/framework/res/Framework.manifest)
    file(WRITE ${startup_dir}/Manifest.rc "1 24 \"${manifest}\"\n")
    add_custom_command(
        OUTPUT ${startup_dir}/Manifest.o
        COMMAND ${KEL_MINGW_WINDRES} ${startup_dir}/Manifest.rc -O coff -o ${startup_dir}/Manifest.o
        DEPENDS ${manifest}
        VERBATIM)

    set(startup_programs)
    # startup_program(<name> <source> [compiler arguments...])
    function(startup_program program source)
        add_custom_command(
            OUTPUT ${startup_dir}/${program}.exe
            COMMAND ${CMAKE_COMMAND} -E make_directory ${startup_dir}
            COMMAND ${KEL_MINGW_CXX} ${startup_flags} -o ${startup_dir}/${program}.exe
                    ${startup_source}/${source} ${ARGN}
            DEPENDS ${startup_source}/${source} ${startup_dir}/Manifest.o
                    ${PROJECT_SOURCE_DIR}/app/Version.h
            VERBATIM)
        set(startup_programs ${startup_programs} ${startup_dir}/${program}.exe PARENT_SCOPE)
    endfunction()
    startup_program(MinimalDialog MinimalDialog.cpp -mwindows)
    startup_program(ManifestDialog MinimalDialog.cpp -mwindows ${startup_dir}/Manifest.o)
    startup_program(EditKelLibraries MinimalDialog.cpp -mwindows -DKEL_EDITKEL_LIBRARIES
                    ${startup_dir}/Manifest.o -lcomctl32 -lshell32)
    startup_program(PickerControlsDialog MinimalDialog.cpp -mwindows -DKEL_PICKER_CONTROLS
                    ${startup_dir}/Manifest.o -lcomctl32)
    startup_program(PropertyDialog MinimalDialog.cpp -mwindows -DKEL_PROPERTY_DIALOG
                    ${startup_dir}/Manifest.o -lcomctl32 -lshell32)
    startup_program(PageControlsDialog MinimalDialog.cpp -mwindows -DKEL_PROPERTY_DIALOG
                    -DKEL_PAGE_CONTROLS ${startup_dir}/Manifest.o -lcomctl32 -lshell32)
    startup_program(StartupBench StartupBench.cpp)
    add_custom_target(startup_programs ALL DEPENDS ${startup_programs})
endif()
