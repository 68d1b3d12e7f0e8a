#pragma once

// The kernel-streaming and DirectShow declarations, in the order that their headers need.

#include <windows.h>
// windows.h must come first.
#include <objbase.h>
#include <strmif.h>
// The interfaces of ks.h need those of strmif.h.
#include <ks.h>
#include <ksmedia.h>
#include <ksproxy.h>
// Codes of strmif.h's methods.
#include <vfwmsgs.h>

#include "com/topology_info.h"
