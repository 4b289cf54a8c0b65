# Several programs of ours changing one configuration at once: two kelcfg
# imports at the same time while another program reads the settings file,
# lines of other programs kept by the editor's OK, and a read-only settings
# file refused by kelcfg.
kel_add_editkel_scenarios(e2e_safety ${CMAKE_CURRENT_LIST_DIR}/safety/SafetyScenarios.cpp)
add_dependencies(e2e_safety kelcfg)
target_compile_definitions(e2e_safety PRIVATE KEL_KELCFG="$<TARGET_FILE:kelcfg>")
