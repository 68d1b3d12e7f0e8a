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

// A doubt without its text, which is made when somebody asks: some maps have thousands.
struct SvdDoubt {
  SvdDoubtKind kind = SvdDoubtKind::kUnknownElement;
  std::uint32_t offset = 0;
  // What the text names, in its order.
  std::string_view first = {};
  std::string_view second = {};
  std::string_view third = {};
  std::uint64_t number = 0;
  std::uint64_t other = 0;
  std::uint64_t more = 0;  // the same of further elements that come from the same line
};

// "field A overlaps field B"
std::string TextOf(const SvdDoubt& doubt);

// One doubt for each place and kind, as many as somebody reads.
class SvdDoubts {
 public:
  void Add(const SvdDoubt& doubt);
  const std::vector<SvdDoubt>& All() const { return doubts_; }
  std::uint64_t Untold() const { return untold_; }

 private:
  // The entry of the table for a doubt.
  std::uint32_t& Find(SvdDoubtKind kind, std::uint32_t offset);
  void Grow();

  std::vector<SvdDoubt> doubts_;
  std::vector<std::uint32_t> table_;  // places + 1, by kind and offset; 0 is free
  std::uint64_t untold_ = 0;
};

}  // namespace borvanusb
