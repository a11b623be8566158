#include <foundation/storage/backend/s3/detail/Listing.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/s3/detail/Attributes.h>
#include <foundation/storage/backend/s3/detail/Failure.h>
#include <foundation/storage/backend/s3/detail/Lookup.h>
#include <foundation/storage/backend/s3/detail/Pages.h>

#include <stdexcept>
#include <utility>

namespace foundation::storage::backend::s3::detail {

using provider::FolderEntry;

Listing::Listing(SessionPtr session, Place folder, const support::ListingScope& scope, const std::string& begin)
    : session_(std::move(session)), folder_(std::move(folder)), scope_(scope) {
  request_.prefix = folder_.prefix() + begin;
  request_.delimiter = scope_.isRecursive ? "" : "/";
  fetchFirst();
}

Listing::~Listing() = default;

FolderEntry Listing::current() const {
  if (!current_)
    throw std::logic_error("A listing has no current entry before its first one and after its end.");
  return *current_;
}

bool Listing::hasNext() const {
  while (entries_.empty() && !token_.empty())
    fetchNext();
  return !entries_.empty();
}

void Listing::next() {
  if (!hasNext())
    return current_.reset();
  current_ = std::move(entries_.front());
  entries_.pop_front();
}

void Listing::reset() {
  fetchFirst();
  current_.reset();
}

void Listing::fetchFirst() {
  const auto page = at(folder_.location, [&] { return firstPage(session_->client, request_); });
  // An empty folder shows itself, by the empty object that stands for it, unless names are wanted that begin otherwise.
  if (page.objects.empty() && page.prefixes.empty() && !folder_.isRoot()) {
    if (request_.prefix == folder_.prefix())
      throw noFolder(*session_, folder_);
    requireFolder(*session_, folder_);
  }
  entries_.clear();
  visited_.clear();
  take(page);
}

void Listing::fetchNext() const {
  take(at(folder_.location, [&] { return session_->client.list(request_, token_); }));
}

void Listing::take(const wire::ListPage& page) const {
  const auto nameBegin = folder_.prefix().size();
  for (const auto& prefix : page.prefixes)
    takeFolders(std::string_view(prefix).substr(nameBegin));
  for (const auto& object : page.objects)
    takeObject(object);
  token_ = page.nextToken;
}

void Listing::takeObject(const wire::ListedObject& object) const {
  const auto path = std::string_view(object.key).substr(folder_.prefix().size());
  const bool isNamed = !path.empty() && !path.starts_with('/') && !path.ends_with('/') && path.find("//") == path.npos;
  if (scope_.isRecursive)
    takeFolders(path);
  if (!isNamed || !scope_.includes(FolderEntry::EntryType::File))
    return;
  auto name = fl::i18n::to_ustring(path);
  if (!scope_.givesAttributes)
    entries_.emplace_back(std::move(name), FolderEntry::EntryType::File);
  else
    entries_.emplace_back(name, attributesOfFile(name, object.size, object.lastModified));
}

/// Takes the folders that a path leads through, as far as the walk is not in them already. Keys come in the order of
/// their bytes: all that lie in a folder come in a row.
void Listing::takeFolders(std::string_view path) const {
  std::size_t end = 0;
  for (auto slash = path.find('/'); slash != path.npos && slash > end; slash = path.find('/', end)) {
    end = slash + 1;
    if (!visited_.starts_with(path.substr(0, end)))
      takeFolder(path.substr(0, slash));
  }
  visited_ = path.substr(0, end);
}

void Listing::takeFolder(std::string_view path) const {
  if (!scope_.includes(FolderEntry::EntryType::Folder))
    return;
  auto name = fl::i18n::to_ustring(path);
  if (!scope_.givesAttributes)
    entries_.emplace_back(std::move(name), FolderEntry::EntryType::Folder);
  else
    entries_.emplace_back(name, attributesOfFolder(name));
}

std::string literalBegin(std::u16string_view wildcard) {
  return fl::i18n::to_string(wildcard.substr(0, wildcard.find_first_of(u"*?[/")));
}

}  // namespace foundation::storage::backend::s3::detail
