#include "base/sha256.h"

#include <array>
#include <bit>
#include <cstddef>
#include <vector>

#include "base/hex_bytes.h"

namespace borvanusb {

namespace {

constexpr std::size_t kBlockSize = 64;
constexpr std::size_t kLengthSize = 8;
constexpr std::size_t kWordSize = 4;
constexpr std::size_t kRounds = 64;
constexpr unsigned kBitsPerByte = 8;

// The first 32 bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, kRounds> kRoundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

// The first 32 bits of the fractional parts of the square roots of the first 8 primes.
using Hash = std::array<std::uint32_t, 8>;
constexpr Hash kFirstHash = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                             0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

std::array<std::uint32_t, kRounds> Schedule(std::span<const std::uint8_t> block) {
  std::array<std::uint32_t, kRounds> words{};
  for (std::size_t i = 0; i < kBlockSize; ++i) {
    words[i / kWordSize] = words[i / kWordSize] << kBitsPerByte | block[i];
  }
  for (std::size_t t = kBlockSize / kWordSize; t < kRounds; ++t) {
    const std::uint32_t near = words[t - 2];
    const std::uint32_t far = words[t - 15];
    const std::uint32_t sigma1 = std::rotr(near, 17) ^ std::rotr(near, 19) ^ near >> 10U;
    const std::uint32_t sigma0 = std::rotr(far, 7) ^ std::rotr(far, 18) ^ far >> 3U;
    words[t] = sigma1 + words[t - 7] + sigma0 + words[t - 16];
  }
  return words;
}

void AddBlock(Hash& hash, std::span<const std::uint8_t> block) {
  const auto words = Schedule(block);
  auto [a, b, c, d, e, f, g, h] = hash;
  for (std::size_t t = 0; t < kRounds; ++t) {
    const std::uint32_t choice = (e & f) ^ (~e & g);
    const std::uint32_t sum1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const std::uint32_t first = h + sum1 + choice + kRoundConstants[t] + words[t];
    const std::uint32_t majority = (a & b) ^ (a & c) ^ (b & c);
    const std::uint32_t sum0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + sum0 + majority;
  }
  const Hash after = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < hash.size(); ++i) {
    hash[i] += after[i];
  }
}

}  // namespace

std::string Sha256(std::span<const std::uint8_t> bytes) {
  Hash hash = kFirstHash;
  const std::size_t whole = bytes.size() / kBlockSize * kBlockSize;
  for (std::size_t offset = 0; offset < whole; offset += kBlockSize) {
    AddBlock(hash, bytes.subspan(offset, kBlockSize));
  }
  std::vector<std::uint8_t> rest(bytes.begin() + static_cast<std::ptrdiff_t>(whole), bytes.end());
  rest.push_back(0x80);
  while (rest.size() % kBlockSize != kBlockSize - kLengthSize) {
    rest.push_back(0);
  }
  const std::uint64_t bits = std::uint64_t{bytes.size()} * kBitsPerByte;
  for (std::size_t i = kLengthSize; i > 0; --i) {
    rest.push_back(static_cast<std::uint8_t>(bits >> (i - 1) * kBitsPerByte));
  }
  for (std::size_t offset = 0; offset < rest.size(); offset += kBlockSize) {
    AddBlock(hash, std::span(rest).subspan(offset, kBlockSize));
  }
  std::vector<std::uint8_t> digest;
  for (const std::uint32_t word : hash) {
    for (std::size_t i = kWordSize; i > 0; --i) {
      digest.push_back(static_cast<std::uint8_t>(word >> (i - 1) * kBitsPerByte));
    }
  }
  return HexBytes(digest);
}

}  // namespace borvanusb
