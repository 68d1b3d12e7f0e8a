#include "names/known_names.h"

#include "camera/camera_choice.h"
#include "names/register_words.h"
#include "profile/profile_choice.h"
#include "profile/profile_folder.h"

namespace borvanusb {

std::shared_ptr<const RegisterNames> KnownNames(Context& context) {
  const std::string given = GivenProfile(context.common, context.host);
  if (!given.empty() && context.common.cameras.empty()) {
    return std::make_shared<const RegisterNames>(LoadProfile(given));
  }
  return NamesNeeded(ChosenCamera(context.host, context.common.cameras), context);
}

}  // namespace borvanusb
