#include <foundation/storage/backend/archive/detail/zip/ZipArchive.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/zip/DecodedReader.h>
#include <foundation/storage/backend/archive/detail/zip/PlainReader.h>
#include <foundation/storage/backend/archive/detail/zip/Records.h>

#include <algorithm>
#include <utility>

namespace foundation::storage::backend::archive::detail::zip {

namespace {

Fault tooManyEntries(const Limits& limits) {
  return {provider::ErrorCode::FileTooLarge, "the archive has more entries than the " + std::to_string(limits.entries) +
                                                 " that the option max-entries allows"};
}

/// Whether this is the number of records that the archive tells of.
bool isTold(const DirectoryEnd& end, std::uint64_t count) {
  return end.isCountWhole ? count == end.count : (count & 0xFFFF) == end.count;
}

}  // namespace

ZipArchive::ZipArchive(std::shared_ptr<Container> container, const Limits& limits, DirectoryEnd end,
                       std::string directory)
    : container_(std::move(container)), limits_(limits), end_(std::move(end)), directory_(std::move(directory)) {
  readRecords();
  findOverlaps();
  budget_ = std::make_unique<Budget>(limits_, entries_.size());
}

void ZipArchive::readRecords() {
  // What is told is only a hint, and may be a lie: no more room is made than the bytes can be records.
  const auto expected = std::min<std::uint64_t>(end_.count, directory_.size() / directoryRecordSize);
  entries_.reserve(expected);
  members_.reserve(expected);
  TimeReader times;
  for (std::string_view rest = directory_; !rest.empty();) {
    if (entries_.size() == limits_.entries)
      throw tooManyEntries(limits_);
    takeRecord(rest, end_.base, times, entries_.emplace_back(), members_.emplace_back());
  }
  if (!isTold(end_, entries_.size()))
    throw damage("the zip's directory holds another number of records than its end tells");
}

/// Entries that share bytes: each of them, so that none of a bomb's can be read.
void ZipArchive::findOverlaps() {
  std::vector<Member*> byPosition;
  byPosition.reserve(members_.size());
  for (auto& member : members_)
    byPosition.push_back(&member);
  const auto isBefore = [](const Member* left, const Member* right) {
    return left->headerPosition < right->headerPosition;
  };
  if (!std::is_sorted(byPosition.begin(), byPosition.end(), isBefore))
    std::sort(byPosition.begin(), byPosition.end(), isBefore);
  Member* reachesFarthest = nullptr;
  std::uint64_t farthest = 0;
  for (auto* member : byPosition) {
    if (reachesFarthest != nullptr && member->headerPosition < farthest)
      member->isOverlapped = reachesFarthest->isOverlapped = true;
    // At least: the local header has a name and extra fields, too.
    const auto least = member->headerPosition + localHeaderSize;
    const auto end = least + std::min(member->compressedSize, end_.position - std::min(least, end_.position));
    if (reachesFarthest == nullptr || end > farthest) {
      farthest = end;
      reachesFarthest = member;
    }
  }
}

std::uint64_t ZipArchive::prefixSize() const {
  auto first = end_.position;
  for (const auto& member : members_)
    first = std::min(first, member.headerPosition);
  return first;
}

Extent ZipArchive::extent(std::size_t number, Input& input) const {
  const auto& member = members_[number];
  if (member.isOverlapped)
    throw damage("the entry overlaps with another one");
  if (member.headerPosition > end_.position || end_.position - member.headerPosition < localHeaderSize)
    throw damage("the entry lies beyond the zip's directory");
  std::string head(localHeaderSize, '\0');
  input.readAll(member.headerPosition, head.data(), head.size());
  if (readNumber<std::uint32_t>(head, 0) != localHeaderSignature)
    throw damage("the entry's local header is not where the zip's directory says");
  const auto nameSize = readNumber<std::uint16_t>(head, 26);
  std::string names(nameSize + std::size_t{readNumber<std::uint16_t>(head, 28)}, '\0');
  const auto position = member.headerPosition + localHeaderSize + names.size();
  if (position > end_.position || end_.position - position < member.compressedSize)
    throw damage("the entry reaches into the zip's directory");
  input.readAll(member.headerPosition + localHeaderSize, names.data(), names.size());
  const auto recordNameSize = readNumber<std::uint16_t>(member.record, 28);
  if (names.compare(0, nameSize, member.record.substr(directoryRecordSize, recordNameSize)) != 0)
    throw damage("the entry's local header has another name than the zip's directory");
  if (readNumber<std::uint16_t>(head, 8) != member.method)
    throw damage("the entry's local header tells of another compression than the zip's directory");
  return {names.substr(nameSize), position, member.compressedSize};
}

std::unique_ptr<ContentReader> ZipArchive::open(std::size_t number) const {
  const auto& member = members_[number];
  if (entries_[number].isEncrypted)
    throw Fault(provider::ErrorCode::UnsupportedOperation, "the entry is encrypted");
  auto input = container_->open();
  const auto lies = extent(number, input);
  const Content content{number, lies.position, lies.size, member.size, member.crc, member.method, member.flags};
  auto archive = std::static_pointer_cast<const ZipArchive>(shared_from_this());
  if (member.method == methodStored)
    return std::make_unique<PlainReader>(std::move(archive), *budget_, std::move(input), content);
  return std::make_unique<DecodedReader>(std::move(archive), *budget_, limits_, std::move(input), content);
}

std::shared_ptr<const ZipArchive> readZip(const std::shared_ptr<Container>& container, const Limits& limits) {
  auto input = container->open();
  auto end = findDirectoryEnd(input);
  if (end.isCountWhole && end.count > limits.entries)
    throw tooManyEntries(limits);
  // The longest names, fields and comments of many entries are no use to anybody.
  constexpr std::uint64_t usualMost = 1024;
  if (end.size / usualMost > limits.entries)
    throw tooManyEntries(limits);
  std::string directory(end.size, '\0');
  input.readAll(end.position, directory.data(), directory.size());
  return std::make_shared<ZipArchive>(container, limits, std::move(end), std::move(directory));
}

}  // namespace foundation::storage::backend::archive::detail::zip
