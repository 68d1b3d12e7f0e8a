/**
 * @file
 * BorvanUSB_x64.dll: access to the internals of a USB camera, from C and C++.
 *
 * The library finds USB cameras, selects one of them, and reads and writes the registers of its
 * chip, the registers of the devices on the chip's I2C bus (the image sensor) and the SPI flash
 * that holds the chip's firmware.
 *
 * A program calls UsbIniDevice, lists the cameras, selects one with UsbSelectDevice (before that no
 * camera is open and every access fails), works with it, and calls UsbDestroyUSB.
 *
 * Conventions
 *
 * Systems: Windows 7 or later on 64-bit x86, in 64-bit programs. See README.md for what was tried.
 *
 * Calling convention: the standard one of 64-bit Windows. The functions are plain C symbols.
 *
 * Booleans: one byte, `bool` in C (stdbool.h) and C++. A four-byte BOOL would contain garbage.
 *
 * Texts: 8-bit, in the ANSI code page of the system, terminated by a zero byte unless stated
 * otherwise. This applies to the file names you pass and to the device paths and names you receive.
 *
 * Null pointers: a null file name counts as an empty one. A value pointer may be null: the access
 * is made and nothing is stored.
 *
 * Instance: there is one per process; UsbIniDevice creates it. Without an instance every function
 * that returns bool returns false and GetProgressInfo returns 0, except where a function "needs an
 * instance": without one it crashes.
 *
 * COM: UsbIniDevice initialises COM on the calling thread as single-threaded, by CoInitialize. A
 * thread that already uses the multi-threaded apartment keeps it. The library never calls
 * CoUninitialize.
 *
 * Threads: call everything from one thread, the one that called UsbIniDevice. The library does not
 * serialise the calls of two threads, nor an access that is made while a job runs: their transfers
 * mix at the device, which can then take parts of one command for parts of another. Only
 * GetProgressInfo may be called from any thread at any time.
 *
 * Ownership: the library copies the texts you pass before the call returns. See UsbGetAllDeviceInfo
 * for the array that it returns.
 *
 * Waiting: single accesses return when their transfers are done. The six functions that start a job
 * return at once; the job runs on its own thread until it ends. Nothing can stop a job.
 * UsbIniDevice and UsbDestroyUSB do not wait for a running job, and the end of the process kills
 * it. borvan_wait_for_job waits for a job and returns its result.
 *
 * Results: a function that returns bool returns true when the 32-bit result of its operation is not
 * negative. Only jobs report the code itself, by GetProgressInfo.
 *
 * Unloading: FreeLibrary may be called between any two calls. The first job keeps the library
 * loaded until the process ends. A library that has run no job is unloaded.
 *
 * Exceptions that can leave each of the 21 functions:
 * - UsbSelectDevice: a `const char*` when a camera can't be opened; std::bad_alloc when memory runs
 *   out. borvan_select_device does the same work and returns instead.
 * - The six functions that start a job: std::system_error when no thread can be created;
 *   std::bad_alloc.
 * - UsbI2cRead, UsbI2cWrite, UsbGetDeviceNum and GetProgressInfo: none.
 * - The other ten: std::bad_alloc.
 *
 * How a program sees an exception depends on its compiler:
 * - C++, GCC for mingw-w64: the exception; catch it by its type. C, the same compiler: nothing can
 *   catch it. Uncaught, it ends the program with exit code 3.
 * - C or C++ in the ABI of Microsoft's compiler (MSVC, clang-cl): a structured exception with the
 *   code kBorvanExceptionCode. __try and __except catch it and the program continues; `catch` does
 *   not see it. Read the code in the filter expression, by GetExceptionCode(). The message can't be
 *   read. Each exception that is caught this way leaves less than 200 bytes allocated. Uncaught, it
 *   ends the program with kBorvanExceptionCode as the exit code.
 * - Other languages: the same structured exception; in .NET an SEHException.
 *
 * This header compiles alone as C89 to C17 and as C++11 and later.
 */
#pragma once

/* The header is also C, and must not follow advice that applies only to C++. */
/* NOLINTBEGIN(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wc99-extensions"           /* bool in C89 */
#pragma clang diagnostic ignored "-Wlanguage-extension-token" /* __try */
#endif
#include <stddef.h>
#include <stdint.h>

#ifndef __cplusplus
#include <stdbool.h>
#endif
#ifdef _MSC_VER
#include <excpt.h>
#endif

#include "borvan_usb_constants.h"
#include "borvan_usb_status.h"
#include "borvan_usb_values.h"
#include "borvan_usb_version.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The instance and its cameras ------------------------------------------------------------ */

/**
 * Creates the instance of the process, replacing an existing one, initialises COM on the calling
 * thread and lists the cameras. It selects none: call UsbSelectDevice next.
 *
 * A job of the replaced instance continues, but GetProgressInfo no longer shows what it reports. So
 * this call gives the next job a progress of its own.
 * @return 0 or 1 on success, also when there is no camera; a negative code of the system when the
 *   list of video devices can't be read. The instance exists also then.
 */
int32_t UsbIniDevice(void);

/**
 * Lists the cameras again, for example after one was plugged in or removed.
 *
 * While cameras are listed, the index of the selection follows its camera to the new place in the
 * list. If the selected camera is gone, UsbGetSelectDeviceInfo still describes it. If no camera is
 * left, the selection is cleared: UsbGetSelectDeviceInfo returns empty texts. In all cases the
 * channel that UsbSelectDevice opened stays open; accesses still go to that camera.
 * @return true on success, also when there is no camera; false when the list of video devices can't
 *   be read, which can leave the list empty or incomplete, and without an instance
 */
bool UsbUpdateDevice(void);

/**
 * The number of cameras in the list. Needs an instance.
 * @return 0 or more
 */
int32_t UsbGetDeviceNum(void);

/**
 * All cameras in the order of their indices, UsbGetDeviceNum records. Needs an instance.
 * @return an array that belongs to the caller and can't be freed: the library has no function for
 *   it, and free() and delete of the caller belong to another allocator. Call this once per listing
 *   and copy what you need. Without cameras the array is empty: read no record.
 */
UsbDeviceInfo* UsbGetAllDeviceInfo(void);

/**
 * The selected camera, as it was described when it was selected. Needs an instance.
 * @return the record, by value; empty texts and the digits 0000 when none was selected, and after a
 *   listing that found no camera
 */
UsbDeviceInfo UsbGetSelectDeviceInfo(void);

/**
 * Selects a camera and opens its vendor channel. Needs an instance, unless index is negative.
 *
 * Throws a C++ exception of type `const char*`, a message such as "ERROR:
 * gcap.pVCap->QueryInterface failed", when the camera is listed but can't be opened; the selection
 * has then changed and no channel is open. borvan_select_device does not throw.
 * @param index 0 to UsbGetDeviceNum() - 1
 * @return false for an index outside that range, which changes nothing. Otherwise true, even if
 *   the camera has no vendor channel: it is then selected with no channel open, and every access
 *   fails (kBorvanSystemNoChannel). To check, read any register with UsbRegisterRead.
 */
bool UsbSelectDevice(int32_t index);

/**
 * @fn bool borvan_select_device(int32_t index, const char** message)
 * Selects a camera as UsbSelectDevice does, but returns a message where UsbSelectDevice throws.
 *
 * In C++ and in Microsoft's compiler the function is inline. Other C programs compile the file
 * borvan_select_device.cpp, beside this header, with their own sources, and link with the C++
 * compiler (g++).
 * @param index 0 to UsbGetDeviceNum() - 1
 * @param message receives the reason when the camera is listed but can't be opened, otherwise null:
 *   a constant text, valid as long as the library is loaded; may itself be null
 * @return true when UsbSelectDevice returned true. False with a null message: there is no such
 *   camera. False with a message: the camera can't be opened (the selection has changed) or memory
 *   ran out.
 */
#if defined(_MSC_VER)
/* Only the library's compiler knows which text was thrown. */
BORVAN_USB_INLINE bool borvan_select_device(int32_t index, const char** message) {
  /* The library's exceptions, and those of a library that was built with Microsoft's compiler. */
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

/**
 * Ends the instance. Running jobs continue until they end; their progress can't be seen. Before the
 * instance ends, register 0x1A3 of the selected camera is read once more. Needs an instance.
 * @return true
 */
bool UsbDestroyUSB(void);

/* ---- Single accesses ------------------------------------------------------------------------- */

/**
 * Reads a register of the chip.
 * @param address register address
 * @param value receives the value, 8 or 32 bits; unchanged when the access fails or gets no answer
 * @param flag kBorvanRegisterWide: 32 bits; any other value: 8 bits
 * @return true when the last request and the last reply were transferred. This does not prove that
 *   the chip answered: a reply to another command also gives true and leaves *value as it was. To
 *   detect it, first set *value to something impossible. Without an instance: false.
 */
bool UsbRegisterRead(uint32_t address, uint32_t* value, uint8_t flag);

/**
 * Writes a register of the chip.
 * @param address register address
 * @param value the value; only its low 8 bits when flag is kBorvanRegisterByte
 * @param flag kBorvanRegisterByte: 8 bits; any other value: 32 bits
 * @return true when the last of its transfers succeeded; the ones before are not checked. Without
 * an instance: false.
 */
bool UsbRegisterWrite(uint32_t address, uint32_t value, uint8_t flag);

/**
 * Reads a register of a device on the I2C bus.
 * @param device_id slave address, sent as it is (the low 8 bits, not shifted)
 * @param register_address register address, as wide as the mode says
 * @param value receives the value; unchanged on failure and for a mode outside 0 to 5
 * @param mode kBorvanI2cAddress8Data8 (0) to kBorvanI2cAddress32Data32 (5). It is not checked: its
 *   low 8 bits are sent as they are. With any other mode, the register address has 8 bits.
 * @param option sent to the chip as it is (the low 8 bits); 0 unless the chip's maker says
 * otherwise
 * @return true when the transfers succeeded. Without an instance: false.
 */
bool UsbI2cRead(uint32_t device_id, uint32_t register_address, uint32_t* value, int32_t mode,
                uint32_t option);

/**
 * Writes a register of a device on the I2C bus.
 * @param device_id slave address, sent as it is (the low 8 bits, not shifted)
 * @param register_address register address, as wide as the mode says
 * @param value the value, cut to the data width of the mode
 * @param mode 0 to 5, not checked, as for UsbI2cRead. With any other mode, address and value have 8
 *   bits.
 * @param option sent to the chip as it is (the low 8 bits); 0 unless the chip's maker says
 * otherwise
 * @return true when the transfer succeeded. Without an instance: false.
 */
bool UsbI2cWrite(uint32_t device_id, uint32_t register_address, uint32_t value, int32_t mode,
                 uint32_t option);

/**
 * Reads four bytes of flash.
 * @param address flash byte address; need not be aligned
 * @param value receives the four bytes, the one at address in bits 24 to 31; 0 when the read failed
 * @return true whenever an instance exists, even when the read failed: only the value 0 shows the
 *   failure, and flash can contain 0. Without an instance: false.
 */
bool UsbFlashRead(uint32_t address, uint32_t* value);

/**
 * Programs four bytes of flash, which can only clear bits: erase the sector first.
 * @param address flash byte address
 * @param value the four bytes, the one at address in bits 24 to 31
 * @return true when the transfer succeeded; it neither reads back nor waits for the flash. Without
 *   an instance: false.
 */
bool UsbFlashWrite(uint32_t address, uint32_t value);

/**
 * Erases the flash sector of 4096 bytes at an address. The address is sent as it is: if it is not a
 * multiple of 4096, the device decides what is erased.
 * @param address flash byte address
 * @return true when the transfer succeeded; it does not wait for the erase. Without an instance:
 *   false.
 */
bool UsbFlashErase(uint32_t address);

/* ---- Jobs ------------------------------------------------------------------------------------ */

/**
 * @defgroup jobs Jobs
 *
 * Each function returns true when its job was started. It returns false without an instance, or if
 * the file name is empty or, for the jobs that read a file, no such file exists; GetProgressInfo
 * then shows kBorvanFileError. Each function throws std::system_error if no thread can be created;
 * its code().value() is EAGAIN. (The category of the code is an object of the library's own C++
 * runtime and never equals one of the host's.)
 *
 * Run one job at a time: the library does not prevent a second one, and both would report into the
 * same progress.
 *
 * The extension of a file to be written decides its format: what follows the last "." must be
 * "txt", in lower case, for text; everything else gives raw bytes. The file is created, or emptied
 * if it exists, before the first transfer. It is written after the job has reported 100: wait until
 * it has its whole length and is closed.
 *
 * UsbFlashWriteFile and UsbFlashQuickReadFile report percentages. The other four report their end
 * only.
 *
 * Any job can end with kBorvanSystemOutOfMemory or kBorvanSystemFail. "The device's own code" means
 * a negative code of the camera's driver, passed on as it comes.
 * @{
 */

/**
 * Programs the bytes of a file into flash. The job erases every sector of 4096 bytes, counted from
 * start_address, that the file reaches into, then writes packets of 60 bytes. It fills the last
 * packet with 0x00, so up to 59 bytes after the image become 0. If the image ends less than that
 * before the end of a sector, this includes bytes of the next sector. It does not send packets that
 * are all 0xFF. It does not read back.
 *
 * Failures: kBorvanFlashEraseFailed (also when no camera is open), kBorvanFastInterfaceFailed (the
 * control for packets gives no length), kBorvanFlashWriteFailed (a packet failed four times),
 * kBorvanFileError (the file can't be read). What was erased and written before the failure stays.
 * @param file_name file of raw bytes; it must exist. Its length is not checked against the flash.
 * An empty file succeeds and programs nothing; with no camera open it fails with
 *   kBorvanFastInterfaceFailed.
 * @param start_address flash byte address, best a multiple of 4096: the job does not align sectors
 * @return true when the job was started
 */
bool UsbFlashWriteFile(const char* file_name, uint32_t start_address);

/**
 * Dumps flash into a file, raw or as lines "00001008h: 00 01 02 03 04 05 06 07;".
 *
 * A transfer that fails is repeated without limit, except in a range of less than 8 bytes, which is
 * read once: set a time limit. In text form, the last line of a range whose length is not a
 * multiple of 8 shows 00 for the missing bytes.
 *
 * Failures: kBorvanLengthQueryFailed (also when no camera is open), kBorvanInvalidAddress (end
 * below start), kBorvanFastInterfaceFailed (the control for fast reads gives no length),
 * kBorvanFileError, and for less than 8 bytes the device's own code. The file stays empty after all
 * of them but kBorvanFileError: a full disk can leave a part.
 * @param file_name file to be written
 * @param start_address first flash byte address
 * @param end_address last flash byte address, included
 * @return true when the job was started
 */
bool UsbFlashQuickReadFile(const char* file_name, uint32_t start_address, uint32_t end_address);

/**
 * Reads a run of 8-bit chip registers into a file: lines "0x0100, 0x5a," after two lines with the
 * page (0xfffd: bits 24 to 31, 0xfffe: bits 16 to 23 of start_address), or one raw byte per
 * register.
 *
 * One transfer reads 56 registers, and the job's result is that of the last transfer. A failure of
 * an earlier one is not reported: its registers get values of the reply before. Read at most 56
 * registers per job (kBorvanRegistersPerTransfer); then a failed reply fails the job and leaves the
 * file empty.
 *
 * Failures: kBorvanSystemNoChannel (no camera is open), kBorvanSystemInvalidData, kBorvanFileError,
 * or the device's own code.
 * @param file_name file to be written
 * @param start_address first register
 * @param end_address last register, included; only its low 16 bits count: the run stays in the page
 *   of start_address. If they are below those of start_address, the job succeeds with an empty
 * file.
 * @return true when the job was started
 */
bool UsbRegisterReadFile(const char* file_name, uint32_t start_address, uint32_t end_address);

/**
 * Writes the registers of a list file: lines "0x3012,0x5a,", comment lines that begin with "//",
 * 0xffff for a pause of up to 255 ms. The first entry that is not a pause must be 0xfffd. All
 * pauses are made before the first register is written.
 *
 * Ends with a positive status instead of 100 when the last transfer returned one, and with 11 when
 * nothing was written because the list does not begin with 0xfffd: see kBorvanProgressNotice.
 *
 * Failures: kBorvanSystemNoChannel (no camera is open), kBorvanSystemInvalidData or the device's
 * own code (the control gives no length), kBorvanFastInterfaceFailed (a packet failed). What was
 * written before stays.
 * @param file_name list file; it is read before the call returns. If it can't be read, holds no
 *   entry or holds a line without a value, the call returns false (kBorvanFileError).
 * @return true when the job was started
 */
bool UsbRegisterWriteFile(const char* file_name);

/**
 * Reads a run of registers of a device on the I2C bus into a file. Note the position of file_name.
 *
 * A chip with kBorvanFeatureFastI2c reads 56 registers per transfer, and the job's result is that
 * of the last transfer: as for UsbRegisterReadFile, read at most 56 registers per job. Other chips
 * read one by one, with register addresses of 16 bits, and stop at the first failed reply.
 *
 * Failures: kBorvanSystemNoChannel (no camera is open), kBorvanSystemInvalidData, kBorvanFileError,
 * or the device's own code. The file stays empty after all of them but kBorvanFileError.
 * @param start_address first register
 * @param end_address last register, included
 * @param file_name file to be written: raw, a byte per register, or lines "0x3012,0x5a,". Of wider
 *   values both hold the low 8 bits only. In modes above 2 a text file stays empty although the job
 *   succeeds.
 * @param slave slave address, sent as it is (the low 8 bits)
 * @param mode 0 to 5, kBorvanI2cAddress8Data8 and on. It is not checked: other modes give a request
 *   that no chip defines.
 * @return true when the job was started
 */
bool UsbI2CReadFile(uint32_t start_address, uint32_t end_address, const char* file_name,
                    int32_t slave, uint32_t mode);

/**
 * Writes the I2C registers of a list file: lines "0x3012,0x5a,". Before the first register there
 * must be an entry 0xfff8 with the slave address and an entry 0xfffe with the width code.
 *
 * Failures: kBorvanFileError (also when the list holds no entry or a line without a value: the call
 * itself has returned true), kBorvanSlaveAndWidthMissing, kBorvanLengthQueryFailed or, on a chip
 * with kBorvanFeatureFastI2c, kBorvanFastInterfaceFailed (the control gives no length; also when no
 * camera is open), or the device's own code. What was written before stays.
 * @param file_name list file; it must exist
 * @param option sent to the chip (the low 4 bits) if it has kBorvanFeatureFastI2c
 * @return true when the job was started
 */
bool UsbI2CWriteFile(const char* file_name, uint32_t option);

/**
 * The progress that was reported last: the status in the high 32 bits, the percentage in the low 32
 * bits. Read it with borvan_progress_state, borvan_progress_status and borvan_progress_percent.
 * borvan_wait_for_job waits for a job; this header includes borvan_wait_for_job.h. It handles the
 * following, which a program that polls itself must handle:
 * - Starting a job resets nothing: until its first report the value is what the previous job left,
 *   including its failure or its 100. A failure stays until another report.
 * - Three seconds after a 100 the value is set to 0, whatever it is by then. So the clearing for
 * one job can remove the end of the next one, and a program that polls less often can miss the 100.
 * - A job that writes a file can report kBorvanFileError after its 100, on a full disk for example.
 * - The percentage of a dump of 8 to 807 bytes passes 100 (status 1, no failure). A dump of less
 *   than 8 bytes reports 100 before a failure.
 * - UsbIniDevice and UsbSelectDevice before a job give it a progress that nothing else changes. An
 *   instance that is replaced keeps its camera open until the process ends: do this rarely.
 * @return the progress; 0 without an instance. Any thread may call this function.
 */
uint64_t GetProgressInfo(void);

/** @} */

#ifdef __cplusplus
} /* extern "C" */
#endif

#include "borvan_wait_for_job.h"
#ifdef __clang__
#pragma clang diagnostic pop
#endif
/* NOLINTEND(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
