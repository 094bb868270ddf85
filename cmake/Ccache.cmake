# Compiles through ccache where it is installed and nothing else was asked for.
find_program(QUORLAN_CCACHE ccache)
mark_as_advanced(QUORLAN_CCACHE)
if(QUORLAN_CCACHE AND PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QUORLAN_CCACHE})
endif()
