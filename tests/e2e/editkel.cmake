# EditKel.exe started as a user starts it, driven from this process through the
# UI driver: product selection, the configuration picker, the titled dialog,
# OK and Cancel, exit codes, and what reached the registry. Screenshots of
# each scenario go to <build>/screenshots/.
kel_add_test(e2e_editkel
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/editkel/EditKelScenarios.cpp
    LIBS uidriver
    TIMEOUT 300
    LABELS e2e
    LOCKS editkel-release-branch)
add_dependencies(e2e_editkel EditKel dictionary)
target_compile_definitions(e2e_editkel PRIVATE
    KEL_EDITKEL="$<TARGET_FILE:EditKel>"
    KEL_DEMO_DIR="${PROJECT_SOURCE_DIR}/samples/Demo"
    KEL_SCREENSHOT_DIR="${CMAKE_BINARY_DIR}/screenshots")
