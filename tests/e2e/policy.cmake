# The Group Policy templates against EditKel.exe: what a policy writes is what
# the page then shows.
if(NOT KEL_POLICY_DIR)
    return()
endif()
kel_add_editkel_scenarios(e2e_policy ${CMAKE_CURRENT_LIST_DIR}/policy/PolicyScenarios.cpp)
add_dependencies(e2e_policy policy_templates)
target_compile_definitions(e2e_policy PRIVATE KEL_POLICY_DIR="${KEL_POLICY_DIR}")
