# Builds the checkout that this port stands in.
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)

vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)
vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS -DQUORLAN_BUILD_APPS=OFF -DQUORLAN_BUILD_TESTS=OFF -DQUORLAN_BUILD_EXAMPLES=OFF -DQUORLAN_WERROR=OFF
            "-DQUORLAN_FLATC=${CURRENT_HOST_INSTALLED_DIR}/tools/flatbuffers/flatc")
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME QuorlanTools CONFIG_PATH lib/cmake/QuorlanTools)
vcpkg_fixup_pkgconfig()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include")
set(VCPKG_POLICY_SKIP_COPYRIGHT_CHECK enabled)
