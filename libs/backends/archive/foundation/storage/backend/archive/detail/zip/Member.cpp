#include <foundation/storage/backend/archive/detail/zip/Member.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/zip/ExtraFields.h>
#include <foundation/storage/backend/archive/detail/zip/Records.h>

#include <sys/stat.h>
#include <zlib.h>

#include <limits>
#include <string>

namespace foundation::storage::backend::archive::detail::zip {

namespace {

/// The variable parts of a record.
struct Parts {
  std::string_view name, extra;
};

/// Reads from the zip64 field what the record has no room for: its values stand in a fixed order, those that are
/// not needed left out (4.5.3).
class Zip64Field {
 public:
  explicit Zip64Field(std::string_view extra) : data_(ExtraFields(extra).find(extraZip64).value_or("")) {}

  std::uint64_t valueFor(std::uint32_t told) {
    if (told != inZip64)
      return told;
    if (data_.size() < sizeof(std::uint64_t))
      throw damage("a record of the zip's directory lacks its size or position");
    const auto value = readNumber<std::uint64_t>(data_, 0);
    data_.remove_prefix(sizeof(std::uint64_t));
    return value;
  }

 private:
  std::string_view data_;
};

/// The name in UTF-8, where a program has put it beside one in another encoding (4.6.9).
std::string_view realName(const Parts& parts) {
  const auto field = ExtraFields(parts.extra).find(extraUnicodePath);
  constexpr std::size_t head = 5;
  if (!field || field->size() < head || (*field)[0] != 1)
    return parts.name;
  const auto crc = crc32(0, reinterpret_cast<const Bytef*>(parts.name.data()), static_cast<uInt>(parts.name.size()));
  return readNumber<std::uint32_t>(*field, 1) == crc ? field->substr(head) : parts.name;
}

EntryKind kindOfMode(std::uint32_t mode) {
  switch (mode & S_IFMT) {
    case 0:
    case S_IFREG:
      return EntryKind::File;
    case S_IFDIR:
      return EntryKind::Folder;
    case S_IFLNK:
      return EntryKind::Link;
    default:
      return EntryKind::Special;
  }
}

void readAttributes(std::string_view record, Entry& entry) {
  constexpr std::uint32_t dosReadOnly = 0x01;
  constexpr std::uint32_t dosFolder = 0x10;
  const auto madeBy = static_cast<std::uint8_t>(record[5]);
  const auto attributes = readNumber<std::uint32_t>(record, 38);
  const auto mode = attributes >> 16;
  const bool isFolder = entry.name.ends_with('/') || (madeBy == madeByDos && (attributes & dosFolder) != 0);
  if ((madeBy == madeByUnix || madeBy == madeByMac) && mode != 0) {
    entry.kind = isFolder ? EntryKind::Folder : kindOfMode(mode);
    entry.permissions = mode & 07777;
    return;
  }
  entry.kind = isFolder ? EntryKind::Folder : EntryKind::File;
  const std::uint32_t usual = isFolder ? 0755 : 0644;
  entry.permissions = (attributes & dosReadOnly) != 0 ? usual & ~0222U : usual;
}

}  // namespace

void takeRecord(std::string_view& directory, std::uint64_t base, TimeReader& times, Entry& entry, Member& member) {
  if (directory.size() < directoryRecordSize || readNumber<std::uint32_t>(directory, 0) != directorySignature)
    throw damage("the zip's directory holds something that is no record");
  const std::size_t nameSize = readNumber<std::uint16_t>(directory, 28);
  const std::size_t extraSize = readNumber<std::uint16_t>(directory, 30);
  const auto size = directoryRecordSize + nameSize + extraSize + readNumber<std::uint16_t>(directory, 32);
  if (size > directory.size())
    throw damage("the zip's directory ends within a record");
  const auto record = directory.substr(0, size);
  directory.remove_prefix(size);
  const Parts parts{record.substr(directoryRecordSize, nameSize),
                    record.substr(directoryRecordSize + nameSize, extraSize)};
  member.record = record;
  member.flags = readNumber<std::uint16_t>(record, 8);
  member.method = readNumber<std::uint16_t>(record, 10);
  member.crc = readNumber<std::uint32_t>(record, 16);
  Zip64Field zip64(parts.extra);
  member.size = zip64.valueFor(readNumber<std::uint32_t>(record, 24));
  member.compressedSize = zip64.valueFor(readNumber<std::uint32_t>(record, 20));
  const auto position = zip64.valueFor(readNumber<std::uint32_t>(record, 42));
  // What does not fit is damaged, and found out when the entry is opened.
  member.headerPosition = position > std::numeric_limits<std::uint64_t>::max() - base
                              ? std::numeric_limits<std::uint64_t>::max()
                              : position + base;
  entry.name = realName(parts);
  entry.isEncrypted = (member.flags & (flagEncrypted | flagStronglyEncrypted | flagMasked)) != 0;
  entry.size = member.size;
  entry.lastModified = times.read(readNumber<std::uint32_t>(record, 12), parts.extra);
  readAttributes(record, entry);
}

}  // namespace foundation::storage::backend::archive::detail::zip
