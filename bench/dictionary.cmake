# Dictionary load and lookup times (20,000 texts in three languages, and the
# shipped dictionary), loads beside reading the file's bytes, and their heap.
add_executable(bench_dictionary ${CMAKE_CURRENT_LIST_DIR}/dictionary/DictionaryBench.cpp
                                ${CMAKE_CURRENT_LIST_DIR}/support/HeapCounter.cpp)
target_link_libraries(bench_dictionary PRIVATE keltext benchmark::benchmark)
target_compile_definitions(bench_dictionary PRIVATE KEL_SHIPPED_DICTIONARY="${KEL_DICTIONARY}")
add_dependencies(bench_dictionary dictionary)
kel_strict(bench_dictionary)
