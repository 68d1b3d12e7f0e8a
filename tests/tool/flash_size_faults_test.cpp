// The detected end of the flash must not depend on a single transfer. Each read, one at a time,
// fails, returns the previously read word, or returns a random word.
#include <array>

#include "flash/engine/flash_size.h"
#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

enum class Fault { kFails, kIsStale, kIsStrange };

struct FlashKind {
  const char* name;
  Bytes content;
  bool wraps;
  bool tells = true;  // quick detection finds the size
};

class FlashSizeFaultsTest : public FlashTest {
 protected:
  // Makes the read with this number, from 1, return a wrong result; 0: none.
  void SpoilLook(std::uint64_t number, Fault fault) {
    looks_ = 0;
    last_word_ = 0;
    Chip().after_read = [this, number, fault](FakeRead read, std::uint32_t, std::uint32_t& word) {
      if (read != FakeRead::kFlashWord) {
        return;
      }
      const std::uint32_t real = word;
      if (++looks_ == number) {
        const std::array<std::uint32_t, 3> shown = {0, last_word_, 0xA5C31E77};
        word = shown.at(static_cast<std::size_t>(fault));
      }
      last_word_ = real;
    };
  }

  // Repeats the query with each read spoilt in turn. Every answer must equal that of the faultless
  // camera.
  template <typename Ask>
  void ExpectSameAnswers(const FlashKind& flash_kind, const Ask& ask) {
    Flash() = flash_kind.content;
    Chip().wraps = flash_kind.wraps;
    const auto camera = host.OpenCamera(Chip().identity);
    SpoilLook(0, Fault::kFails);
    const FlashSizeFinding wanted = ask(*camera);
    const std::uint64_t looks = looks_;
    // Later reads only confirm words and are all alike, so only some are tried.
    for (std::uint64_t number = 1; number <= looks; number += number < 24 ? 1 : 61) {
      for (const Fault fault : {Fault::kFails, Fault::kIsStale, Fault::kIsStrange}) {
        SpoilLook(number, fault);
        const FlashSizeFinding found = ask(*camera);
        ++answers_;
        EXPECT_EQ(found.size, wanted.size)
            << flash_kind.name << ", look " << number << ", fault " << static_cast<int>(fault);
        EXPECT_EQ(found.text, wanted.text) << flash_kind.name << ", look " << number;
      }
    }
  }

  static std::vector<FlashKind> Flashes() {
    const Bytes firmware = Overlaid(Bytes(kMebi, 0xFF), 0, Pattern(200 * kKibi, 1));
    const Bytes loader = Overlaid(Bytes(kMebi, 0xFF), 0, Pattern(4 * kKibi, 1));
    const Bytes twice = Overlaid(Overlaid(Bytes(kMebi, 0xFF), 0, Pattern(100 * kKibi, 1)),
                                 512 * kKibi, Pattern(100 * kKibi, 1));
    const Bytes zeros = Overlaid(Bytes(kMebi, 0), 0, Pattern(64 * kKibi, 1));
    std::vector<FlashKind> flashes;
    for (const bool wraps : {true, false}) {
      flashes.push_back({"firmware", firmware, wraps});
      flashes.push_back({"loader", loader, wraps, false});
      flashes.push_back(
          {"firmware twice", Overlaid(twice, 900 * kKibi, Pattern(64 * kKibi, 2)), wraps});
      flashes.push_back({"zeros behind firmware", zeros, wraps});
      flashes.push_back({"blank", Bytes(kMebi, 0xFF), wraps, false});
    }
    return flashes;
  }

  std::uint64_t looks_ = 0;
  std::uint64_t answers_ = 0;
  std::uint32_t last_word_ = 0;
};

TEST_F(FlashSizeFaultsTest, EndBeforeAnAddressIsTheSameAfterAnyOddLook) {
  for (const FlashKind& kind : Flashes()) {
    for (const std::uint64_t end : {128 * kKibi, kMebi, kMebi + 1, 4 * kMebi}) {
      if (!kind.tells && end != kMebi + 1) {
        continue;  // each query reads 64 KiB
      }
      ExpectSameAnswers(kind, [&](Camera& camera) { return FindFlashEndBefore(camera, end); });
    }
  }
  EXPECT_GT(answers_, 500U);
}

TEST_F(FlashSizeFaultsTest, SizeIsTheSameAfterAnyOddLook) {
  for (const FlashKind& kind : Flashes()) {
    ExpectSameAnswers(kind, [](Camera& camera) { return FindFlashSize(camera); });
  }
  EXPECT_GT(answers_, 500U);
}

// A stale packet in the bulk read makes known words wrong.
TEST_F(FlashSizeFaultsTest, SizeIsTheSameAfterAnyStalePacketOfTheBulkRead) {
  Flash() = Flashes().front().content;
  const auto camera = host.OpenCamera(Chip().identity);
  for (std::uint32_t packet = 64; packet < 64 * kKibi; packet += 64 * 7) {
    Chip().after_read = [&](FakeRead read, std::uint32_t address, std::uint32_t& byte) {
      if (read == FakeRead::kFlashBulk && address >= packet && address < packet + 64) {
        byte = Flash()[address - 64];
      }
    };
    EXPECT_EQ(FindFlashSize(*camera).size, kMebi) << packet;
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
