#include "registers/register_options.h"

namespace borvanusb {

void RefuseCamera(const GivenOptions& given, const std::string& why) {
  for (const char* const option : {"--camera", "--trace"}) {
    if (given.Has(option)) {
      throw WrongUse(std::string(option) + ": does not apply to " + why);
    }
  }
}

}  // namespace borvanusb
