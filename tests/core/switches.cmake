# The message-switch list: the same expectations natively and under Wine.
kel_add_test(core_switches
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/switches/MessageSwitchesTest.cpp
    LIBS keltext)
