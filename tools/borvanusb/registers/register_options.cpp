#include "registers/register_options.h"

#include "base/format.h"

namespace borvanusb {

void RefuseCamera(const GivenOptions& given, const std::string& why) {
  for (const char* const option : {"--camera", "--trace", "--wait"}) {
    if (given.Has(option)) {
      throw WrongUse(Format("{}: does not apply to {}", option, why));
    }
  }
}

}  // namespace borvanusb
