# Shared helpers of the in-process Windows tests: the recording stand-in for
# the user (message boxes, alert, folder browser, modal choices, key state).
# Test programs link kelwinsupport.
add_library(kelwinsupport STATIC ${CMAKE_CURRENT_LIST_DIR}/RecordingInteraction.cpp)
target_link_libraries(kelwinsupport PUBLIC kelframework)
kel_strict(kelwinsupport)
