#include <foundation/storage/backend/support/EntryList.h>

#include <stdexcept>
#include <utility>

namespace foundation::storage::backend::support {

EntryList::EntryList(std::function<Entries()> list) : list_(std::move(list)), entries_(list_()) {}
EntryList::~EntryList() = default;

provider::FolderEntry EntryList::current() const {
  if (next_ == 0 || next_ > entries_.size())
    throw std::logic_error("A listing has no current entry before its first one and after its end.");
  return entries_[next_ - 1];
}

void EntryList::next() {
  if (next_ <= entries_.size())
    ++next_;
}

void EntryList::reset() {
  entries_ = list_();
  next_ = 0;
}

}  // namespace foundation::storage::backend::support
