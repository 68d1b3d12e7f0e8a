#include "registers/load_several.h"

#include <nlohmann/json.hpp>

#include "base/format.h"
#include "command/camera_work.h"

namespace borvanusb {

ExitCode LoadForSeveral(bool all, Context& context) {
  const auto summary = [](const nlohmann::ordered_json& result) {
    const std::string written =
        Format("{} written", Count(result.value("registers", std::uint64_t{0}), "register"));
    const auto wrong = result.value("wrong", nlohmann::ordered_json::array()).size();
    const auto verified = result.find("verified");
    if (verified == result.end() || !verified->is_boolean()) {
      return written;
    }
    return wrong == 0 ? Format("{}, read back equal", written)
                      : Format("{}, {} read back differently", written, wrong);
  };
  return RunForSeveral(
      {[&](const CameraIdentity&) { return WordsForOne(context.common.words); }, summary}, all,
      context);
}

}  // namespace borvanusb
