#pragma once

#include "jobs/job_records.h"

namespace borvan {

// The workers of the flash jobs. Each makes the job's final report and clears the job flags before
// it returns. Throws FileError when a file that was opened fails.

// Programs an image file.
void RunFlashWriteJob(FlashWriteJob& job);

// Reads a range into a dump file. The final report comes before the file is written; after a failed
// read the file holds what was read before.
void RunFlashQuickReadJob(FlashQuickReadJob& job);

}  // namespace borvan
