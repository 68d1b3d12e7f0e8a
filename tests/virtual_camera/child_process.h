#pragma once

// A second process of this test program, working on the same camera.

#include <string>

namespace virtual_camera_test {

class ChildProcess {
 public:
  // Starts this program again as `--child action configuration_file`.
  ChildProcess(const std::string& action, const std::string& configuration_file);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  int Wait();   // until it ends by itself; its exit code
  void Kill();  // without a chance to clean up

 private:
#ifdef _WIN32
  void* process_ = nullptr;
#else
  int process_ = -1;
#endif
};

// The path of this program, from main.
void RememberProgram(const char* path);

// What the child does; its exit code.
int RunChild(const std::string& action, const std::string& configuration_file);

}  // namespace virtual_camera_test
