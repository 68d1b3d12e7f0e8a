#pragma once

#include "flash/engine/image.h"
#include "flash/report.h"
#include "output/output.h"

namespace borvanusb {

// What `flash program` would do, for --dry-run.
void ShowPlan(const ProgramOutcome& outcome, Output& output);

// What it did.
void ShowResult(const Image& image, const ProgramOutcome& outcome, Output& output);

}  // namespace borvanusb
