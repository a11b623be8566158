#include "archive/HandZip.h"

#include "disk/Descriptor.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <zlib.h>

namespace bench {
namespace {

constexpr std::size_t endRecordSize = 22;
constexpr std::size_t longestEnd = endRecordSize + 65'535;
constexpr std::size_t directoryRecordSize = 46;
constexpr std::size_t localHeaderSize = 30;
constexpr std::size_t blockSize = 256 * 1024;

template <class Number>
std::uint64_t number(const char* bytes) {
  Number value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

std::uint64_t two(const char* bytes) { return number<std::uint16_t>(bytes); }
std::uint64_t four(const char* bytes) { return number<std::uint32_t>(bytes); }

std::string part(const Bytes& archive, std::uint64_t position, std::uint64_t count) {
  std::string bytes(count, '\0');
  archive.read(position, bytes.data(), count);
  return bytes;
}

std::string directoryOf(const Bytes& archive) {
  const auto count = std::min<std::uint64_t>(archive.size, longestEnd);
  const auto tail = part(archive, archive.size - count, count);
  const auto end = tail.rfind("PK\5\6");
  if (end == std::string::npos)
    throw std::runtime_error("no zip");
  return part(archive, four(tail.data() + end + 16), four(tail.data() + end + 12));
}

std::uint64_t contentPosition(const Bytes& archive, const HandEntry& entry) {
  const auto header = part(archive, entry.header, localHeaderSize);
  return entry.header + localHeaderSize + two(header.data() + 26) + two(header.data() + 28);
}

std::string inflated(const Bytes& archive, std::uint64_t position, const HandEntry& entry) {
  std::string content(entry.size, '\0');
  std::string block(std::min<std::uint64_t>(blockSize, entry.compressed), '\0');
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
    throw std::runtime_error("zlib");
  stream.next_out = reinterpret_cast<Bytef*>(content.data());
  stream.avail_out = static_cast<uInt>(content.size());
  int status = Z_OK;
  for (std::uint64_t done = 0; status == Z_OK && done < entry.compressed; done += stream.total_in - done) {
    const auto count = std::min<std::uint64_t>(block.size(), entry.compressed - done);
    archive.read(position + done, block.data(), count);
    stream.next_in = reinterpret_cast<Bytef*>(block.data());
    stream.avail_in = static_cast<uInt>(count);
    status = inflate(&stream, Z_NO_FLUSH);
  }
  inflateEnd(&stream);
  if (status != Z_STREAM_END)
    throw std::runtime_error("no deflated data");
  return content;
}

}  // namespace

Bytes fileBytes(const std::string& path) {
  const auto file = std::make_shared<Descriptor>(path, O_RDONLY);
  return {std::filesystem::file_size(path), [file](std::uint64_t position, char* buffer, std::size_t count) {
            for (std::size_t done = 0; done < count;) {
              const auto got = pread(file->get(), buffer + done, count - done, static_cast<off_t>(position + done));
              check(got > 0, "pread");
              done += static_cast<std::size_t>(got);
            }
          }};
}

Bytes memoryBytes(std::string content) {
  const auto held = std::make_shared<const std::string>(std::move(content));
  return {held->size(), [held](std::uint64_t position, char* buffer, std::size_t count) {
            std::memcpy(buffer, held->data() + position, count);
          }};
}

std::vector<HandEntry> entriesOf(const Bytes& archive) {
  const auto directory = directoryOf(archive);
  std::vector<HandEntry> entries;
  for (const char* record = directory.data(); record + directoryRecordSize <= directory.data() + directory.size();) {
    const auto nameLength = two(record + 28);
    entries.push_back({.name = std::string(record + directoryRecordSize, nameLength),
                       .size = four(record + 24),
                       .compressed = four(record + 20),
                       .header = four(record + 42),
                       .isDeflated = two(record + 10) == Z_DEFLATED});
    record += directoryRecordSize + nameLength + two(record + 30) + two(record + 32);
  }
  return entries;
}

HandEntry entryOf(const Bytes& archive, const std::string& name) {
  for (auto& entry : entriesOf(archive))
    if (entry.name == name)
      return entry;
  throw std::runtime_error("there is no " + name);
}

std::string contentOf(const Bytes& archive, const HandEntry& entry) {
  const auto position = contentPosition(archive, entry);
  return entry.isDeflated ? inflated(archive, position, entry) : part(archive, position, entry.compressed);
}

Bytes storedBytes(const Bytes& archive, const HandEntry& entry) {
  return {entry.size,
          [archive, begin = contentPosition(archive, entry)](std::uint64_t position, char* buffer, std::size_t count) {
            archive.read(begin + position, buffer, count);
          }};
}

}  // namespace bench
