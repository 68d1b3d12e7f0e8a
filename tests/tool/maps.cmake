# Register maps.
find_program(BORVAN_PYTHON NAMES python3 REQUIRED)
borvan_add_gtest(tool_maps_test SOURCES map_check_test.cpp read_svd_test.cpp svd_errors_test.cpp
                 svd_features_test.cpp svd_numbers_test.cpp LIBRARIES borvanusb_test_support borvanusb_test_schemas)
target_compile_definitions(tool_maps_test PRIVATE BORVAN_SVD_FILES="${CMAKE_CURRENT_SOURCE_DIR}/maps"
                                                  BORVAN_PYTHON="${BORVAN_PYTHON}")
