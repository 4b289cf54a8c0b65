# The UI driver's own end-to-end test: it starts e2e_target.exe (support/) and
# works each kind of control through the driver, under Wine with the harness
# display. Screenshots go to <build>/screenshots/ (hence the lock, see
# CMakeLists.txt).
add_subdirectory(${CMAKE_CURRENT_LIST_DIR}/support ${CMAKE_CURRENT_BINARY_DIR}/support)

kel_add_test(e2e_uidriver
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/uidriver/UiDriverTest.cpp
    LIBS uidriver
    TIMEOUT 300
    LABELS e2e
    LOCKS screenshots)
add_dependencies(e2e_uidriver e2e_target)
target_compile_definitions(e2e_uidriver PRIVATE
    KEL_E2E_TARGET="$<TARGET_FILE:e2e_target>"
    KEL_SCREENSHOT_DIR="${CMAKE_BINARY_DIR}/screenshots")
target_include_directories(e2e_uidriver PRIVATE ${CMAKE_CURRENT_LIST_DIR}/support)
