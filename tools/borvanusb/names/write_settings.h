#pragma once

#include <span>

#include "camera/camera.h"
#include "command/context.h"
#include "names/register_setting.h"

namespace borvanusb {

// Writes settings one after the other, prints each and fills "writes" of the result. Throws Failure
// as WriteSetting does; the message says how many were written before.
void WriteSettings(std::span<const RegisterSetting> settings, bool verify, Camera& camera,
                   Context& context);

}  // namespace borvanusb
