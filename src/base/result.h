#pragma once

#include <cstdint>

namespace borvan {

// Operations follow the HRESULT convention: a negative result is a failure, 0 or a positive one is
// a success.
using Result = std::int32_t;

constexpr Result ResultFromBits(std::uint32_t bits) {
  return static_cast<Result>(bits);
}

constexpr Result kOk = 0;
constexpr Result kFalse = 1;

// The system's own codes, as winerror.h of the Windows SDK defines them.
constexpr Result kNotImplemented = ResultFromBits(0x80004001);
constexpr Result kNullPointer = ResultFromBits(0x80004003);
constexpr Result kFailed = ResultFromBits(0x80004005);
constexpr Result kOutOfMemory = ResultFromBits(0x8007000E);
constexpr Result kInvalidData = ResultFromBits(0x8007000D);
constexpr Result kMoreData = ResultFromBits(0x800700EA);

constexpr bool Succeeded(Result result) {
  return result >= 0;
}
constexpr bool HasFailed(Result result) {
  return result < 0;
}

// The library's own failures. Their texts are in the public header.
enum class StatusCode : std::uint32_t {
  kFlashEraseFailed = 1,
  kLengthQueryFailed = 2,
  kFlashWriteFailed = 3,
  kInvalidAddress = 4,
  kFlashReadFailed = 5,
  kTerminated = 6,
  kFastInterfaceFailed = 7,
  kSlaveOrWidthMissing = 8,
  kDeviceNotFound = 9,
  kFileError = 10,
  kFileFormatFailed = 11,
};

constexpr std::uint32_t kFirstStatusCode = 1;
constexpr std::uint32_t kLastStatusCode = 11;

// The severity bits and the customer bit of the library's own codes.
constexpr std::uint32_t kStatusCodeBase = 0xE0000000;
constexpr std::uint32_t kCustomerBit = 0x20000000;

constexpr Result ToResult(StatusCode code) {
  return ResultFromBits(kStatusCodeBase + static_cast<std::uint32_t>(code));
}

}  // namespace borvan
