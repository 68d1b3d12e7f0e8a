// BorvanUSB_x64.dll: the inside of a USB camera, from C and C++.
//
// The library finds USB cameras, selects one of them, and reads and writes the registers of its
// chip, the registers of the devices on the chip's I2C bus (the image sensor) and the SPI flash
// that holds the chip's firmware.
//
// A program calls UsbIniDevice, lists the cameras, selects one with UsbSelectDevice (without which
// no camera is open and every access fails), works with it, and calls UsbDestroyUSB.
//
// Conventions
//
// Calling convention: the standard one of 64-bit Windows. The functions are plain C symbols.
// Booleans are one byte: `bool` in C (<stdbool.h>) and C++. A four-byte BOOL would read rubbish.
// Texts are 8-bit texts in the system's ANSI code page, terminated by a zero byte except where
//   said: file names that go in, device paths and names that come out.
// File names may be null, which counts as empty. Value pointers may be null: the access is made
//   and nothing is stored.
// Instance: one per process, made by UsbIniDevice. "Needs an instance": crashes without one.
// Threads: call everything from one thread. UsbIniDevice initialises COM on the thread that calls
//   it. Nothing orders calls of two threads, nor an access made while a job runs: their transfers
//   mix at the device, which may then take parts of one command for parts of the other.
//   GetProgressInfo alone may be called from any thread at any time while an instance exists.
// Ownership: texts that go in are copied before the call returns, a job's file name included.
//   The array of UsbGetAllDeviceInfo stays allocated; see there.
// Waiting: the single accesses return when their transfers are done. The six functions that start
//   a job return at once; the job runs on a thread of its own until it ends by itself. Nothing
//   stops a job and neither UsbIniDevice nor UsbDestroyUSB waits for one, nor the end of the
//   process, which simply kills it in the middle. borvan_wait_for_job waits and returns how it
//   went.
// Results: a function that returns bool returns true when its operation's 32-bit result is not
//   negative, false when it is negative or no instance exists. The code itself is told for jobs
//   only, by GetProgressInfo.
// Unloading: FreeLibrary may be called between any two calls. The first job that starts keeps the
//   library loaded until the process ends, for its code must stay; a library that ran none goes.
// Exceptions: UsbSelectDevice throws a `const char*` when a camera can't be opened;
//   borvan_select_device does the same and returns instead. The functions that start a job throw
//   std::system_error if no thread can be created. Every function throws std::bad_alloc if memory
//   runs out. What a host sees of a C++ exception depends on its compiler:
//   - C++, GCC for mingw-w64 as the library: the exception, to be caught by its type. C, the same
//     compiler: nothing can catch it. Uncaught, it ends the program with exit code 3.
//   - C or C++ in the ABI of Microsoft's compiler (MSVC, clang-cl): a structured exception with the
//     code kBorvanExceptionCode. __try and __except take it and the program goes on; `catch` does
//     not see it. Read the code in the filter expression, by GetExceptionCode(). The message can't
//     be read. Each exception taken this way leaves less than 200 bytes allocated. Uncaught, it
//     ends the program with kBorvanExceptionCode as the exit code.
//   - Other languages: such a structured exception, in .NET an SEHException.
//
// This header compiles alone as C11 and as C++.
#pragma once

// The header is C as much as C++, and must not follow advice for C++ alone.
// NOLINTBEGIN(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using)
#include <assert.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifndef __cplusplus
#include <stdbool.h>
#endif
#ifdef _MSC_VER
#include <excpt.h>
#endif

static_assert(sizeof(bool) == 1, "the functions return booleans of one byte");

// ---- Status codes -------------------------------------------------------------------------------

// The library's own failures. borvan_status_message gives their texts.
static const uint32_t kBorvanFlashEraseFailed = 0xE0000001u;
static const uint32_t kBorvanLengthQueryFailed = 0xE0000002u;
static const uint32_t kBorvanFlashWriteFailed = 0xE0000003u;
static const uint32_t kBorvanInvalidAddress = 0xE0000004u;
static const uint32_t kBorvanFlashReadFailed = 0xE0000005u;  // reserved: no operation reports it
static const uint32_t kBorvanTerminated = 0xE0000006u;
static const uint32_t kBorvanFastInterfaceFailed = 0xE0000007u;
static const uint32_t kBorvanSlaveAndWidthMissing = 0xE0000008u;
static const uint32_t kBorvanDeviceNotFound = 0xE0000009u;  // reserved: no operation reports it
static const uint32_t kBorvanFileError = 0xE000000Au;
static const uint32_t kBorvanFileFormatFailed = 0xE000000Bu;  // reserved: no operation reports it

// Codes of the system that the library gives itself. A device's own failures are passed on as they
// come, so any other negative code can turn up as well.
static const uint32_t kBorvanSystemNoChannel = 0x80004003u;    // E_POINTER: no camera is open
static const uint32_t kBorvanSystemFail = 0x80004005u;         // E_FAIL
static const uint32_t kBorvanSystemOutOfMemory = 0x8007000Eu;  // E_OUTOFMEMORY
static const uint32_t kBorvanSystemInvalidData = 0x8007000Du;  // an impossible length was reported

// What borvan_wait_for_job returns when it did not see the job's end.
static const uint32_t kBorvanWaitTimeLimit = 0xE0001001u;  // the job may still be running
static const uint32_t kBorvanWaitEndMissed = 0xE0001002u;  // its report was cleared: read back

// The code of the structured exception as which a host in the ABI of Microsoft's compiler sees an
// exception of the library.
static const uint32_t kBorvanExceptionCode = 0x20474343u;

// The text of a status: the library's own failures and what borvan_wait_for_job returns.
// Returns a constant text, never to be freed; NULL for others (ask FormatMessage about those).
static inline const char* borvan_status_message(uint32_t status) {
  static const char* const kMessages[] = {
      "Flash failed to erase",
      "GetLen fails in channel",
      "Flash write  failed",  // hosts compare the texts: the two spaces stay
      "Invalid address",
      "Flash read failed",
      "Termination of work",
      "The Fast interface failed to execute",
      "The values of fff8 and fffe were not obtained",
      "Device not found",
      "File name error or file error",
      "File format failed",
  };
  if (status == kBorvanWaitTimeLimit || status == kBorvanWaitEndMissed) {
    return status == kBorvanWaitTimeLimit ? "The job did not end within the time limit"
                                          : "The job's last report was cleared before it was read";
  }
  if (status < kBorvanFlashEraseFailed || status > kBorvanFileFormatFailed) {
    return NULL;
  }
  return kMessages[status - kBorvanFlashEraseFailed];
}

// ---- Cameras ------------------------------------------------------------------------------------

enum {
  kBorvanTextFieldSize = 120,  // bytes of a path or name field
  kBorvanIdFieldSize = 4,      // characters of an ID field
};

// One camera. A path or name of 120 bytes or more fills its field and has no terminating zero
// (what does not fit is lost), and the IDs never have one: read all four with the helpers below.
struct UsbDeviceInfo {
  char path[kBorvanTextFieldSize];      // device path, lower case
  char name[kBorvanTextFieldSize];      // friendly name
  char vendor_id[kBorvanIdFieldSize];   // four upper-case hexadecimal digits, no terminator
  char product_id[kBorvanIdFieldSize];  // likewise
};
typedef struct UsbDeviceInfo UsbDeviceInfo;

static_assert(sizeof(UsbDeviceInfo) == 248, "the record has 248 bytes");
static_assert(offsetof(UsbDeviceInfo, path) == 0, "the path stands at 0");
static_assert(offsetof(UsbDeviceInfo, name) == 120, "the name stands at 120");
static_assert(offsetof(UsbDeviceInfo, vendor_id) == 240, "the vendor ID stands at 240");
static_assert(offsetof(UsbDeviceInfo, product_id) == 244, "the product ID stands at 244");

// Copies a path or name field, whether it is terminated or full.
//   field  120 bytes: UsbDeviceInfo's path or name
//   text   room for 121 bytes; receives the text and its terminating zero
static inline void borvan_copy_text(const char* field, char* text) {
  size_t length = 0;
  while (length < kBorvanTextFieldSize && field[length] != '\0') {
    ++length;
  }
  memcpy(text, field, length);
  text[length] = '\0';
}

// Copies an ID field.
//   field  4 characters: UsbDeviceInfo's vendor_id or product_id
//   text   room for 5 bytes; receives the characters and a terminating zero
static inline void borvan_copy_id(const char* field, char* text) {
  memcpy(text, field, kBorvanIdFieldSize);
  text[kBorvanIdFieldSize] = '\0';
}

// Reads an ID field as a number.
//   field  4 characters: UsbDeviceInfo's vendor_id or product_id
// Returns 0 to 0xFFFF; -1 when the field holds anything but hexadecimal digits.
static inline int32_t borvan_id_number(const char* field) {
  int32_t number = 0;
  for (int i = 0; i < kBorvanIdFieldSize; ++i) {
    const char digit = field[i];
    int32_t value = 0;
    if (digit >= '0' && digit <= '9') {
      value = digit - '0';
    } else if (digit >= 'A' && digit <= 'F') {
      value = digit - 'A' + 10;
    } else if (digit >= 'a' && digit <= 'f') {
      value = digit - 'a' + 10;
    } else {
      return -1;
    }
    number = number * 16 + value;
  }
  return number;
}

// ---- Progress -----------------------------------------------------------------------------------

// The two halves of GetProgressInfo's value.
static const uint64_t kBorvanProgressPercentMask = 0xFFFFFFFFu;
enum { kBorvanProgressStatusShift = 32 };

// The percentage, 0 to 100; 0 beside every status but 0.
static inline int32_t borvan_progress_percent(uint64_t progress) {
  int32_t percent = 0;
  memcpy(&percent, &progress, sizeof percent);  // the low half comes first on every x86-64
  return percent;
}

// The status: 0, negative for a failure, positive as kBorvanProgressNotice says.
static inline int32_t borvan_progress_status(uint64_t progress) {
  return borvan_progress_percent(progress >> kBorvanProgressStatusShift);
}

// What a value of GetProgressInfo says.
enum BorvanProgressState {
  // 0 to 99 %. At 0 % this may as well mean that no job was ever started, that the one just started
  // has nothing to report yet, or that a job ended well more than three seconds ago.
  kBorvanProgressRunning = 0,
  // 100 %: a job ended well. It stays so for three seconds.
  kBorvanProgressDone = 1,
  // A job failed; the status says why. It stays so until something else is reported.
  kBorvanProgressFailed = 2,
  // A positive status, which is no failure. While flash is dumped, status 1: the percentage went
  // past 100 right before the end, poll on. After a register list was written: the job's end, with
  // what its last transfer returned, or 11 when the list does not open with an entry 0xfffd and
  // nothing of it was written.
  kBorvanProgressNotice = 3,
};

// Tells what a value of GetProgressInfo says.
// The library stores the two halves one after the other, so a value can hold halves of different
// reports: a status beside a percentage that is not 0. Such a value counts as running; the next
// poll sees the report whole.
static inline enum BorvanProgressState borvan_progress_state(uint64_t progress) {
  const int32_t percent = borvan_progress_percent(progress);
  const int32_t status = borvan_progress_status(progress);
  if (status == 0) {
    return percent == 100 ? kBorvanProgressDone : kBorvanProgressRunning;
  }
  if (percent != 0) {
    return kBorvanProgressRunning;
  }
  return status < 0 ? kBorvanProgressFailed : kBorvanProgressNotice;
}

// ---- Widths -------------------------------------------------------------------------------------

// Width flags of the register accesses. They are not symmetric: a write takes every flag but 0 for
// the wide form, a read takes 1 alone for it and every other flag for the byte form.
enum {
  kBorvanRegisterByte = 0,  // 8-bit value
  kBorvanRegisterWide = 1,  // 32-bit value
};

// Width modes of the I2C accesses: bits of the register address, bits of the data.
enum {
  kBorvanI2cAddress8Data8 = 0,
  kBorvanI2cAddress16Data8 = 1,
  kBorvanI2cAddress16Data16 = 2,
  kBorvanI2cAddress32Data8 = 3,
  kBorvanI2cAddress32Data16 = 4,
  kBorvanI2cAddress32Data32 = 5,
};

#ifdef __cplusplus
extern "C" {
#endif

// ---- The instance and its cameras ---------------------------------------------------------------

// Makes the process's instance, in place of the former one if there is one, initialises COM on the
// calling thread and lists the cameras. Selects none: follow it with UsbSelectDevice.
// A job of the former instance goes on, but what it reports no longer reaches GetProgressInfo, so
// this call gives the next job a progress of its own.
// Returns 0 or 1 on success, no camera at all included; a negative code of the system when its list
// of video devices can't be had (the instance exists then, without cameras).
int32_t UsbIniDevice(void);

// Lists the cameras anew, after one was plugged in or out. The selection follows its camera to the
// new place in the list; the open camera stays open.
// Returns true on success; false when the system's list can't be had. No instance: false.
bool UsbUpdateDevice(void);

// The number of cameras found last. Needs an instance.
int32_t UsbGetDeviceNum(void);

// All cameras in the order of their indices, UsbGetDeviceNum records. Needs an instance.
// Returns an array that belongs to the caller and that nothing frees: no function of the library
// does, and the caller's free() or delete belong to another allocator. Call it once per listing and
// copy what is needed. Without cameras the array has no record: read none.
UsbDeviceInfo* UsbGetAllDeviceInfo(void);

// The selected camera, as it was described when it was selected. Needs an instance.
// Returns the record by value; empty texts and the digits 0000 when none was ever selected.
UsbDeviceInfo UsbGetSelectDeviceInfo(void);

// Selects a camera and opens its vendor channel. Needs an instance, unless index is negative.
//   index  0 to UsbGetDeviceNum() - 1
// Returns false for an index outside that range, which changes nothing. Otherwise true, whatever
// became of the opening: a camera without the vendor channel is selected with no channel open, and
// every access to it fails (kBorvanSystemNoChannel). UsbRegisterRead of any register tells: it
// returns false then.
// Throws a C++ exception of type `const char*`, a message like "ERROR: gcap.pVCap->QueryInterface
// failed", when the camera is there but can't be opened; the selection has changed all the same.
// borvan_select_device does not throw. "Exceptions" above says what each kind of host sees.
bool UsbSelectDevice(int32_t index);

// Selects a camera as UsbSelectDevice does, and returns where that throws.
//   index    0 to UsbGetDeviceNum() - 1
//   message  receives the reason when the camera is there but can't be opened, otherwise null: a
//            constant text, valid as long as the library is loaded; may be null itself
// Returns true when UsbSelectDevice returned true. False with a null message: there is no such
// camera. False with a message: the camera can't be opened (the selection has changed all the same)
// or memory ran out.
// C++ and Microsoft's compiler have the function inline. Other C projects compile the file
// borvan_select_device.cpp, which lies beside this header, along with their own and link with the
// C++ compiler (g++).
#if defined(_MSC_VER)
// Which text was thrown is known to the library's compiler alone.
static inline bool borvan_select_device(int32_t index, const char** message) {
  // The library's exceptions, and those of a library that was built with Microsoft's compiler.
  const uint32_t microsoft_code = 0xE06D7363u;
  const char* text = NULL;
  bool selected = false;
  __try {
    selected = UsbSelectDevice(index);
  } __except (_exception_code() == kBorvanExceptionCode || _exception_code() == microsoft_code) {
    text = "ERROR: the camera can't be opened, or memory ran out";
  }
  if (message != NULL) {
    *message = text;
  }
  return selected;
}
#elif defined(__cpp_exceptions)
inline bool borvan_select_device(int32_t index, const char** message) noexcept {
  const char* text = NULL;
  bool selected = false;
  try {
    selected = UsbSelectDevice(index);
  } catch (const char* thrown) {
    text = thrown;
  } catch (...) {
    text = "ERROR: an exception other than a message, such as out of memory";
  }
  if (message != NULL) {
    *message = text;
  }
  return selected;
}
#else
bool borvan_select_device(int32_t index, const char** message);
#endif

// Ends the instance. Running jobs go on, unwatched, until they end by themselves. Before it goes,
// the selected camera's register 0x1A3 is read once more. Needs an instance. Returns true.
bool UsbDestroyUSB(void);

// ---- Single accesses ----------------------------------------------------------------------------

// Reads a register of the chip.
//   address  register address
//   value    receives the value: 8 or 32 bits; untouched when the access fails or goes unanswered
//   flag     kBorvanRegisterWide: 32 bits; any other value: 8 bits
// Returns true when the transfers went well. That is no proof of an answer: a reply that is not one
// to this read gives true and leaves *value as it was. Set *value to something impossible first to
// tell. No instance: false.
bool UsbRegisterRead(uint32_t address, uint32_t* value, uint8_t flag);

// Writes a register of the chip.
//   address  register address
//   value    the value; its low 8 bits when flag is kBorvanRegisterByte
//   flag     kBorvanRegisterByte: 8 bits; any other value: 32 bits
// Returns true when the last of its transfers went well; the ones before are not looked at.
// No instance: false.
bool UsbRegisterWrite(uint32_t address, uint32_t value, uint8_t flag);

// Reads a register of a device on the I2C bus.
//   device_id         slave address, sent as it is (the low 8 bits, nothing shifted)
//   register_address  register address, of the mode's width
//   value             receives the value; untouched on failure and in a mode outside 0 to 5
//   mode              0 to 5, kBorvanI2cAddress8Data8 and on; any other value asks as mode 0 does
//   option            handed to the chip as it is (the low 8 bits); 0 unless the chip's maker says
// Returns true when the transfers went well. No instance: false.
bool UsbI2cRead(uint32_t device_id, uint32_t register_address, uint32_t* value, int32_t mode,
                uint32_t option);

// Writes a register of a device on the I2C bus. Parameters as for UsbI2cRead.
//   value  the value, cut to the mode's data width
// Returns true when the transfer went well. No instance: false.
bool UsbI2cWrite(uint32_t device_id, uint32_t register_address, uint32_t value, int32_t mode,
                 uint32_t option);

// Reads four bytes of flash.
//   address  flash byte address; need not be aligned
//   value    receives the four bytes, the one at address in bits 24 to 31; 0 when the read failed
// Returns true whenever an instance exists, even when the read failed: only the value 0 tells, and
// flash may hold 0. No instance: false.
bool UsbFlashRead(uint32_t address, uint32_t* value);

// Programs four bytes of flash, which can only clear bits: erase the sector first.
//   address  flash byte address
//   value    the four bytes, bits 24 to 31 for the one at address
// Returns true when the transfer went well; it neither reads back nor waits for the flash.
// No instance: false.
bool UsbFlashWrite(uint32_t address, uint32_t value);

// Erases the flash sector of 4096 bytes at an address, sent as it is: with one that is no multiple
// of 4096 the device decides.
//   address  flash byte address
// Returns true when the transfer went well; it does not wait for the erase. No instance: false.
bool UsbFlashErase(uint32_t address);

// ---- Jobs ---------------------------------------------------------------------------------------
//
// Each returns true when its job was started. False: no instance, or the file name is empty or, for
// the jobs that read a file, names none; GetProgressInfo then shows kBorvanFileError. Each throws
// std::system_error if no thread can be created; its code().value() is EAGAIN (the code's category
// is an object of the library's own C++ runtime, which never equals one of the host's).
//
// One job at a time: nothing keeps a second one from starting beside the first, and both would
// report into one progress.
//
// A name of a file to be written chooses its form by what follows its last ".": "txt", in small
// letters, gives text, anything else raw bytes. The file is created, or emptied if it exists.

// Programs a file's bytes into flash. Erases every sector of 4096 bytes from start_address on that
// the file reaches into, then writes in packets of 60 bytes. The last packet is filled up with
// 0x00, so up to 59 bytes behind the image become 0, in the sector after it too when the image ends
// less than that before a sector's end. Packets that are all 0xFF are left out.
//   file_name      file of raw bytes; it must exist, its length is not checked against the flash
//   start_address  flash byte address, best a multiple of 4096: sectors are not aligned for you
// Failures by GetProgressInfo: kBorvanFlashEraseFailed (no camera is open, too),
// kBorvanFlashWriteFailed, kBorvanFastInterfaceFailed, kBorvanFileError. What was erased and
// written before a failure stays so.
bool UsbFlashWriteFile(const char* file_name, uint32_t start_address);

// Dumps flash into a file, raw or as lines "00001008h: 00 01 02 03 04 05 06 07;".
//   file_name      file to be written
//   start_address  first flash byte address
//   end_address    last one, included
// The job reports 100 before it writes the file: wait until the file has its whole length and the
// job has closed it. A transfer that keeps failing is repeated for ever; set a time limit.
// In text form the last line of a range whose length is no multiple of 8 shows 00 for what is
// missing.
// Failures by GetProgressInfo: kBorvanInvalidAddress (end below start), kBorvanLengthQueryFailed
// (no camera is open, too), kBorvanFastInterfaceFailed, kBorvanFileError, or the device's own code.
bool UsbFlashQuickReadFile(const char* file_name, uint32_t start_address, uint32_t end_address);

// Reads a run of 8-bit chip registers into a file: lines "0x0100, 0x5a," after two that carry the
// page (0xfffd: bits 24 to 31, 0xfffe: bits 16 to 23 of start_address), or one raw byte a register.
//   file_name      file to be written
//   start_address  first register
//   end_address    last one, included; only its low 16 bits count: the run stays in start's page
// The file is written after 100 is reported; after a failure it is left empty.
bool UsbRegisterReadFile(const char* file_name, uint32_t start_address, uint32_t end_address);

// Writes the registers of a list file: lines "0x3012,0x5a,", remark lines that open with "//",
// 0xffff for a pause of up to 255 ms; the first entry that is no pause must be 0xfffd. All pauses
// are made before the first register is written.
//   file_name  list file; it is read before the call returns, and without an entry the call fails
// Ends with a positive status instead of 100 when the last transfer returned one, and with 11 when
// nothing was written because the list does not open with 0xfffd: see kBorvanProgressNotice.
// Failures by GetProgressInfo: kBorvanFastInterfaceFailed, kBorvanFileError, or the device's own
// code.
bool UsbRegisterWriteFile(const char* file_name);

// Reads a run of registers of a device on the I2C bus into a file. Note the file name's place.
//   start_address  first register
//   end_address    last one, included
//   file_name      file to be written: raw, a byte a register, or lines "0x3012,0x5a,"; of wider
//                  values both hold the low 8 bits alone, and in modes 3 to 5 a text file stays
//                  empty though the job succeeds
//   slave          slave address, sent as it is (the low 8 bits)
//   mode           0 to 5, kBorvanI2cAddress8Data8 and on
// The file is written after 100 is reported; after a failure it is left empty.
bool UsbI2CReadFile(uint32_t start_address, uint32_t end_address, const char* file_name,
                    int32_t slave, uint32_t mode);

// Writes the I2C registers of a list file: lines "0x3012,0x5a,"; before the first register an entry
// 0xfff8 with the slave address and an entry 0xfffe with the width code must stand.
//   file_name  list file; it must exist
//   option     handed to the chip (the low 4 bits), where the chip has the fast list path
// Failures by GetProgressInfo: kBorvanSlaveAndWidthMissing, kBorvanLengthQueryFailed (no camera is
// open, too), kBorvanFastInterfaceFailed, kBorvanFileError, or the device's own code.
bool UsbI2CWriteFile(const char* file_name, uint32_t option);

// The progress that was reported last: status in the high 32 bits, percentage in the low 32 bits.
// Read it with borvan_progress_state, borvan_progress_status and borvan_progress_percent.
// Any thread may call it; 0 without an instance. To wait for a job, call borvan_wait_for_job of
// borvan_wait_for_job.h, which this header includes. It handles what a loop of polls must know:
// - Starting a job resets nothing: until its first report the value is what the former job left,
//   its failure or its 100 included. A failure stays until another report.
// - Three seconds after a 100 the value is set to 0 whatever it says by then, so a former job's
//   clearing can wipe the end of the next one, and a poller that sleeps longer can miss the 100.
// - Jobs with lists and runs of registers report nothing but their end. A dump's percentage goes
//   past 100 near the end (status 1, no failure). Below eight bytes it is 100 before a failure.
// - UsbIniDevice and UsbSelectDevice before a job give it a progress that nothing else touches. An
//   instance that is replaced keeps its camera open until the process ends: do so seldom.
uint64_t GetProgressInfo(void);

#ifdef __cplusplus
}  // extern "C"
#endif

#include "borvan_wait_for_job.h"
// NOLINTEND(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using)
