// Nothing stands before the header: it must bring all that it needs.
#include "borvan_usb.h"
