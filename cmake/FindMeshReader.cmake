# Finds the library that reads meshes (Debian: libassimp-dev). Its own CMake package names targets that may not be there.
#
#   MeshReader_FOUND
#   MeshReader::MeshReader   the library and its headers
find_path(MeshReader_INCLUDE_DIR assimp/Importer.hpp)
find_library(MeshReader_LIBRARY assimp)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(MeshReader REQUIRED_VARS MeshReader_LIBRARY MeshReader_INCLUDE_DIR)
mark_as_advanced(MeshReader_INCLUDE_DIR MeshReader_LIBRARY)

if(MeshReader_FOUND AND NOT TARGET MeshReader::MeshReader)
    add_library(MeshReader::MeshReader INTERFACE IMPORTED)
    target_include_directories(MeshReader::MeshReader INTERFACE ${MeshReader_INCLUDE_DIR})
    target_link_libraries(MeshReader::MeshReader INTERFACE ${MeshReader_LIBRARY})
endif()
