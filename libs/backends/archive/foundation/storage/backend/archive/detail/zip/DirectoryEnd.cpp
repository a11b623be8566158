#include <foundation/storage/backend/archive/detail/zip/DirectoryEnd.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/zip/Records.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace foundation::storage::backend::archive::detail::zip {

namespace {

/// The last bytes of a file.
struct Tail {
  std::uint64_t position;
  std::string bytes;
};

Tail readTail(Input& input) {
  constexpr std::uint64_t longest = endSize + 0xFFFF + end64LocatorSize;
  const auto size = input.size();
  const auto count = std::min(size, longest);
  Tail tail{size - count, std::string(count, '\0')};
  input.readAll(tail.position, tail.bytes.data(), tail.bytes.size());
  return tail;
}

/// Where the end record begins: the last one whose comment reaches to the end of the file, else the last one whose
/// comment is there.
std::optional<std::size_t> findEnd(std::string_view tail) {
  std::optional<std::size_t> fallback;
  for (std::size_t left = tail.size() < endSize ? 0 : tail.size() - endSize + 1; left > 0; --left) {
    const auto at = left - 1;
    if (readNumber<std::uint32_t>(tail, at) != endSignature)
      continue;
    const auto end = at + endSize + readNumber<std::uint16_t>(tail, at + 20);
    if (end == tail.size())
      return at;
    if (end < tail.size() && !fallback)
      fallback = at;
  }
  return fallback;
}

/// What the end record says, or the one of zip64 that belongs to it; positions as told.
struct Told {
  std::uint64_t recordPosition;  ///< of the record that says it, in the file
  std::uint64_t count, size, position;
  bool isZip64;
};

void requireOneDisk(std::uint32_t disk, std::uint32_t directoryDisk) {
  if (disk != 0 || directoryDisk != 0)
    throw Fault(provider::ErrorCode::UnsupportedOperation, "the zip is one part of several");
}

Told readEnd64(Input& input, std::uint64_t position) {
  std::string bytes(end64Size, '\0');
  input.readAll(position, bytes.data(), bytes.size());
  const std::string_view record = bytes;
  if (readNumber<std::uint32_t>(record, 0) != end64Signature)
    throw damage("the end of the zip's directory (zip64) is not where it is told to be");
  requireOneDisk(readNumber<std::uint32_t>(record, 16), readNumber<std::uint32_t>(record, 20));
  return {position, readNumber<std::uint64_t>(record, 32), readNumber<std::uint64_t>(record, 40),
          readNumber<std::uint64_t>(record, 48), true};
}

/// The place of the zip64 record, by the locator before the end record; none where there is no locator. The record
/// stands right before its locator, unless it has data of its own at its end.
std::optional<std::uint64_t> findEnd64(Input& input, const Tail& tail, std::size_t end) {
  if (end < end64LocatorSize || readNumber<std::uint32_t>(tail.bytes, end - end64LocatorSize) != end64LocatorSignature)
    return std::nullopt;
  const auto locator = tail.position + end - end64LocatorSize;
  if (locator >= end64Size) {
    std::string signature(4, '\0');
    input.readAll(locator - end64Size, signature.data(), signature.size());
    if (readNumber<std::uint32_t>(signature, 0) == end64Signature)
      return locator - end64Size;
  }
  return readNumber<std::uint64_t>(tail.bytes, end - end64LocatorSize + 8);
}

Told readTold(Input& input, const Tail& tail, std::size_t end) {
  const std::string_view record = std::string_view(tail.bytes).substr(end);
  if (const auto position = findEnd64(input, tail, end))
    return readEnd64(input, *position);
  requireOneDisk(readNumber<std::uint16_t>(record, 4), readNumber<std::uint16_t>(record, 6));
  return {tail.position + end, readNumber<std::uint16_t>(record, 10), readNumber<std::uint32_t>(record, 12),
          readNumber<std::uint32_t>(record, 16), false};
}

}  // namespace

DirectoryEnd findDirectoryEnd(Input& input) {
  const auto tail = readTail(input);
  const auto end = findEnd(tail.bytes);
  if (!end)
    throw damage("this is no zip: it has no end of a directory");
  const auto told = readTold(input, tail, *end);
  // The directory ends where the record begins that tells of it, whatever was put before the archive.
  if (told.size > told.recordPosition || told.recordPosition - told.size < told.position)
    throw damage("the zip's directory is not where it is told to be");
  DirectoryEnd found;
  found.position = told.recordPosition - told.size;
  found.size = told.size;
  found.count = told.count;
  found.isCountWhole = told.isZip64;
  found.base = found.position - told.position;
  found.comment = tail.bytes.substr(*end + endSize, readNumber<std::uint16_t>(tail.bytes, *end + 20));
  return found;
}

}  // namespace foundation::storage::backend::archive::detail::zip
