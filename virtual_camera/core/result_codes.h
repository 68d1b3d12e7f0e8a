#pragma once

// HRESULT values that the device side answers with. Windows names them in headers that the
// portable core does not include.

#include <cstdint>

namespace virtual_camera {

constexpr std::int32_t ResultCode(std::uint32_t bits) {
  return static_cast<std::int32_t>(bits);
}

inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kMoreData = ResultCode(0x800700EA);        // a length query
inline constexpr std::int32_t kGeneralFailure = ResultCode(0x8007001F);  // ERROR_GEN_FAILURE
inline constexpr std::int32_t kInsufficientBuffer = ResultCode(0x8007007A);
inline constexpr std::int32_t kNotFound = ResultCode(0x80070490);
inline constexpr std::int32_t kNotConnected = ResultCode(0x8007048F);

}  // namespace virtual_camera
