// reg write

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "output/output.h"
#include "registers/masked_write.h"
#include "registers/register_options.h"
#include "registers/register_read.h"
#include "registers/write.h"

namespace borvanusb {

namespace {

constexpr int kAddressDigits = 4;

int ValueDigits(bool wide) {
  return wide ? 8 : 2;
}

}  // namespace

ExitCode Run(const RegWriteCommand& command, Context& context) {
  const RegisterWidth width = command.wide ? RegisterWidth::kWide : RegisterWidth::kByte;
  const RegisterWrite write{command.address,
                            command.value,
                            command.mask,
                            command.verify,
                            Format("register {}", Hex(command.address, kAddressDigits)),
                            kAddressDigits,
                            ValueDigits(command.wide)};
  CheckMask(write);
  const ReservedCamera camera = ReserveChosenCamera(context);
  context.result = {{"wide", command.wide}};
  WriteMasked(
      write, [&] { return camera->ReadRegister(command.address, width); },
      [&](std::uint32_t value) { camera->WriteRegister(command.address, value, width); }, context);
  return ExitCode::kDone;
}

CommandRule RegWriteRule() {
  RuleOf<RegWriteCommand> rule({"reg", "write"}, "Writes a register of the camera's chip.");
  AddAddressAndValue(rule);
  rule.AddFlag("--wide", "a register of 32 bits instead of 8", &RegWriteCommand::wide);
  AddMaskAndVerify(rule);
  rule.Check([](const RegWriteCommand& command, const GivenOptions&) {
    if (!command.wide) {
      const std::string where = "a register of 8 bits without --wide";
      CheckFits("VALUE", command.value, kByteBits, where);
      CheckFits("--mask", command.mask.value_or(0), kByteBits, where);
    }
  });
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb reg write 0x1a3 0x20 --mask 0x20 --verify");
  return rule.Take();
}

}  // namespace borvanusb
