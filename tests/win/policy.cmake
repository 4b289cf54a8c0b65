# The Group Policy templates the build makes (bin/PolicyDefinitions): well-
# formed XML (xmllint), every reference resolved in each language, and the
# policies checked against the pages' field tables.
if(NOT KEL_POLICY_DIR)
    return()
endif()
kel_add_test(win_policy_templates
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/policy/PolicyTemplatesTest.cpp
    LIBS kelapp
    TIMEOUT 120)
add_dependencies(win_policy_templates policy_templates)
target_compile_definitions(win_policy_templates PRIVATE KEL_POLICY_DIR="${KEL_POLICY_DIR}")

find_program(KEL_XMLLINT xmllint)
if(KEL_XMLLINT)
    add_test(NAME policy_templates_xml COMMAND ${KEL_XMLLINT} --noout ${KEL_POLICY_FILES})
endif()
