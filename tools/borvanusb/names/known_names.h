#pragma once

#include <memory>

#include "command/context.h"
#include "names/register_names.h"

namespace borvanusb {

// The names of a given profile, without opening a camera. Otherwise those of the chosen camera.
// Throws Failure if there are none.
std::shared_ptr<const RegisterNames> KnownNames(Context& context);

}  // namespace borvanusb
