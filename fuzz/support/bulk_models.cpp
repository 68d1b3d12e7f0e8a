#include <algorithm>

#include "protocol/flash_image.h"
#include "protocol/i2c_list_plan.h"
#include "protocol/register_blocks.h"
#include "protocol/register_list_plan.h"
#include "support/operation_models.h"

namespace borvan_fuzz {
namespace {

constexpr auto kEraseFailed = static_cast<borvan::Result>(0xE0000001);
constexpr auto kLengthQueryFailed = static_cast<borvan::Result>(0xE0000002);
constexpr auto kWriteFailed = static_cast<borvan::Result>(0xE0000003);
constexpr auto kInvalidAddress = static_cast<borvan::Result>(0xE0000004);
constexpr auto kFastInterfaceFailed = static_cast<borvan::Result>(0xE0000007);
constexpr auto kSlaveOrWidthMissing = static_cast<borvan::Result>(0xE0000008);
constexpr borvan::Result kNoListHeader = 11;

// A request of 8 bytes in a block that keeps the previous reply. The reply has 56 values after 8
// bytes.
template <typename PutHead>
borvan::Result Receive56(Dialogue& dialogue, List& list, std::uint64_t start, std::uint64_t end,
                         const PutHead& put_head) {
  put_head(std::span(dialogue.Block()).first<8>());
  dialogue.Send({});
  const borvan::Result result = dialogue.Receive();
  for (std::uint32_t i = 0; i < 56 && start + i <= end; ++i) {
    list.push_back({static_cast<std::uint32_t>(start) + i, dialogue.Block().at(8 + i)});
  }
  return result;
}

}  // namespace

borvan::Result ModelRegisterReadList(Dialogue& dialogue, List& list, std::uint32_t start,
                                     std::uint32_t end) {
  borvan::Result result = dialogue.Query(7, 64);
  if (result < 0) {
    return result;
  }
  const std::uint32_t first = start & 0xFFFF;
  const std::uint32_t last = end & 0xFFFF;
  if (first <= last) {
    list.push_back({0xFFFD, start >> 24});
    list.push_back({0xFFFE, start >> 16 & 0xFF});
  }
  for (std::uint32_t at = first; at <= last; at += 56) {
    result = Receive56(dialogue, list, at, last, [&](std::span<std::uint8_t, 8> head) {
      borvan::PutRegisterBlockRead(head, start, static_cast<std::uint16_t>(at));
    });
  }
  return result;
}

borvan::Result ModelRegisterWriteList(Dialogue& dialogue, List list) {
  borvan::DropTrailingMarks(list);
  if (list.empty()) {
    return 0;
  }
  borvan::Result result = dialogue.Query(7, 64);
  if (result < 0) {
    return result;
  }
  if (!borvan::HasListHeader(list)) {
    return kNoListHeader;
  }
  for (const borvan::RegisterListBlock& block : borvan::PlanRegisterList(list).blocks) {
    const borvan::Result sent = dialogue.Send(block.packet);
    if (sent < 0) {
      return kFastInterfaceFailed;
    }
    result = block.keeps_result ? sent : result;
  }
  return result;
}

borvan::Result ModelI2cReadBlocks(Dialogue& dialogue, List& list, std::uint32_t slave,
                                  std::uint32_t start, std::uint32_t end, std::uint32_t mode) {
  borvan::Result result = dialogue.Query(6, 64);
  for (std::uint64_t at = start; at <= end; at += 56) {
    result = Receive56(dialogue, list, at, end, [&](std::span<std::uint8_t, 8> head) {
      borvan::PutI2cBlockRead(head, slave, mode, static_cast<std::uint32_t>(at));
    });
  }
  return result;
}

borvan::Result ModelI2cReadSteps(Dialogue& dialogue, List& list, std::uint32_t slave,
                                 std::uint32_t start, std::uint32_t end, std::uint32_t mode) {
  borvan::Result result = dialogue.Query(2, 4);
  for (std::uint64_t at = start; at <= end && result >= 0; ++at) {
    const auto address = static_cast<std::uint32_t>(at);
    dialogue.ClearBlock();
    dialogue.SendAll(borvan::I2cStepRead(slave, mode, address));
    result = dialogue.Receive();
    if (result >= 0) {
      list.push_back({address, dialogue.Block().at(1)});
    }
  }
  return result;
}

borvan::Result ModelI2cWritePackets(Dialogue& dialogue, const List& list, std::uint32_t option) {
  borvan::Result result = dialogue.Query(6, 64);
  if (result < 0) {
    return kFastInterfaceFailed;
  }
  const borvan::I2cListPlan plan = borvan::PlanI2cPackets(list, option);
  for (const borvan::Packet& packet : plan.packets) {
    result = dialogue.Send(packet);
    if (result < 0) {
      return result;
    }
  }
  const bool incomplete = std::any_of(
      plan.actions.begin(), plan.actions.end(),
      [](const auto& action) { return action.kind == borvan::I2cListAction::Kind::kIncomplete; });
  return incomplete ? kSlaveOrWidthMissing : result;
}

borvan::Result ModelI2cWriteSteps(Dialogue& dialogue, const List& list) {
  borvan::Result result = dialogue.Query(2, 4);
  if (result < 0) {
    return kLengthQueryFailed;
  }
  for (const borvan::I2cListStep& step : borvan::PlanI2cSteps(list)) {
    if (step.kind == borvan::I2cListStep::Kind::kIncomplete) {
      return kSlaveOrWidthMissing;
    }
    if (step.kind == borvan::I2cListStep::Kind::kWidth ||
        step.kind == borvan::I2cListStep::Kind::kWrite) {
      result = dialogue.SendAll(borvan::I2cStepWrite(step));
      if (result < 0) {
        return result;
      }
    }
  }
  return result;
}

borvan::Result ModelFlashReadImage(Dialogue& dialogue, Bytes& output, std::uint32_t start,
                                   std::uint32_t end) {
  if (dialogue.QueryFixed(3, 11) < 0) {
    return kLengthQueryFailed;
  }
  if (end < start) {
    return kInvalidAddress;
  }
  if (dialogue.Query(5, 64) < 0) {
    return kFastInterfaceFailed;
  }
  // After a range of whole packets, one more packet is requested and ignored. A range of less than
  // 8 bytes is requested once, whatever the result is.
  const std::uint64_t size = std::uint64_t{end} - start + 1;
  borvan::Result result = 0;
  for (std::uint64_t done = 0; done <= size;) {
    dialogue.ClearBlock();
    dialogue.Send(borvan::FlashReadRequest(start + static_cast<std::uint32_t>(done)));
    result = dialogue.Receive();
    if (result == 0) {
      const auto taken = static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(64, size - done));
      output.insert(output.end(), dialogue.Block().begin(), dialogue.Block().begin() + taken);
      done += 64;
    }
    if (size < 8) {
      break;
    }
  }
  return result;
}

borvan::Result ModelFlashWriteImage(Dialogue& dialogue, Bytes image, std::uint32_t start) {
  dialogue.Query(3, 64);
  for (std::size_t at = 0; at < image.size(); at += 4096) {
    const auto address = start + static_cast<std::uint32_t>(at);
    if (dialogue.Send(borvan::FlashEraseSector(address)) < 0) {
      return kEraseFailed;
    }
  }
  if (dialogue.Query(4, 64) != 0) {
    return kFastInterfaceFailed;
  }
  image.resize((image.size() + 59) / 60 * 60);
  borvan::Result result = 0;
  for (std::size_t at = 0; at < image.size(); at += 60) {
    const auto piece = std::span(image).subspan(at).first<60>();
    if (borvan::IsBlankPiece(piece)) {
      continue;
    }
    // The first attempt, and up to three more until one returns 0.
    for (int attempt = 0; attempt < 4; ++attempt) {
      result =
          dialogue.Send(borvan::FlashWritePacket(start + static_cast<std::uint32_t>(at), piece));
      if (result == 0) {
        break;
      }
    }
    if (result < 0) {
      return kWriteFailed;
    }
  }
  return result;
}

}  // namespace borvan_fuzz
