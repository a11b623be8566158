#include <fl/i18n/Surrogates.h>
#include <foundation/storage/provider/detail/Absolute.h>
#include <foundation/storage/provider/detail/HierarchicalImpl.h>
#include <foundation/storage/provider/detail/PathSplit.h>

namespace foundation::storage::provider::detail {
namespace {

bool isAsciiLetter(char16_t unit) { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z'; }

/// Whether `path` begins with a drive under the root, such as "/C:" or "/C:/a".
bool beginsWithDrive(std::u16string_view path) {
  return path.size() >= 3 && path[0] == u'/' && isAsciiLetter(path[1]) && path[2] == u':' &&
         (path.size() == 3 || path[3] == u'/');
}

/// Whether `path` holds a surrogate without its partner. Such a path need not come back from its text,
/// where a lone surrogate is spelt by the bytes that name the file.
bool hasLoneSurrogate(std::u16string_view path) {
  for (std::size_t at = 0; at < path.size(); ++at) {
    if (!fl::i18n::isSurrogate(path[at]))
      continue;
    if (!fl::i18n::isPairAt(path, at))
      return true;
    ++at;
  }
  return false;
}

}  // namespace

HierarchicalImpl::HierarchicalImpl(network::IRI iri) : iri_(std::move(iri)) { requireAbsolute(iri_); }

HierarchicalImpl::HierarchicalImpl(network::IRI iri, std::u16string path)
    : iri_(std::move(iri)), path_(std::move(path)) {
  requireAbsolute(iri_);
}

const StorageIRIImpl::Pointer& HierarchicalImpl::getParent() const {
  return parent_.get([this] {
    const auto parentPath = splitPath(getPath()).parent;
    if (parentPath.empty())
      throwHasNoParent();
    return of(withPath(std::u16string(parentPath)));
  });
}

StorageIRI HierarchicalImpl::getRoot() const {
  return root_.get([this] { return withPath(u"/"); });
}

const std::u16string& HierarchicalImpl::getPath() const {
  return path_.get([this] { return iri_.pathHasEscapes() ? iri_.getPath() : std::u16string(iri_.writtenPath()); });
}

const std::u16string& HierarchicalImpl::getName() const {
  return name_.get([this] { return std::u16string(splitPath(getPath()).name); });
}

const std::u16string& HierarchicalImpl::toAsciiString() const {
  return iri_.isAscii() ? iri_.text() : asciiText_.get([this] { return iri_.toAsciiString(); });
}

fl::filesystem::upath HierarchicalImpl::toUPath() const {
  std::u16string path = getPath();
  if (hasHost()) {
    const auto begin = std::min(path.find_first_not_of(u'/'), path.size());
    path = u"//" + getHost() + u"/" + path.substr(begin);
  } else if (beginsWithDrive(path)) {
    path.erase(0, 1);
    if (path.back() == u':')
      path.push_back(u'/');
  }
  return path.empty() ? fl::filesystem::upath() : make_native_form(fl::filesystem::upath(std::move(path)));
}

StorageIRI HierarchicalImpl::withPath(const std::u16string& path) const {
  if (hasLoneSurrogate(path))
    return wrap(std::make_shared<HierarchicalImpl>(iri_.withPath(path), path));
  return wrap(std::make_shared<HierarchicalImpl>(iri_.withPath(path)));
}

}  // namespace foundation::storage::provider::detail
