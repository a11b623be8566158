#include <foundation/storage/backend/s3/detail/stream/Limits.h>

#include <algorithm>
#include <iterator>

namespace foundation::storage::backend::s3::detail::stream {

namespace {

constexpr int partsOfOneSize = 900;
constexpr std::uint64_t largestPart = 5ull << 30;
/// Copies by parts leave the other numbers to what is written behind them.
constexpr std::uint64_t mostCopiedParts = 2'000;

constexpr std::uint64_t quotientUp(std::uint64_t number, std::uint64_t divisor) {
  return number / divisor + (number % divisor == 0 ? 0 : 1);
}

}  // namespace

std::uint64_t sizeOfPart(int number, std::uint64_t partSize) {
  return std::min(std::min(partSize, largestPart) << ((number - 1) / partsOfOneSize), largestPart);
}

wire::Headers takenOver(const wire::Headers& kept) {
  wire::Headers headers;
  std::copy_if(kept.begin(), kept.end(), std::back_inserter(headers),
               [](const wire::Header& header) { return header.name != partSizeHeader; });
  return headers;
}

std::vector<client::Range> divide(std::uint64_t size, std::uint64_t partSize) {
  const auto count = quotientUp(size, std::max(partSize, quotientUp(size, mostCopiedParts)));
  std::vector<client::Range> ranges;
  std::uint64_t offset = 0;
  for (auto left = count; left > 0; --left) {
    const auto part = (size - offset) / left;
    ranges.push_back({offset, part});
    offset += part;
  }
  return ranges;
}

std::uint64_t copiedPart(const client::Client& client, const std::string& sourceKey, const Limits& limits) {
  if (client::Client::copiesParts(sourceKey))
    return limits.copiedPart;
  return std::min(limits.copiedPart, std::max(client.settings().partSize, 2 * limits.smallestPart));
}

}  // namespace foundation::storage::backend::s3::detail::stream
