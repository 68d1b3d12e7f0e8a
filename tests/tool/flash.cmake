add_library(borvanusb_flash_test_support STATIC flash_support.cpp)
target_link_libraries(borvanusb_flash_test_support PRIVATE borvan_options PUBLIC borvanusb_test_support
                                                                                 borvan_gtest)
target_compile_options(borvanusb_flash_test_support PRIVATE ${BORVAN_TEST_OPTIONS})

borvan_add_gtest(
  tool_flash_parts_test
  SOURCES flash_parts_test.cpp flash_sha256_test.cpp flash_size_test.cpp
  LIBRARIES borvanusb_flash_test_support)
borvan_add_gtest(
  tool_flash_program_test
  SOURCES flash_program_test.cpp
  LIBRARIES borvanusb_flash_test_support)
borvan_add_gtest(
  tool_flash_cut_test
  SOURCES flash_cut_test.cpp
  LIBRARIES borvanusb_flash_test_support
  TIMEOUT 300)
