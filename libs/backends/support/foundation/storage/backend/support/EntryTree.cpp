#include <foundation/storage/backend/support/EntryTree.h>

#include <stdexcept>
#include <utility>

namespace foundation::storage::backend::support {

using provider::FolderEntry;

namespace {

FolderEntry renamed(const FolderEntry& entry, std::u16string name) {
  auto copy = entry.getFileAttributes()     ? FolderEntry(std::move(name), *entry.getFileAttributes())
              : entry.getFolderAttributes() ? FolderEntry(std::move(name), *entry.getFolderAttributes())
              : entry.isFile()              ? FolderEntry(std::move(name), FolderEntry::EntryType::File)
                                            : FolderEntry(std::move(name), FolderEntry::EntryType::Folder);
  return entry.getExtendedAttributes() ? copy.withExtendedAttributes(*entry.getExtendedAttributes()) : copy;
}

}  // namespace

EntryTree::EntryTree(std::function<Items()> list) : list_(std::move(list)), items_(list_()) {}
EntryTree::~EntryTree() = default;

FolderEntry EntryTree::current() const {
  if (next_ == 0 || next_ > items_.size())
    throw std::logic_error("A listing has no current entry before its first one and after its end.");
  const auto& item = items_[next_ - 1];
  return item.folder == none ? item.entry : renamed(item.entry, pathOf(next_ - 1));
}

std::u16string EntryTree::pathOf(std::size_t index) const {
  std::vector<const std::u16string*> names;
  for (; index != none; index = items_[index].folder)
    names.push_back(&items_[index].entry.getName());
  std::u16string path;
  for (auto name = names.rbegin(); name != names.rend(); ++name)
    path.append(path.empty() ? u"" : u"/").append(**name);
  return path;
}

void EntryTree::next() {
  if (next_ <= items_.size())
    ++next_;
}

void EntryTree::reset() {
  items_ = list_();
  next_ = 0;
}

}  // namespace foundation::storage::backend::support
