# EditKel.exe started as a user starts it, driven from this process through the
# UI driver: product selection, the configuration picker, the titled dialog,
# OK and Cancel (also sent by another program, as a screen reader sends them),
# exit codes, and what reached the registry.
kel_add_editkel_scenarios(e2e_editkel ${CMAKE_CURRENT_LIST_DIR}/editkel/EditKelScenarios.cpp)
