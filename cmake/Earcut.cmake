# quorlan_earcut: the header-only polygon triangulation <mapbox/earcut.hpp>, in our own sources only.
#
# An installed header wins (a system path, a toolchain's prefix); next is the dependency cache of this checkout, which
# scripts/earcut fills; QUORLAN_FETCH_DEPENDENCIES allows a pinned download as the last resort.
option(QUORLAN_FETCH_DEPENDENCIES "Download dependencies that are not installed" OFF)

find_path(QUORLAN_EARCUT_INCLUDE_DIR mapbox/earcut.hpp PATHS ${PROJECT_SOURCE_DIR}/.deps/include
          DOC "The directory that holds mapbox/earcut.hpp")
mark_as_advanced(QUORLAN_EARCUT_INCLUDE_DIR)

if(QUORLAN_EARCUT_INCLUDE_DIR)
    set(earcut_include_dir ${QUORLAN_EARCUT_INCLUDE_DIR})
elseif(QUORLAN_FETCH_DEPENDENCIES)
    include(FetchContent)
    # The subdirectory does not exist: only the header is wanted, not the project around it.
    FetchContent_Declare(earcut GIT_REPOSITORY https://github.com/mapbox/earcut.hpp.git GIT_TAG v2.2.4
                         GIT_SHALLOW ON SOURCE_SUBDIR none)
    FetchContent_MakeAvailable(earcut)
    set(earcut_include_dir ${earcut_SOURCE_DIR}/include)
else()
    message(FATAL_ERROR "mapbox/earcut.hpp not found. Run scripts/earcut once in ${PROJECT_SOURCE_DIR}, or install "
                        "the header, or set QUORLAN_FETCH_DEPENDENCIES=ON.")
endif()

add_library(quorlan_earcut INTERFACE)
target_include_directories(quorlan_earcut SYSTEM INTERFACE ${earcut_include_dir})
