#include "dll/scratch_names.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::string_view kPrefix = "borvanusb-";

// Removes the decimal number at the start of `text` and returns it. Returns nothing if there is
// none.
template <typename Number>
std::optional<Number> TakeNumber(std::string_view& text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || text.empty() || text.front() == '-') {
    return std::nullopt;
  }
  text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
  return number;
}

bool Take(std::string_view& text, std::string_view expected) {
  if (!text.starts_with(expected)) {
    return false;
  }
  text.remove_prefix(expected.size());
  return true;
}

}  // namespace

std::string ScratchName(std::uint32_t process, std::uint64_t ticks, unsigned number,
                        std::string_view extension) {
  return Format("{}{}-{}-{}.{}", kPrefix, process, ticks, number, extension);
}

std::optional<std::uint32_t> ScratchOwner(std::string_view name) {
  if (!Take(name, kPrefix)) {
    return std::nullopt;
  }
  const auto process = TakeNumber<std::uint32_t>(name);
  const bool rest_is_ours = process && Take(name, "-") && TakeNumber<std::uint64_t>(name) &&
                            Take(name, "-") && TakeNumber<unsigned>(name) && Take(name, ".");
  if (!rest_is_ours || !(Take(name, "bin") || Take(name, "txt"))) {
    return std::nullopt;
  }
  // A file that was being written when its process ended still has its temporary name.
  if (Take(name, ".part") && !TakeNumber<unsigned>(name)) {
    return std::nullopt;
  }
  return name.empty() ? process : std::nullopt;
}

}  // namespace borvanusb
