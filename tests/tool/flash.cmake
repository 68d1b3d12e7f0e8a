add_library(borvanusb_flash_test_support STATIC flash_support.cpp)
target_link_libraries(borvanusb_flash_test_support PRIVATE borvan_options PUBLIC borvanusb_test_support
                                                                                 borvan_gtest)
target_compile_options(borvanusb_flash_test_support PRIVATE ${BORVAN_TEST_OPTIONS})

borvan_add_gtest(
  tool_images_test
  SOURCES images_elf_test.cpp images_hex_test.cpp images_read_test.cpp images_srecord_test.cpp
  LIBRARIES borvanusb_test_support)
borvan_add_gtest(
  tool_flash_parts_test
  SOURCES flash_parts_test.cpp flash_sha256_test.cpp flash_size_faults_test.cpp flash_size_test.cpp
          image_format_test.cpp sector_fate_test.cpp
  LIBRARIES borvanusb_flash_test_support)
borvan_add_gtest(
  tool_flash_program_test
  SOURCES flash_program_failures_test.cpp flash_program_files_test.cpp flash_program_test.cpp flash_words_test.cpp
  LIBRARIES borvanusb_flash_test_support)
borvan_add_gtest(
  tool_flash_cut_test
  SOURCES flash_cut_test.cpp flash_segments_cut_test.cpp
  LIBRARIES borvanusb_flash_test_support
  OPTIMIZED TIMEOUT 300 SHARDS 2)
borvan_add_gtest(
  tool_flash_journal_test
  SOURCES flash_journal_cameras_test.cpp flash_journal_changes_test.cpp flash_journal_test.cpp flash_several_test.cpp
  LIBRARIES borvanusb_flash_test_support)
borvan_add_gtest(
  tool_flash_commands_test
  SOURCES flash_commands_test.cpp flash_end_test.cpp flash_formats_test.cpp flash_image_test.cpp
          flash_regions_test.cpp flash_schema_test.cpp
  LIBRARIES borvanusb_flash_test_support borvanusb_test_schemas)
# 100,000 sequences with BORVAN_LONG=1, N with BORVAN_SEQUENCES=N.
borvan_add_gtest(
  tool_flash_sequences_test
  SOURCES flash_sequences_judge.cpp flash_sequences_test.cpp
  LIBRARIES borvanusb_flash_test_support
  OPTIMIZED TIMEOUT 600)

# Compares image files with other programs. Debian's Python has the module intelhex.
find_program(BORVAN_DEBIAN_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
add_executable(exchange_images images/exchange_images.cpp)
target_link_libraries(exchange_images PRIVATE borvan_options borvanusb_core)
if(BORVAN_DEBIAN_PYTHON)
  add_test(NAME tool_images_strangers COMMAND "${BORVAN_DEBIAN_PYTHON}" -B "${CMAKE_CURRENT_SOURCE_DIR}/images/compare.py"
                                              $<TARGET_FILE:exchange_images>)
  set_tests_properties(tool_images_strangers PROPERTIES TIMEOUT 300)
endif()
