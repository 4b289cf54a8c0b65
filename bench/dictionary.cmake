# Dictionary load and lookup times (20,000 texts in three languages).
add_executable(bench_dictionary ${CMAKE_CURRENT_LIST_DIR}/dictionary/DictionaryBench.cpp)
target_link_libraries(bench_dictionary PRIVATE keltext benchmark::benchmark)
kel_strict(bench_dictionary)
