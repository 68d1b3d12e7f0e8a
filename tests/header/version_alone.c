/* Nothing stands before the header: it must bring all that it needs. Compiled as C and as C++. */
#include "borvan_library_version.h"

#if BORVAN_USB_VERSION_NUMBER < BORVAN_USB_VERSION_NUMBER_OF(0, 1, 0)
#error "the versions can't be compared by the preprocessor"
#endif

int HeaderLibraryIsOld(void);
int HeaderLibraryIsOld(void) {
  return borvan_library_version() < BORVAN_USB_VERSION_NUMBER;
}
