#include "registers/masked_write.h"

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "base/numbers.h"
#include "output/output.h"

namespace borvanusb {

namespace {

constexpr std::uint32_t kAllBits = 0xFFFFFFFF;

}  // namespace

void CheckMask(const RegisterWrite& write) {
  if (write.mask && (write.value & ~*write.mask) != 0) {
    throw Failure(
        ExitCode::kUsage,
        Format("VALUE: {} has bits outside --mask {}", Hex(write.value), Hex(*write.mask)),
        "Bits outside the mask must be 0; they keep what the register holds.");
  }
}

void WriteMasked(const RegisterWrite& write, const std::function<std::uint32_t()>& read,
                 const std::function<void(std::uint32_t)>& write_value, Context& context) {
  std::optional<std::uint32_t> before;
  std::uint32_t value = write.value;
  if (write.mask) {
    before = read();
    value = (*before & ~*write.mask) | write.value;
  }
  write_value(value);
  if (write.verify) {
    // Other bits may be changed by the chip itself, such as status bits.
    const std::uint32_t wanted = write.mask.value_or(kAllBits);
    std::uint32_t found = read();
    // A write is sent to the chip in parts. If one part is lost, bits outside the mask change, and
    // a second write corrects them. If the chip itself changed them, the second write does no harm.
    const auto others_changed = [&] { return before && ((found ^ *before) & ~wanted) != 0; };
    if (others_changed()) {
      write_value(value);
      found = read();
    }
    if (others_changed()) {
      context.output.Note(Format("note: bits outside the mask changed, too: {} reads back as {}",
                                 write.name, Hex(found, write.value_digits)));
    }
    if ((found & wanted) != (value & wanted)) {
      throw Failure(ExitCode::kVerify,
                    Format("{} reads back as {} after {} was written", write.name,
                           Hex(found, write.value_digits), Hex(value, write.value_digits)),
                    "It may be read-only, or change by itself.");
    }
  }
  const std::string change = before ? Format("{} -> ", Hex(*before, write.value_digits)) : "";
  context.output.Line(Format("{}  {}{}{}", Hex(write.address, write.address_digits), change,
                             Hex(value, write.value_digits), write.verify ? "  verified" : ""));
  context.result["address"] = write.address;
  context.result["before"] = before ? nlohmann::ordered_json(*before) : nlohmann::ordered_json();
  context.result["value"] = value;
  context.result["verified"] = write.verify;
}

}  // namespace borvanusb
