/* Nothing stands before the header: it must bring all that it needs. Compiled in each version of C.
 */
#include "borvan_usb.h"

/* A constant of each enumeration where C wants a constant expression. */
typedef struct HeaderAloneInC {
  UsbDeviceInfo camera;
  char flash_piece[kBorvanFlashPieceSize];
  char run[kBorvanRegistersPerTransfer];
  char path[kBorvanTextFieldSize + 1];
} HeaderAloneInC;

int HeaderNumberOf(uint32_t status);
int HeaderNumberOf(uint32_t status) {
  switch (status) {
    case kBorvanFlashEraseFailed:
      return 1;
    case kBorvanLengthQueryFailed:
      return 2;
    case kBorvanFlashWriteFailed:
      return 3;
    case kBorvanFileError:
      return 10;
    case kBorvanSystemNoChannel:
      return 20;
    case kBorvanWaitTimeLimit:
      return 30;
    default:
      return status == kBorvanWaitEndMissed ? 31 : 0;
  }
}

uint32_t HeaderStatusOf(int started);
uint32_t HeaderStatusOf(int started) {
  static const uint32_t statuses[] = {kBorvanSystemFail, kBorvanSystemOutOfMemory};
  uint32_t status = kBorvanFileError;
  if (started == 1) {
    status = borvan_wait_for_job(kBorvanJobOther, borvan_before_job(), 1000, NULL, NULL);
  }
  return started == 2 ? statuses[0] : status;
}
