#pragma once

// What the tests of lifetimes and races have in common: the library loaded by hand, the camera in
// memory, and counts of what this process holds.

#include <borvan_usb.h>
#include <windows.h>

#include <objbase.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "memory_camera.h"

namespace reliability {

// Lists memory_camera.dll among the video-input devices for as long as it lives. Needs the right
// to write machine-wide class registrations; throws without it.
class CameraRegistration {
 public:
  CameraRegistration();
  CameraRegistration(const CameraRegistration&) = delete;
  CameraRegistration& operator=(const CameraRegistration&) = delete;
  ~CameraRegistration();
};

// Takes the camera out of the system's list, and puts it back.
void HideCamera();
void ShowCamera();

// The library's exports. A program that linked the import library could never unload it.
struct Library {
  HMODULE module;
  decltype(UsbIniDevice)* ini;
  decltype(UsbDestroyUSB)* destroy;
  decltype(UsbUpdateDevice)* update;
  decltype(UsbGetDeviceNum)* count;
  decltype(UsbGetAllDeviceInfo)* all;
  decltype(UsbSelectDevice)* select;
  decltype(UsbRegisterRead)* register_read;
  decltype(UsbFlashWriteFile)* flash_write_file;
  decltype(UsbFlashQuickReadFile)* flash_read_file;
  decltype(UsbRegisterWriteFile)* register_write_file;
  decltype(UsbRegisterReadFile)* register_read_file;
  decltype(UsbI2CWriteFile)* i2c_write_file;
  decltype(UsbI2CReadFile)* i2c_read_file;
  decltype(GetProgressInfo)* progress;
};

// Throws when the library beside the program can't be loaded.
Library LoadBorvanUsb();

// The place of the camera in memory in the library's list; -1 when it is not listed.
std::int32_t FindCamera(const Library& library);

// Makes an instance and selects the camera. False when something of it fails.
bool Start(const Library& library);

enum Job {
  kFlashWrite,
  kFlashRead,
  kRegisterWrite,
  kRegisterRead,
  kI2cWrite,
  kI2cRead,
  kJobs,
};

// Files for the jobs, in a folder of their own that goes with the object.
class JobFiles {
 public:
  JobFiles();
  JobFiles(const JobFiles&) = delete;
  JobFiles& operator=(const JobFiles&) = delete;
  ~JobFiles();

  // Starts a short job. Jobs that run at once and write take a different `number` each, 0 to 15.
  bool Run(const Library& library, Job job, int number) const;

 private:
  std::string Path(const std::string& name) const { return folder_ + name; }
  void Put(const std::string& name, const std::string& content) const;

  std::string folder_;
};

// What this process holds.
std::size_t Handles();
std::size_t Threads();
// Blocks and bytes of all heaps.
struct Memory {
  std::size_t blocks = 0;
  std::size_t bytes = 0;
};
Memory HeapMemory();

// Waits until no more threads run than that: every job and clear task is over. False after a
// minute.
bool ThreadsBecome(std::size_t count);

// Waits until the clear tasks of all jobs that have ended are over.
void WaitForClearTasks();

// BORVAN_ROUNDS, else `usual`.
int Rounds(int usual);
// Random numbers of a round; BORVAN_SEED shifts all of them.
std::mt19937 RandomOf(int round);
int Below(std::mt19937& random, int limit);

}  // namespace reliability
