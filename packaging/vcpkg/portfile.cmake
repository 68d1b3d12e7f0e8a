# An overlay port, to be used from the source tree: vcpkg install borvanusb --overlay-ports=packaging/vcpkg
# Not tested, because the machines that build and test this product have no vcpkg.
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)

# Debug builds of hosts can use the release DLL, because its interface is C.
set(VCPKG_BUILD_TYPE release)

vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)
vcpkg_check_features(
  OUT_FEATURE_OPTIONS options
  FEATURES tools BORVAN_BUILD_TOOLS
           virtual-camera BORVAN_BUILD_VIRTUAL_CAMERA)
vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS ${options} -DBORVAN_BUILD_TESTS=OFF
          "-DBORVAN_VIRTUAL_CAMERA_CLASS_ID={0E94725A-D730-4BA7-91B3-B3AF8C21001E}")
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME BorvanUSB CONFIG_PATH lib/cmake/BorvanUSB)
if("tools" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES borvanusb AUTO_CLEAN)
endif()
if("virtual-camera" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES virtual-camera AUTO_CLEAN)
endif()
# The owner has chosen no licence.
file(WRITE "${CURRENT_PACKAGES_DIR}/share/borvanusb/copyright" "No licence was chosen for BorvanUSB.\n")
