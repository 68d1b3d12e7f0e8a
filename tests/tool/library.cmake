# In native builds, the library's exports are linked instead of loaded, with a simulated system.
if(NOT WIN32)
  borvan_add_gtest(
    tool_library_test
    SOURCES flash_readings_test.cpp
            library_camera_test.cpp
            library_faults_test.cpp
            library_flash_test.cpp
            library_jobs_test.cpp
            library_rig.cpp
            scratch_names_test.cpp
            supervisor_test.cpp
            ../api/api_fixture.cpp
            ../support/camera_chip.cpp
            ../support/scripted_platform.cpp
    LIBRARIES borvanusb_core borvan_core virtual_camera_core
    SHARDS 3)
  target_include_directories(tool_library_test PRIVATE "${PROJECT_SOURCE_DIR}/tests")

  # Runs every command with one bad transfer, on the virtual camera's chip.
  borvan_add_gtest(
    tool_fault_sweep_test
    SOURCES fault_sweep_registers_test.cpp
            fault_sweep_test.cpp
            library_rig.cpp
            sweep/contents.cpp
            sweep/fault_sweep.cpp
            sweep/sweep_rig.cpp
            sweep/swept_camera.cpp
            ../api/api_fixture.cpp
            ../support/camera_chip.cpp
            ../support/scripted_platform.cpp
    LIBRARIES borvanusb_test_support borvan_core virtual_camera_core
    OPTIMIZED TIMEOUT 400 SHARDS 3)
  target_include_directories(tool_fault_sweep_test PRIVATE "${PROJECT_SOURCE_DIR}/tests")
endif()
