# Installs the build into an empty prefix, and sees that all public headers arrived and no others.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX} COMMAND_ERROR_IS_FATAL ANY)

set(source ${CMAKE_CURRENT_LIST_DIR}/../../include)
file(GLOB_RECURSE expected RELATIVE ${source} ${source}/*.h)
file(GLOB_RECURSE installed RELATIVE ${PREFIX}/include ${PREFIX}/include/*)
if(NOT expected STREQUAL installed)
    message(FATAL_ERROR "include/CMakeLists.txt does not list what include/ holds:\n${expected}\n${installed}")
endif()
