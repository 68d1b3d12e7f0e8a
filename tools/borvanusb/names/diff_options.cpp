#include "names/diff_options.h"

#include "base/format.h"

namespace borvanusb {

void CheckDiffSides(const std::string& left, const std::string& right, const GivenOptions& given) {
  const DiffSide sides[] = {DiffSideOf(left), DiffSideOf(right)};
  if (sides[0].source == DiffSource::kCamera && left == right) {
    throw WrongUse(Format("B: {} is given twice; a file by that name is ./{}", right, right));
  }
  if (sides[0].source != DiffSource::kFile || sides[1].source != DiffSource::kFile) {
    return;
  }
  for (const char* const option : {"--camera", "--timeout", "--trace"}) {
    if (given.Has(option)) {
      throw WrongUse(
          Format("{}: does not apply to two lists, which are compared without a camera", option));
    }
  }
}

}  // namespace borvanusb
