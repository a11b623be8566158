#include <foundation/storage/backend/archive/detail/Commit.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/Format.h>
#include <foundation/storage/backend/archive/detail/Output.h>
#include <foundation/storage/backend/archive/detail/StagedReader.h>
#include <foundation/storage/backend/support/VisitBelow.h>

#include <fl/i18n/Convert.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace foundation::storage::backend::archive::detail {

namespace {

/// Whether a folder needs an entry of its own: the names of what it holds imply it, else.
bool isWritten(const Node& node) { return !node.isFolder() || node.entry || node.isCreated || node.children.empty(); }

}  // namespace

Commit::Commit(Tree& tree, std::shared_ptr<const StoredArchive> stored) : tree_(tree), stored_(std::move(stored)) {
  plan();
}

void Commit::plan() {
  auto last = planHidden();
  support::visitBelow(tree_.root(), true, [&](const std::u16string& path, const auto&, Node& node, std::size_t) {
    ++nodes_;
    if (isWritten(node))
      items_.push_back({&node, node.entry.value_or(isNew), fl::i18n::to_string(path)});
  });
  std::stable_sort(items_.begin(), items_.end(),
                   [](const Item& left, const Item& right) { return left.number < right.number; });
  std::move(last.begin(), last.end(), std::back_inserter(items_));
}

/// What no name leads to stays where it is. What other entries hide goes last, as the last one of a name counts; once
/// they are gone it is dropped: it must not turn up under a name that somebody has removed, or given to something else.
/// @return what goes last
std::vector<Commit::Item> Commit::planHidden() {
  std::vector<Item> last;
  for (const auto number : tree_.hidden()) {
    const auto& entry = stored_->entries()[number];
    const auto names = parseEntryName(entry.name);
    if (!names)
      items_.push_back({nullptr, number, {}});
    else if (tree_.hides(*names, entry.kind))
      last.push_back({nullptr, number, {}});
  }
  return last;
}

void Commit::write(ArchiveFormat format, const std::shared_ptr<Container>& container, const Limits& limits) {
  if (std::max<std::uint64_t>(nodes_, items_.size()) > limits.entries)
    throw Fault(provider::ErrorCode::FileTooLarge, "the archive would have more entries and folders than the " +
                                                       std::to_string(limits.entries) +
                                                       " that the option max-entries allows");
  const auto stream =
      container->item().openTransactionalStream({.access = provider::ByteStreamAccess::WriteOnly,
                                                 .create = provider::ByteStreamCreate::Create,
                                                 .truncate = provider::ByteStreamTruncate::TruncateExisting,
                                                 .append = provider::ByteStreamAppend::Overwrite});
  Output output(*stream);
  const auto writer = beginArchive(format, container, limits, stored_, output);
  for (auto& item : items_)
    putNamed(item, *writer);
  auto written = writer->finish();
  output.flush();
  size_ = output.position();
  written_ = std::move(written);
  stream->close(provider::StreamClosePolicy::Commit);
}

/// As it was, down to the byte, unless the entry was moved.
std::string Commit::storedName(const Item& item) const {
  const auto& old = stored_->entries()[item.number].name;
  const auto names = parseEntryName(old);
  if (item.node == nullptr || (names && formatEntryName(*names) == item.path))
    return old;
  return item.node->isFolder() ? item.path + '/' : item.path;
}

/// Whoever flushes has asked for no entry: the reason has to say which one it is.
void Commit::putNamed(Item& item, ArchiveWriter& writer) const {
  try {
    put(item, writer);
  } catch (const Fault& fault) {
    const auto name = item.node != nullptr ? '"' + item.path + '"' : "a hidden entry";
    throw Fault(fault.code(), name + ": " + fault.what());
  }
}

void Commit::put(Item& item, ArchiveWriter& writer) const {
  if (item.node != nullptr && (item.node->staged || item.number == isNew))
    return putFile(item, writer);
  Takeover entry{item.number, storedName(item)};
  if (item.node != nullptr && item.node->hasNewTime)
    entry.lastModified = item.node->lastModified;
  if (item.node != nullptr && item.node->hasNewPermissions)
    entry.permissions = item.node->permissions;
  writer.take(entry);
}

/// Or a folder, of which there is no entry yet.
void Commit::putFile(Item& item, ArchiveWriter& writer) {
  const auto& node = *item.node;
  Entry entry;
  entry.kind = node.kind;
  entry.name = node.isFolder() ? item.path + '/' : item.path;
  entry.permissions = node.permissions;
  if (node.isFolder()) {
    entry.lastModified = node.lastModified;
    return writer.add(entry, nullptr);
  }
  // Whatever is written from here on makes it another revision.
  StagedReader reader(*node.staged);
  item.revision = reader.content().revision();
  entry.lastModified = reader.content().lastModified();
  entry.size = reader.content().size();
  writer.add(entry, &reader);
}

bool Commit::adopt() {
  std::vector<std::size_t> hidden;  // first: memory may be short, and no number may change without the others
  for (std::size_t number = 0; number < items_.size(); ++number)
    if (items_[number].node == nullptr)
      hidden.push_back(number);
  bool isLeft = false;
  for (std::size_t number = 0; number < items_.size(); ++number)
    if (items_[number].node != nullptr)
      isLeft = adopt(items_[number], number) || isLeft;
  tree_.setHidden(std::move(hidden));
  return isLeft;
}

bool Commit::adopt(const Item& item, std::size_t number) const {
  auto& node = *item.node;
  node.entry = number;
  node.hasNewTime = node.hasNewPermissions = node.isCreated = false;
  if (node.kind != EntryKind::File)
    return false;
  if (node.staged && (node.staged->isBeingWritten() || node.staged->revision() != item.revision))
    return true;
  const auto& entries = written_->entries();
  node.source = entries[number].hardLinkTo.value_or(number);
  node.size = entries[*node.source].size;
  node.lastModified = node.time();
  node.staged.reset();
  return false;
}

}  // namespace foundation::storage::backend::archive::detail
