# Works in an installed tree and in a build tree alike: the targets file lies beside this one.
include(${CMAKE_CURRENT_LIST_DIR}/tallbookTargets.cmake)
