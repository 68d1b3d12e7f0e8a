#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

enum class SvdDoubtKind : std::uint8_t {
  kUnknownElement,
  kTwice,
  kMissing,
  kMissingAndTaken,
  kNoNumber,
  kNoWord,
  kNoBase,
  kSeveralBases,
  kOverlap,
  kBeyondRegister,
  kSameAddress,
  kOutsideBlock,
  kSameName,
  kValueTooBig,
  kNoDim,
  kNoMark,
  kIndexCount,
  kTooFar,
  kSize,
  kThirdEnumeration,
  kEncoding,
  kAddressUnit,
};

// A doubt. Its text is created only when needed, because some maps have thousands of doubts.
struct SvdDoubt {
  SvdDoubtKind kind = SvdDoubtKind::kUnknownElement;
  std::uint32_t offset = 0;
  // The names that the text mentions, in this order.
  std::string_view first = {};
  std::string_view second = {};
  std::string_view third = {};
  std::uint64_t number = 0;
  std::uint64_t other = 0;
  std::uint64_t more = 0;  // number of further equal doubts at the same offset
};

// "field A overlaps field B"
std::string TextOf(const SvdDoubt& doubt);

// Collects doubts: one for each offset and kind, up to a limit.
class SvdDoubts {
 public:
  void Add(const SvdDoubt& doubt);
  const std::vector<SvdDoubt>& All() const { return doubts_; }
  std::uint64_t Untold() const { return untold_; }

 private:
  // The table entry of a doubt.
  std::uint32_t& Find(SvdDoubtKind kind, std::uint32_t offset);
  void Grow();

  std::vector<SvdDoubt> doubts_;
  std::vector<std::uint32_t> table_;  // hash table by kind and offset: index + 1, 0 is free
  std::uint64_t untold_ = 0;
};

}  // namespace borvanusb
