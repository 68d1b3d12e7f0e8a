#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// What an I2C list leaves in one register of a sensor.
struct Setting {
  uint32_t slave;
  int32_t mode;  // width mode of UsbI2cRead: 0, 1 or 2
  uint32_t register_address;
  uint32_t value;
  size_t order;  // place among the list's settings
};

// Reads an I2C list as the library does.
//   file_name  list file
//   settings   receives the last value of each register, sorted by slave, mode and register, in
//              memory to be released with free(); untouched on failure
//   count      receives how many there are
//   complaint  receives one line that says why the list can't be used
//   size       room in `complaint`, its terminating zero included
// Returns false when the file can't be read, when it holds no register, and for lines that the
// library refuses or that mean different things to different cameras.
bool ReadSettings(const char* file_name, struct Setting** settings, size_t* count, char* complaint,
                  size_t size);

#ifdef __cplusplus
}  // extern "C"
#endif
