# kelcfg.exe run as an administrator runs it: the exit codes, a wrong command
# line, an export of the demo configuration, an import that is refused and one
# that is applied, checked in the registry and the settings file.
kel_add_editkel_scenarios(e2e_kelcfg ${CMAKE_CURRENT_LIST_DIR}/kelcfg/KelCfgScenarios.cpp)
add_dependencies(e2e_kelcfg kelcfg)
target_compile_definitions(e2e_kelcfg PRIVATE KEL_KELCFG="$<TARGET_FILE:kelcfg>")
