# Finds the IFC library (Debian: libifcplusplus-dev, which needs libboost-dev beside it). It comes without a CMake
# package and its libraries without version, in a folder of their own.
#
#   IfcPlusPlus_FOUND
#   IfcPlusPlus::IfcPlusPlus   the library with its geometry kernel and headers
find_path(IfcPlusPlus_INCLUDE_DIR ifcpp/model/BuildingModel.h)
find_path(IfcPlusPlus_CARVE_INCLUDE_DIR carve/carve.hpp)
find_path(IfcPlusPlus_BOOST_INCLUDE_DIR boost/algorithm/string/predicate.hpp)
find_library(IfcPlusPlus_LIBRARY IfcPlusPlus PATH_SUFFIXES ifcplusplus)
find_library(IfcPlusPlus_CARVE_LIBRARY carve PATH_SUFFIXES ifcplusplus)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(
    IfcPlusPlus
    REQUIRED_VARS IfcPlusPlus_LIBRARY IfcPlusPlus_CARVE_LIBRARY IfcPlusPlus_INCLUDE_DIR IfcPlusPlus_CARVE_INCLUDE_DIR
                  IfcPlusPlus_BOOST_INCLUDE_DIR)
mark_as_advanced(IfcPlusPlus_INCLUDE_DIR IfcPlusPlus_CARVE_INCLUDE_DIR IfcPlusPlus_BOOST_INCLUDE_DIR
                 IfcPlusPlus_LIBRARY IfcPlusPlus_CARVE_LIBRARY)

if(IfcPlusPlus_FOUND AND NOT TARGET IfcPlusPlus::IfcPlusPlus)
    add_library(IfcPlusPlus::IfcPlusPlus INTERFACE IMPORTED)
    # Imported targets' headers count as system headers: their warnings are not ours.
    target_include_directories(
        IfcPlusPlus::IfcPlusPlus INTERFACE ${IfcPlusPlus_INCLUDE_DIR} ${IfcPlusPlus_CARVE_INCLUDE_DIR}
                                           ${IfcPlusPlus_BOOST_INCLUDE_DIR})
    get_filename_component(IfcPlusPlus_LIBRARY_DIR ${IfcPlusPlus_LIBRARY} DIRECTORY)
    target_link_libraries(IfcPlusPlus::IfcPlusPlus INTERFACE ${IfcPlusPlus_LIBRARY} ${IfcPlusPlus_CARVE_LIBRARY})
    target_link_options(IfcPlusPlus::IfcPlusPlus INTERFACE "LINKER:-rpath,${IfcPlusPlus_LIBRARY_DIR}")
endif()
