#include <gmock/gmock.h>

#include <string>

#include "child_process.h"

int main(int argc, char** argv) {
  virtual_camera_test::RememberProgram(argv[0]);
  if (argc == 4 && std::string(argv[1]) == "--child") {
    return virtual_camera_test::RunChild(argv[2], argv[3]);
  }
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
