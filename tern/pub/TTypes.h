// Basic integer types shared by the whole library.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Tern {

using Int = std::int32_t;
using UInt = std::uint32_t;
using Int32 = std::int32_t;
using UInt32 = std::uint32_t;
using UInt16 = std::uint16_t;
using Byte = std::uint8_t;

// The number of entries of a fixed table.
template <typename T, std::size_t N>
constexpr Int CountOf(const T (&)[N]) {
  return static_cast<Int>(N);
}

}  // namespace Tern
