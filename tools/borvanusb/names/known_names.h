#pragma once

#include <memory>

#include "command/context.h"
#include "names/register_names.h"

namespace borvanusb {

// The names of a profile that is given, without a camera; else those of the chosen camera. Throws
// Failure when there are none.
std::shared_ptr<const RegisterNames> KnownNames(Context& context);

}  // namespace borvanusb
