#pragma once

#include "jobs/job_records.h"

namespace borvan {

// The workers of the flash jobs. Each makes the final report of its job and clears the job flags
// before it returns. Throws FileError if an opened file can't be read or written.

// Programs an image file.
void RunFlashWriteJob(FlashWriteJob& job);

// Reads a range into a dump file. The final report comes before the file is written; after a failed
// read the file contains what was read before.
void RunFlashQuickReadJob(FlashQuickReadJob& job);

}  // namespace borvan
