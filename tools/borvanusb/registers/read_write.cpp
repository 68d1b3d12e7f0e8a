// reg read, reg write

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "command/camera_work.h"
#include "command/commands.h"
#include "output/output.h"
#include "registers/masked_write.h"
#include "registers/register_read.h"

namespace borvanusb {

namespace {

constexpr int kAddressDigits = 4;

int ValueDigits(bool wide) {
  return wide ? 8 : 2;
}

}  // namespace

ExitCode Run(const RegReadCommand& command, Context& context) {
  const auto camera = OpenChosenCamera(context);
  const RegisterRead read = ReadRegisters(context, *camera, command.range, command.wide);
  for (std::size_t i = 0; i < read.values.size(); ++i) {
    context.output.Line(Hex(command.range.first + i, kAddressDigits) + "  " +
                        Hex(read.values[i], ValueDigits(command.wide)));
  }
  context.result = {{"wide", command.wide},
                    {"checked", read.checked},
                    {"registers", ValuesJson(command.range, read.values)}};
  return ExitCode::kDone;
}

ExitCode Run(const RegWriteCommand& command, Context& context) {
  const RegisterWidth width = command.wide ? RegisterWidth::kWide : RegisterWidth::kByte;
  const RegisterWrite write{command.address,
                            command.value,
                            command.mask,
                            command.verify,
                            "register " + Hex(command.address, kAddressDigits),
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

}  // namespace borvanusb
