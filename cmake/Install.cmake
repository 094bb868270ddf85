# What `cmake --install` puts where: the library with its headers, the CMake package QuorlanTools, the pkg-config file
# quorlan-tools, and the program with its manual page. A caller needs glm, which the package finds; nothing else of ours reaches it.
#
# Components: Runtime (the shared library), Development (headers, package files), Program.
include(CMakePackageConfigHelpers)

set(quorlan_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QuorlanTools)

install(
    TARGETS QuorlanTools
    EXPORT QuorlanToolsTargets
    RUNTIME COMPONENT Runtime
    LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
    ARCHIVE COMPONENT Development
    FILE_SET HEADERS COMPONENT Development)
install(EXPORT QuorlanToolsTargets NAMESPACE Quorlan:: DESTINATION ${quorlan_package_dir} COMPONENT Development)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/QuorlanToolsConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/QuorlanToolsConfig.cmake
                              INSTALL_DESTINATION ${quorlan_package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuorlanToolsConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuorlanToolsConfig.cmake ${PROJECT_BINARY_DIR}/QuorlanToolsConfigVersion.cmake
        DESTINATION ${quorlan_package_dir} COMPONENT Development)

# All paths follow from where the file lies, so that the installed tree can be moved.
file(RELATIVE_PATH quorlan_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH quorlan_pc_to_include ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
file(RELATIVE_PATH quorlan_pc_to_lib ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/quorlan-tools.pc.in ${PROJECT_BINARY_DIR}/quorlan-tools.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quorlan-tools.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT Development)

if(QUORLAN_BUILD_APPS)
    # The program finds the library from where it stands, and others where the build found them.
    file(RELATIVE_PATH quorlan_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(quorlan PROPERTIES INSTALL_RPATH "$ORIGIN/${quorlan_bin_to_lib}"
                                             INSTALL_RPATH_USE_LINK_PATH ON)
    install(TARGETS quorlan RUNTIME COMPONENT Program)

    # The program itself writes its manual page and the completion of the shell.
    if(UNIX AND NOT CMAKE_CROSSCOMPILING)
        set(man_page ${PROJECT_BINARY_DIR}/quorlan.1)
        set(completion ${PROJECT_BINARY_DIR}/quorlan.bash)
        add_custom_command(
            OUTPUT ${man_page} ${completion}
            COMMAND quorlan reference --format man > ${man_page}
            COMMAND quorlan reference --format bash > ${completion}
            DEPENDS quorlan
            VERBATIM)
        add_custom_target(quorlan_manual ALL DEPENDS ${man_page} ${completion})
        install(FILES ${man_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Program)
        install(FILES ${completion} RENAME quorlan COMPONENT Program
                DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    endif()
endif()

include(Packaging)
