#include <foundation/storage/backend/archive/detail/zip/ZipWriter.h>

#include <foundation/storage/backend/archive/detail/EntryName.h>
#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/zip/ExtraFields.h>
#include <foundation/storage/backend/archive/detail/zip/Records.h>
#include <foundation/storage/backend/archive/detail/zip/Times.h>

#include <sys/stat.h>
#include <zlib.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::archive::detail::zip {

namespace {

constexpr std::size_t step = 256 * 1024;
/// Content up to this size is held in memory as a whole: then its header tells all before it.
constexpr std::uint64_t smallSize = 1024 * 1024;
/// From this size on compressed content might need 64 bits, even if it does not get smaller.
constexpr std::uint64_t largeSize = 0xF0000000;
constexpr std::size_t longestName = 0xFFFF;
/// Never changed: to clear it anew for each entry would cost more than most entries do.
constexpr std::size_t bufferSize = smallSize + 1;

std::uint32_t addedTo(std::uint32_t crc, std::string_view bytes) {
  return static_cast<std::uint32_t>(
      crc32(crc, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

bool isWorthIt(std::uint64_t compressed, std::uint64_t size) { return compressed < size - size / 20; }

/// Whether a number has no room in a header's 32 bits.
bool isLarge(std::uint64_t number) { return number >= inZip64; }

std::uint32_t orInZip64(std::uint64_t number) { return isLarge(number) ? inZip64 : static_cast<std::uint32_t>(number); }

std::uint16_t size16(std::string_view bytes) {
  if (bytes.size() > longestName)
    throw Fault(provider::ErrorCode::InvalidLocation, "a name or its extra fields are longer than a zip can hold");
  return static_cast<std::uint16_t>(bytes.size());
}

/// Reads until so much is there or the content ends.
/// @param size  at most the buffer's
/// @return what was read, in the buffer
std::string_view fill(ContentReader& content, std::string& buffer, std::size_t size) {
  std::size_t got = 0;
  while (got < size) {
    const auto count = content.read(buffer.data() + got, size - got);
    if (count == 0)
      break;
    got += count;
  }
  return {buffer.data(), got};
}

void requireRewound(ContentReader& content) {
  if (!content.seek(0))
    throw Fault(provider::ErrorCode::InternalError, "new content cannot be read again");
}

}  // namespace

ZipWriter::ZipWriter(std::shared_ptr<Container> container, const Limits& limits, std::shared_ptr<const ZipArchive> old,
                     Output& output)
    : container_(std::move(container)),
      limits_(limits),
      old_(std::move(old)),
      output_(output),
      buffer_(bufferSize, '\0') {
  if (old_) {
    input_.emplace(old_->container().open());
    copyPrefix();
  }
}

void ZipWriter::copyPrefix() { copyContent({{}, 0, old_->prefixSize()}); }

void ZipWriter::copyContent(const Extent& extent) {
  auto position = extent.position;
  for (auto left = extent.size; left > 0;) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, step));
    input_->readAll(position, buffer_.data(), count);
    output_.write({buffer_.data(), count});
    position += count;
    left -= count;
  }
}

// --- What an entry says ---

ZipWriter::Fields ZipWriter::fieldsOf(const Member& member) {
  const auto record = member.record;
  const std::size_t nameSize = readNumber<std::uint16_t>(record, 28);
  const std::size_t extraSize = readNumber<std::uint16_t>(record, 30);
  Fields fields;
  fields.versionMadeBy = readNumber<std::uint16_t>(record, 4);
  fields.versionNeeded = readNumber<std::uint16_t>(record, 6);
  fields.flags = member.flags;
  fields.method = member.method;
  fields.dosTime = readNumber<std::uint32_t>(record, 12);
  fields.crc = member.crc;
  fields.compressedSize = member.compressedSize;
  fields.size = member.size;
  fields.name = record.substr(directoryRecordSize, nameSize);
  fields.extra = ExtraFields(record.substr(directoryRecordSize + nameSize, extraSize)).without(extraZip64);
  fields.comment = record.substr(directoryRecordSize + nameSize + extraSize);
  fields.internalAttributes = readNumber<std::uint16_t>(record, 36);
  fields.attributes = readNumber<std::uint32_t>(record, 38);
  return fields;
}

ZipWriter::Fields ZipWriter::fieldsOf(const Entry& entry) {
  Fields fields;
  fields.versionNeeded = versionDeflate;
  fields.versionMadeBy = static_cast<std::uint16_t>(madeByUnix << 8 | versionZip64);
  rename(fields, entry.name);
  setTime(fields, entry.lastModified, false);
  setPermissions(fields, entry.permissions, entry.kind == EntryKind::Folder);
  return fields;
}

void ZipWriter::rename(Fields& fields, const std::string& name) {
  fields.name = name;
  fields.extra = ExtraFields(fields.extra).without(extraUnicodePath);
  fields.localExtra = ExtraFields(fields.localExtra).without(extraUnicodePath);
  const bool needsFlag = isUtf8(name);
  fields.flags = static_cast<std::uint16_t>(needsFlag ? fields.flags | flagUtf8 : fields.flags & ~flagUtf8);
}

void ZipWriter::setTime(Fields& fields, const boost::posix_time::ptime& time, bool isEncrypted) {
  // A traditionally encrypted entry is decrypted with a check of its MS-DOS time.
  if (!isEncrypted)
    fields.dosTime = dosTime(time);
  const auto exact = timeFields(time);
  fields.extra = ExtraFields(fields.extra).without(extraNtfsTimes, extraUnixTimes) + exact;
  fields.localExtra = ExtraFields(fields.localExtra).without(extraNtfsTimes, extraUnixTimes) + exact;
}

void ZipWriter::setPermissions(Fields& fields, std::uint32_t permissions, bool isFolder) {
  constexpr std::uint32_t dosReadOnly = 0x01;
  constexpr std::uint32_t dosFolder = 0x10;
  constexpr std::uint16_t version = 0x00FF;
  const std::uint32_t oldType = fields.attributes >> 16 & S_IFMT;
  const std::uint32_t type = isFolder ? S_IFDIR : oldType != 0 && oldType != S_IFDIR ? oldType : S_IFREG;
  const std::uint32_t dos = (isFolder ? dosFolder : 0) | ((permissions & 0222) == 0 ? dosReadOnly : 0);
  fields.versionMadeBy = static_cast<std::uint16_t>(madeByUnix << 8 | (fields.versionMadeBy & version));
  fields.attributes = (type | permissions) << 16 | dos;
}

// --- Entries ---

void ZipWriter::take(const Takeover& entry) {
  const auto& member = old_->member(entry.number);
  const auto& before = old_->entries()[entry.number];
  const auto extent = old_->extent(entry.number, *input_);
  auto fields = fieldsOf(member);
  fields.localExtra = ExtraFields(extent.localExtra).without(extraZip64);
  if (entry.name != before.name)
    rename(fields, entry.name);
  if (entry.lastModified)
    setTime(fields, *entry.lastModified, before.isEncrypted);
  if (entry.permissions)
    setPermissions(fields, *entry.permissions, before.kind == EntryKind::Folder);
  // All is known now; but decrypting goes by whether the checksum was known when the entry was made.
  if (!before.isEncrypted)
    fields.flags = static_cast<std::uint16_t>(fields.flags & ~flagDescriptor);
  fields.hasLargeDescriptor = isLarge(fields.size) || isLarge(fields.compressedSize);
  writeHeader(fields);
  copyContent(extent);
  if ((fields.flags & flagDescriptor) != 0)
    writeDescriptor(fields);
  addRecord(fields);
}

void ZipWriter::add(const Entry& entry, ContentReader* content) {
  auto fields = fieldsOf(entry);
  if (content == nullptr) {
    writeHeader(fields);
    addRecord(fields);
  } else if (entry.size.value_or(0) <= smallSize) {
    addSmall(fields, *content);
  } else {
    fields.size = *entry.size;
    addLarge(fields, *content);
  }
}

void ZipWriter::addSmall(Fields& fields, ContentReader& content) {
  const auto bytes = fill(content, buffer_, bufferSize);
  const auto smaller = deflated(bytes);
  const bool isDeflated = isWorthIt(smaller.size(), bytes.size());
  const auto stored = isDeflated ? std::string_view(smaller) : bytes;
  fields.method = isDeflated ? methodDeflated : methodStored;
  fields.crc = addedTo(0, bytes);
  fields.size = bytes.size();
  fields.compressedSize = stored.size();
  writeHeader(fields);
  output_.write(stored);
  addRecord(fields);
}

void ZipWriter::addLarge(Fields& fields, ContentReader& content) {
  if (isWorthDeflating(content))
    addDeflated(fields, content);
  else
    addStored(fields, content);
}

std::string ZipWriter::deflated(std::string_view bytes) {
  std::string out;
  deflater_.add(bytes, out);
  deflater_.finish(out);
  return out;
}

/// By its beginning.
bool ZipWriter::isWorthDeflating(ContentReader& content) {
  const auto beginning = fill(content, buffer_, step);
  requireRewound(content);
  return isWorthIt(deflated(beginning).size(), beginning.size());
}

/// Whether so much has come of so little that, if that went on, whoever reads the entry might refuse it.
bool ZipWriter::wouldLookLikeBomb(const Fields& fields) const {
  const auto most = std::min(limits_.ratio, Limits().ratio) / 2;
  return fields.size > Limits::freeOfRatio - step &&
         fields.size / std::max<std::uint64_t>(most, 1) > fields.compressedSize;
}

void ZipWriter::addDeflated(Fields& fields, ContentReader& content) {
  fields.method = methodDeflated;
  fields.flags |= flagDescriptor;
  fields.hasLargeDescriptor = fields.size >= largeSize;
  fields.size = 0;
  writeHeader(fields);
  std::string out;
  const auto writeOut = [&] {
    fields.compressedSize += out.size();
    output_.write(out);
    out.clear();
  };
  for (auto bytes = fill(content, buffer_, step); !bytes.empty(); bytes = fill(content, buffer_, step)) {
    fields.crc = addedTo(fields.crc, bytes);
    fields.size += bytes.size();
    if (wouldLookLikeBomb(fields))
      deflater_.addStored(bytes, out);
    else
      deflater_.add(bytes, out);
    writeOut();
  }
  deflater_.finish(out);
  writeOut();
  writeDescriptor(fields);
  addRecord(fields);
}

/// Reads the content twice: its checksum stands before it, so that it can be read from a stream, too.
void ZipWriter::addStored(Fields& fields, ContentReader& content) {
  fields.method = methodStored;
  fields.size = 0;
  for (auto bytes = fill(content, buffer_, step); !bytes.empty(); bytes = fill(content, buffer_, step)) {
    fields.crc = addedTo(fields.crc, bytes);
    fields.size += bytes.size();
  }
  fields.compressedSize = fields.size;
  requireRewound(content);
  writeHeader(fields);
  for (auto bytes = fill(content, buffer_, step); !bytes.empty(); bytes = fill(content, buffer_, step))
    output_.write(bytes);
  addRecord(fields);
}

std::shared_ptr<const StoredArchive> ZipWriter::finish() {
  DirectoryEnd end;
  end.position = output_.position();
  end.size = directory_.size();
  end.count = count_;
  end.comment = old_ ? old_->comment() : std::string();
  output_.write(directory_);
  writeEnd(end);
  return std::make_shared<ZipArchive>(container_, limits_, std::move(end), std::move(directory_));
}

// --- Records ---

void ZipWriter::writeHeader(Fields& fields) {
  fields.position = output_.position();
  const bool isLater = (fields.flags & flagDescriptor) != 0;
  const bool isZip64 = fields.hasLargeDescriptor || isLarge(fields.size) || isLarge(fields.compressedSize);
  auto extra = fields.localExtra;
  if (isZip64) {
    std::string sizes;
    appendNumber(sizes, isLater ? std::uint64_t{0} : fields.size);
    appendNumber(sizes, isLater ? std::uint64_t{0} : fields.compressedSize);
    extra += extraField(extraZip64, sizes);
    fields.versionNeeded = std::max(fields.versionNeeded, versionZip64);
  }
  const auto shownSize = [&](std::uint64_t size) {
    return isZip64 ? inZip64 : isLater ? std::uint32_t{0} : static_cast<std::uint32_t>(size);
  };
  std::string header;
  appendNumber(header, localHeaderSignature);
  appendNumber(header, fields.versionNeeded);
  appendNumber(header, fields.flags);
  appendNumber(header, fields.method);
  appendNumber(header, fields.dosTime);
  appendNumber(header, isLater ? std::uint32_t{0} : fields.crc);
  appendNumber(header, shownSize(fields.compressedSize));
  appendNumber(header, shownSize(fields.size));
  appendNumber(header, size16(fields.name));
  appendNumber(header, size16(extra));
  output_.write(header + fields.name + extra);
}

void ZipWriter::writeDescriptor(const Fields& fields) {
  std::string descriptor;
  appendNumber(descriptor, descriptorSignature);
  appendNumber(descriptor, fields.crc);
  if (fields.hasLargeDescriptor) {
    appendNumber(descriptor, fields.compressedSize);
    appendNumber(descriptor, fields.size);
  } else {
    appendNumber(descriptor, static_cast<std::uint32_t>(fields.compressedSize));
    appendNumber(descriptor, static_cast<std::uint32_t>(fields.size));
  }
  output_.write(descriptor);
}

void ZipWriter::addRecord(const Fields& fields) {
  std::string zip64;
  for (const auto number : {fields.size, fields.compressedSize, fields.position})
    if (isLarge(number))
      appendNumber(zip64, number);
  const auto extra = zip64.empty() ? fields.extra : extraField(extraZip64, zip64) + fields.extra;
  appendNumber(directory_, directorySignature);
  appendNumber(directory_, fields.versionMadeBy);
  appendNumber(directory_, zip64.empty() ? fields.versionNeeded : std::max(fields.versionNeeded, versionZip64));
  appendNumber(directory_, fields.flags);
  appendNumber(directory_, fields.method);
  appendNumber(directory_, fields.dosTime);
  appendNumber(directory_, fields.crc);
  appendNumber(directory_, orInZip64(fields.compressedSize));
  appendNumber(directory_, orInZip64(fields.size));
  appendNumber(directory_, size16(fields.name));
  appendNumber(directory_, size16(extra));
  appendNumber(directory_, size16(fields.comment));
  appendNumber(directory_, std::uint16_t{0});  // the disk
  appendNumber(directory_, fields.internalAttributes);
  appendNumber(directory_, fields.attributes);
  appendNumber(directory_, orInZip64(fields.position));
  directory_ += fields.name + extra + fields.comment;
  ++count_;
}

void ZipWriter::writeEnd(const DirectoryEnd& end) {
  const bool isZip64 = end.count >= countInZip64 || isLarge(end.size) || isLarge(end.position);
  std::string records;
  if (isZip64) {
    appendNumber(records, end64Signature);
    appendNumber(records, std::uint64_t{end64Size - 12});
    appendNumber(records, static_cast<std::uint16_t>(madeByUnix << 8 | versionZip64));
    appendNumber(records, versionZip64);
    appendNumber(records, std::uint32_t{0});
    appendNumber(records, std::uint32_t{0});
    appendNumber(records, end.count);
    appendNumber(records, end.count);
    appendNumber(records, end.size);
    appendNumber(records, end.position);
    appendNumber(records, end64LocatorSignature);
    appendNumber(records, std::uint32_t{0});
    appendNumber(records, end.position + end.size);
    appendNumber(records, std::uint32_t{1});
  }
  const auto count = static_cast<std::uint16_t>(isZip64 ? countInZip64 : end.count);
  appendNumber(records, endSignature);
  appendNumber(records, std::uint32_t{0});
  appendNumber(records, count);
  appendNumber(records, count);
  appendNumber(records, isZip64 ? inZip64 : static_cast<std::uint32_t>(end.size));
  appendNumber(records, isZip64 ? inZip64 : static_cast<std::uint32_t>(end.position));
  appendNumber(records, size16(end.comment));
  output_.write(records + end.comment);
}

}  // namespace foundation::storage::backend::archive::detail::zip
