# Settings files: ReadAll and WriteAll beside inih's parse and a raw read, the
# writes that insert many lines, and the heap a document holds per line.
find_package(PkgConfig REQUIRED)
pkg_check_modules(INIH REQUIRED IMPORTED_TARGET inih)
add_executable(bench_settings ${CMAKE_CURRENT_LIST_DIR}/settings/SettingsBench.cpp
                              ${CMAKE_CURRENT_LIST_DIR}/support/HeapCounter.cpp)
target_link_libraries(bench_settings PRIVATE kelsettings benchmark::benchmark PkgConfig::INIH)
kel_strict(bench_settings)
