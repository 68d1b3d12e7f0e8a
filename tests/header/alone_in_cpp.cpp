/* Nothing stands before the header: it must bring all that it needs. Compiled as C too, for
 * Microsoft's ABI. */
#include "borvan_usb.h"

const char* HeaderTextOf(int32_t result);
const char* HeaderTextOf(int32_t result) {
  uint32_t status =
      result < 0 ? kBorvanSystemFail : borvan_wait_for_job(kBorvanJobOther, 0, 1, NULL, NULL);
  switch (status) {
    case kBorvanFileError:
      return "file";
    case kBorvanSystemNoChannel:
      return "no camera";
    default:
      return status == kBorvanWaitTimeLimit ? "time limit" : borvan_status_text(status);
  }
}
