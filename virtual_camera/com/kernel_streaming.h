#pragma once

// The kernel-streaming and DirectShow declarations, in the order that their headers need.

#include <windows.h>
// windows.h must come first.
#include <objbase.h>
#include <strmif.h>
// The interfaces of strmif.h must be known to those of ks.h.
#include <ks.h>
#include <ksmedia.h>
#include <ksproxy.h>
// Codes of strmif.h's methods.
#include <vfwmsgs.h>

#include "com/topology_info.h"
