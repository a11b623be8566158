#include <foundation/storage/backend/archive/detail/library/Cursor.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/library/Headers.h>

namespace foundation::storage::backend::archive::detail::library {

archive_entry* Cursor::goTo(std::size_t number, std::string_view name) {
  archive_entry* header = nullptr;
  while (next_ <= number) {
    header = reader_.next(Reader::Unread::Decode);
    if (header == nullptr)
      break;
    ++next_;
  }
  if (header == nullptr || nameIn(header) != name)
    throw damage("the archive has changed since it was listed");
  return header;
}

}  // namespace foundation::storage::backend::archive::detail::library
