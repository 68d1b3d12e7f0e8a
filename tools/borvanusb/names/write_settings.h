#pragma once

#include <span>

#include "camera/camera.h"
#include "command/context.h"
#include "names/register_setting.h"

namespace borvanusb {

// Writes settings in order, prints each one and fills "writes" of the result. Throws the exceptions
// of WriteSetting(); the message has the number of settings already written.
void WriteSettings(std::span<const RegisterSetting> settings, bool verify, Camera& camera,
                   Context& context);

}  // namespace borvanusb
