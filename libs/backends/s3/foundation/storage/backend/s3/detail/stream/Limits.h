#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::s3::detail::stream {

/// What the protocol allows, and how large the steps of a copy are; in bytes. Tests use smaller ones.
struct Limits {
  std::uint64_t smallestPart = 5ull << 20;  ///< of an upload, but for its last
  std::uint64_t largestCopy = 5ull << 30;   ///< that one request makes
  std::uint64_t copiedPart = 128ull << 20;  ///< of a copy by parts: soon done, so that no connection idles for long
};

/// No upload has more.
constexpr int mostParts = 10'000;

/// What the number of a written part says of its size: the first 900 have the size given, the next 900 twice that, and
/// so on, so that 5 TiB, the most that an object may have, fit into the parts allowed, 5 MiB the first.
std::uint64_t sizeOfPart(int number, std::uint64_t partSize);

/// Says of an object that was written in parts how large the first is, so that readers can check its ETag.
constexpr std::string_view partSizeHeader = "x-amz-meta-foundation-part-size";
/// The headers that another object, or other content, takes over: all but that one.
wire::Headers takenOver(const wire::Headers& kept);

/// Divides the first `size` bytes of an object into parts to copy, all of about the same size, and none too small for
/// others to follow.
std::vector<client::Range> divide(std::uint64_t size, std::uint64_t partSize);
/// The size of such parts; smaller where their content has to come here and go back.
std::uint64_t copiedPart(const client::Client& client, const std::string& sourceKey, const Limits& limits);

}  // namespace foundation::storage::backend::s3::detail::stream
