#include <nlohmann/json.hpp>

#include "camera_choice.h"
#include "commands/commands.h"
#include "files.h"
#include "flash/report.h"
#include "flash/sha256.h"
#include "flash/text_dump.h"
#include "host.h"
#include "output/output.h"
#include "output/progress.h"

ExitCode Run(const FlashReadCommand& command, Context& context) {
  CheckWritable(command.file);
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto camera = context.host.OpenCamera(identity);
  context.progress.Begin("read", command.range.Size());
  const std::vector<std::uint8_t> bytes =
      camera->ReadFlash(command.range.first, command.range.Size(),
                        [&](std::uint64_t done) { context.progress.Advance(done); });
  context.progress.Done();
  const bool as_text = command.file.ends_with(".txt");
  if (as_text) {
    WriteWholeText(command.file, TextDump(command.range.first, bytes));
  } else {
    WriteWholeFile(command.file, bytes);
  }
  const std::string digest = Sha256(bytes);
  context.output.Line("Read " + SizeText(bytes.size()) + " from " + Text(command.range) + " into " +
                      command.file + ", SHA-256 " + digest + ".");
  context.result = {{"camera", ToJson(identity)},
                    {"first", command.range.first},
                    {"last", command.range.last},
                    {"size", bytes.size()},
                    {"file", command.file},
                    {"form", as_text ? "text" : "raw"},
                    {"sha256", digest}};
  return ExitCode::kDone;
}
