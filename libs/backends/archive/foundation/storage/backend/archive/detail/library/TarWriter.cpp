#include <foundation/storage/backend/archive/detail/library/TarWriter.h>

#include <foundation/storage/backend/archive/detail/Budget.h>
#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/library/Headers.h>
#include <foundation/storage/backend/archive/detail/library/TarName.h>

#include <new>
#include <utility>

namespace foundation::storage::backend::archive::detail::library {
namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

EntryHandle requireEntry(archive_entry* entry) {
  if (entry == nullptr)
    throw std::bad_alloc();
  return EntryHandle(entry);
}

EntryHandle makeHeader(const Entry& entry) {
  auto header = requireEntry(archive_entry_new());
  archive_entry_copy_pathname(header.get(), entry.name.c_str());
  archive_entry_set_filetype(header.get(), entry.kind == EntryKind::Folder ? AE_IFDIR : AE_IFREG);
  archive_entry_set_perm(header.get(), entry.permissions);
  archive_entry_set_size(header.get(), static_cast<la_int64_t>(entry.size.value_or(0)));
  setLastModified(header.get(), entry.lastModified);
  return header;
}

std::unordered_set<std::size_t> sharedContentIn(const LibraryArchive* archive) {
  std::unordered_set<std::size_t> numbers;
  if (archive != nullptr)
    for (const auto& [link, target] : archive->listing().shared)
      if (const auto content = contentOf(archive->listing().shared, link))
        numbers.insert(*content);
  return numbers;
}

}  // namespace

TarWriter::TarWriter(std::shared_ptr<Container> container, const Limits& limits,
                     std::shared_ptr<const LibraryArchive> old, const std::vector<int>& filters, Output& output)
    : container_(std::move(container)),
      limits_(limits),
      old_(std::move(old)),
      output_(output),
      tar_(output, filters),
      sharedContent_(sharedContentIn(old_.get())),
      buffer_(bufferSize) {
  listing_.reading = Reading::Tar;
  listing_.filters = filters;
}

void TarWriter::take(const Takeover& entry) {
  const auto& shared = old_->listing().shared;
  if (!shared.contains(entry.number)) {
    takeFile(entry.number, entry);
    return;
  }
  const auto content = contentOf(shared, entry.number);
  const auto target = content ? written_.find(*content) : written_.end();
  if (content && target == written_.end())
    takeFile(*content, entry);
  else
    takeLink(entry, content ? &target->second : nullptr);
}

EntryHandle TarWriter::headerOf(std::size_t number, const Takeover& changes) {
  if (!cursor_ || !old_->isNear(*cursor_, number))
    cursor_ = old_->takeCursor(number);
  auto header = requireEntry(archive_entry_clone(cursor_->goTo(number, old_->entries()[number].name)));
  archive_entry_copy_pathname(header.get(), changes.name.c_str());
  if (changes.lastModified)
    setLastModified(header.get(), *changes.lastModified);
  if (changes.permissions)
    archive_entry_set_perm(header.get(), *changes.permissions);
  return header;
}

void TarWriter::takeFile(std::size_t content, const Takeover& changes) {
  const auto header = headerOf(content, changes);
  archive_entry_set_hardlink(header.get(), nullptr);  // one with content of its own is a file
  auto entry = entryIn(header.get());
  if (entry.kind == EntryKind::File)
    archive_entry_set_filetype(header.get(), AE_IFREG);
  if (archive_entry_sparse_count(header.get()) > 0 && entry.size.value_or(0) > limits_.totalSize)
    throw Fault(provider::ErrorCode::FileTooLarge, "it holds a larger file than the option max-total-size allows");
  const auto isFile = entry.kind == EntryKind::File;
  begin(std::move(entry), header.get());
  if (isFile)
    copyContent(listing_.entries.back());
  tar_.finishEntry();
  noteContent(content, changes.name);
}

void TarWriter::takeLink(const Takeover& changes, const Written* target) {
  const auto header = headerOf(changes.number, changes);
  archive_entry_unset_size(header.get());
  auto entry = entryIn(header.get());
  const auto number = target != nullptr ? std::optional(target->number) : std::nullopt;
  if (target != nullptr) {
    archive_entry_copy_hardlink(header.get(), target->name.c_str());
    becomeLinkTo(entry, listing_.entries[target->number], target->number);
  }
  listing_.shared[listing_.entries.size()] = number;
  begin(std::move(entry), header.get());
  tar_.finishEntry();
}

void TarWriter::copyContent(const Entry& entry) {
  std::uint64_t position = 0;
  Reader::Block block;
  while (cursor_->reader().readBlock(block)) {
    if (block.position < position)
      throw damage("an entry's content overlaps itself");
    tar_.writeZeros(block.position - position);
    tar_.write(block.bytes);
    position = block.position + block.bytes.size();
  }
  if (entry.size.value_or(0) > position)
    tar_.writeZeros(*entry.size - position);
}

void TarWriter::add(const Entry& entry, ContentReader* content) {
  if (content != nullptr && !entry.size)
    throw damage("a tar takes no file of unknown size");
  const auto header = makeHeader(entry);
  begin(entry, header.get());
  if (content != nullptr)
    addContent(*entry.size, *content);
  tar_.finishEntry();
}

void TarWriter::addContent(std::uint64_t size, ContentReader& content) {
  std::uint64_t given = 0;
  while (const auto got = content.read(buffer_.data(), buffer_.size())) {
    given += got;
    if (given > size)
      break;
    tar_.write({buffer_.data(), got});
  }
  if (given != size)
    throw damage("the content of a file is not as long as it was said to be");
}

void TarWriter::begin(Entry entry, archive_entry* header) {
  const bool isPlain = listing_.filters->empty();
  const auto position = tar_.position();
  noteName(entry.name);
  tar_.begin(header);
  if (isPlain)
    listing_.places.push_back({position, {}});
  if (isPlain && entry.kind == EntryKind::File && archive_entry_sparse_count(header) == 0)
    listing_.places.back().content = tar_.position();
  listing_.entries.push_back(std::move(entry));
}

/// What had that name before is no longer what a hard link to it leads to.
void TarWriter::noteName(const std::string& name) {
  const auto found = numbers_.find(plainName(name));
  if (found == numbers_.end())
    return;
  written_.erase(found->second);
  numbers_.erase(found);
}

void TarWriter::noteContent(std::size_t number, const std::string& name) {
  if (!sharedContent_.contains(number))
    return;
  if (const auto before = written_.find(number); before != written_.end())
    numbers_.erase(plainName(before->second.name));
  written_[number] = {listing_.entries.size() - 1, name};
  numbers_[plainName(name)] = number;
}

std::shared_ptr<const StoredArchive> TarWriter::finish() {
  tar_.close();
  output_.flush();
  // What nobody could read again is better not written.
  if (!listing_.filters->empty())
    Budget::requireRatio(limits_, tar_.position(), output_.position());
  return std::make_shared<LibraryArchive>(container_, std::move(listing_), limits_);
}

std::unique_ptr<ArchiveWriter> beginTar(const std::shared_ptr<Container>& container, const Limits& limits,
                                        std::shared_ptr<const StoredArchive> old, Output& output) {
  auto tar = std::dynamic_pointer_cast<const LibraryArchive>(std::move(old));
  auto filters = tar && tar->listing().filters ? *tar->listing().filters : filtersByName(container->item().getName());
  return std::make_unique<TarWriter>(container, limits, std::move(tar), filters, output);
}

}  // namespace foundation::storage::backend::archive::detail::library
