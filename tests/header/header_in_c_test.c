// The public header as a C host sees it: types, layout, constants, helpers.
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "borvan_usb.h"
#include "fake_library.h"

// The types of the functions, taken without calling them: no library is linked.
_Static_assert(_Generic(&UsbIniDevice, int32_t (*)(void) : 1, default : 0), "UsbIniDevice");
_Static_assert(_Generic(&UsbUpdateDevice, bool (*)(void) : 1, default : 0), "UsbUpdateDevice");
_Static_assert(_Generic(&UsbRegisterRead, bool (*)(uint32_t, uint32_t*, uint8_t) : 1, default : 0),
               "UsbRegisterRead");
_Static_assert(_Generic(&UsbGetAllDeviceInfo, UsbDeviceInfo* (*)(void) : 1, default : 0),
               "UsbGetAllDeviceInfo");
_Static_assert(_Generic(&UsbGetSelectDeviceInfo, UsbDeviceInfo (*)(void) : 1, default : 0),
               "UsbGetSelectDeviceInfo");
_Static_assert(_Generic(&borvan_select_device, bool (*)(int32_t, const char**) : 1, default : 0),
               "borvan_select_device");
_Static_assert(_Generic(&GetProgressInfo, uint64_t (*)(void) : 1, default : 0), "GetProgressInfo");

static int failures = 0;

static void Expect(bool holds, const char* what) {
  if (!holds) {
    ++failures;
    fprintf(stderr, "failed: %s\n", what);
  }
}

static void ExpectText(const char* actual, const char* expected) {
  if (actual == NULL || strcmp(actual, expected) != 0) {
    ++failures;
    fprintf(stderr, "failed: expected \"%s\", got \"%s\"\n", expected, actual ? actual : "(null)");
  }
}

static void RecordHasTheLayoutOfTheLibrary(void) {
  Expect(sizeof(UsbDeviceInfo) == 248, "record of 248 bytes");
  Expect(offsetof(UsbDeviceInfo, path) == 0, "path at 0");
  Expect(offsetof(UsbDeviceInfo, name) == 120, "name at 120");
  Expect(offsetof(UsbDeviceInfo, vendor_id) == 240, "vendor ID at 240");
  Expect(offsetof(UsbDeviceInfo, product_id) == 244, "product ID at 244");
  Expect(sizeof(bool) == 1, "bool of one byte");
}

static void RecordIsReadWithoutTerminators(void) {
  UsbDeviceInfo info;
  memset(&info, 0, sizeof info);
  strcpy(info.path, "\\\\?\\usb#vid_1e4e");
  memset(info.name, 'n', sizeof info.name);
  memcpy(info.vendor_id, "012F", 4);
  memcpy(info.product_id, "A9c0", 4);

  char text[kBorvanTextFieldSize + 1];
  borvan_copy_text(info.path, text);
  ExpectText(text, "\\\\?\\usb#vid_1e4e");

  memset(text, 'x', sizeof text);
  borvan_copy_text(info.name, text);
  Expect(strlen(text) == 120, "a full field gives its 120 characters");
  Expect(strspn(text, "n") == 120, "and nothing of what stands behind it");

  char id[kBorvanIdFieldSize + 1];
  borvan_copy_id(info.vendor_id, id);
  ExpectText(id, "012F");
  Expect(borvan_id_number(info.vendor_id) == 0x012F, "upper-case digits");
  Expect(borvan_id_number(info.product_id) == 0xA9C0, "lower-case digits");
}

static void MessagesAreAsTheLibraryHasThem(void) {
  ExpectText(borvan_status_message(kBorvanFlashEraseFailed), "Flash failed to erase");
  ExpectText(borvan_status_message(kBorvanFlashWriteFailed), "Flash write  failed");
  ExpectText(borvan_status_message(kBorvanFileFormatFailed), "File format failed");
  Expect(borvan_status_message(kBorvanSystemFail) == NULL, "a system code has no message");
  ExpectText(borvan_status_text(kBorvanFlashEraseFailed), "Flash failed to erase");
  ExpectText(borvan_status_text(kBorvanSystemNoChannel), "no camera is open");
}

static void CodesServeInASwitch(void) {
  const uint32_t status = 0xE000000Au;
  bool found = false;
  switch (status) {
    case kBorvanFileFormatFailed:
      break;
    case kBorvanFileError:
      found = true;
      break;
    default:
      break;
  }
  Expect(found, "a status code is a case of a switch");
}

static void ProgressIsSplitIntoItsHalves(void) {
  const uint64_t failed = 0xE000000A00000000u;  // status 0xE000000A, 0 %
  Expect(borvan_progress_status(failed) == -0x1FFFFFF6, "the status is signed");
  Expect(borvan_progress_percent(failed) == 0, "a failure shows 0 %");
  Expect(borvan_progress_state(failed) == kBorvanProgressFailed, "a negative status is a failure");
  Expect(borvan_progress_percent(42u) == 42, "the percentage stands low");
  Expect(borvan_progress_state(42u) == kBorvanProgressRunning, "42 % runs");
  Expect(borvan_progress_state(100u) == kBorvanProgressDone, "100 % is the end");
}

static void SelectionReturnsInsteadOfThrowing(void) {
  const char* message = "untouched";
  Expect(borvan_select_device(kFakeCamera, &message), "the camera is selected");
  Expect(message == NULL, "a selected camera has no message");

  message = "untouched";
  Expect(!borvan_select_device(kNoFakeCamera, &message), "there is no such camera");
  Expect(message == NULL, "a missing camera has no message");

  Expect(!borvan_select_device(kFakeCameraThatIsGone, &message), "the camera can't be opened");
  ExpectText(message, "ERROR: the fake camera is gone");

  Expect(!borvan_select_device(kFakeCameraWithoutMemory, &message), "there is no memory");
  ExpectText(message, "ERROR: an exception other than a message, such as out of memory");

  Expect(!borvan_select_device(kFakeCameraThatIsGone, NULL), "a message need not be taken");
  Expect(borvan_select_device(kFakeCamera, NULL), "of a selected camera neither");
}

int main(void) {
  RecordHasTheLayoutOfTheLibrary();
  RecordIsReadWithoutTerminators();
  MessagesAreAsTheLibraryHasThem();
  CodesServeInASwitch();
  ProgressIsSplitIntoItsHalves();
  SelectionReturnsInsteadOfThrowing();
  if (failures == 0) {
    puts("the header serves a C host");
  }
  return failures == 0 ? 0 : 1;
}
