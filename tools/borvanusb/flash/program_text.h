#pragma once

#include "flash/engine/image.h"
#include "flash/report.h"
#include "output/output.h"

namespace borvanusb {

// Prints what `flash program` would do, for --dry-run.
void ShowPlan(const ProgramOutcome& outcome, Output& output);

// Prints what `flash program` did.
void ShowResult(const Image& image, const ProgramOutcome& outcome, Output& output);

}  // namespace borvanusb
