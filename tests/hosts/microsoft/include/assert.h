#pragma once

// What the public header uses of the C runtime's assert.h.

#ifndef __cplusplus
#define static_assert _Static_assert
#endif
