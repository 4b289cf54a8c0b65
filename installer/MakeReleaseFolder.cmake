# Fills the release folder: the MSI and the zip of this version, and
# SHA256SUMS with a line "<sum>  <file>" for each (what `sha256sum -c` reads).
# Packages of other versions left from earlier builds are removed, so the
# folder always holds exactly one release.
#   cmake -DKEL_DIST_DIR=<folder> -DKEL_PACKAGES=<file>|<file> -P MakeReleaseFolder.cmake
cmake_minimum_required(VERSION 3.25)

if(NOT KEL_DIST_DIR OR NOT KEL_PACKAGES)
    message(FATAL_ERROR "MakeReleaseFolder.cmake: KEL_DIST_DIR and KEL_PACKAGES must be set")
endif()
string(REPLACE "|" ";" packages "${KEL_PACKAGES}")

file(MAKE_DIRECTORY ${KEL_DIST_DIR})
file(GLOB stale ${KEL_DIST_DIR}/EditKel-*-x64.msi ${KEL_DIST_DIR}/EditKel-*-x64.zip)
set(sums "")
foreach(package IN LISTS packages)
    cmake_path(GET package FILENAME name)
    list(REMOVE_ITEM stale ${KEL_DIST_DIR}/${name})
    file(COPY_FILE ${package} ${KEL_DIST_DIR}/${name})
    file(SHA256 ${KEL_DIST_DIR}/${name} sum)
    string(APPEND sums "${sum}  ${name}\n")
endforeach()
if(stale)
    file(REMOVE ${stale})
endif()
file(WRITE ${KEL_DIST_DIR}/SHA256SUMS "${sums}")
message(STATUS "Release folder ${KEL_DIST_DIR}:\n${sums}")
