#include <foundation/storage/provider/detail/HierarchicalImpl.h>

#include <foundation/storage/provider/detail/Absolute.h>
#include <foundation/storage/provider/detail/AsciiForm.h>
#include <foundation/storage/provider/detail/PathSplit.h>

#include <algorithm>
#include <typeinfo>

namespace foundation::storage::provider::detail {
namespace {

/// Whether `path` is a drive under the root or begins with one: "/C:", "/C:/a".
bool beginsWithDrive(const std::u16string& path) {
  if (path.size() < 3)
    return false;
  const fl::filesystem::upath below(path.substr(1));
  const auto length = root_length(below);
  return length == 3 || (length == 2 && path.size() == 3);
}

}  // namespace

HierarchicalImpl::HierarchicalImpl(network::IRI iri) : iri_(std::move(iri)) { requireAbsolute(iri_); }

HierarchicalImpl::HierarchicalImpl(network::IRI iri, std::u16string path) : HierarchicalImpl(std::move(iri)) {
  names_.get([&path] { return Names(std::move(path)); });
}

bool HierarchicalImpl::equals(const StorageIRIImpl& other) const {
  if (typeid(other) == typeid(HierarchicalImpl))
    return sameAsciiForm(iri_.text(), static_cast<const HierarchicalImpl&>(other).iri_.text());
  return StorageIRIImpl::equals(other);
}

bool HierarchicalImpl::less(const StorageIRIImpl& other) const {
  if (typeid(other) == typeid(HierarchicalImpl))
    return lessAsciiForm(iri_.text(), static_cast<const HierarchicalImpl&>(other).iri_.text());
  return StorageIRIImpl::less(other);
}

const StorageIRIImpl::Pointer& HierarchicalImpl::getParent() const {
  return seldomAsked().parent.get([this] {
    const auto parentPath = splitPath(getPath()).parent;
    if (parentPath.empty())
      throwHasNoParent();
    return of(withPath(std::u16string(parentPath)));
  });
}

StorageIRI HierarchicalImpl::getRoot() const {
  return seldomAsked().root.get([this] { return withPath(u"/"); });
}

const HierarchicalImpl::Names& HierarchicalImpl::names() const {
  return names_.get(
      [this] { return Names(iri_.pathHasEscapes() ? iri_.getPath() : std::u16string(iri_.writtenPath())); });
}

const std::u16string& HierarchicalImpl::getPath() const { return names().path; }

const std::u16string& HierarchicalImpl::getName() const {
  const auto& known = names();
  return known.name.get([&known] { return std::u16string(splitPath(known.path).name); });
}

fl::filesystem::upath HierarchicalImpl::toUPath() const {
  std::u16string path = getPath();
  if (hasHost()) {
    const auto begin = std::min(path.find_first_not_of(u'/'), path.size());
    // A '/' in the host would make another server and share of it.
    const auto host = getHost();
    const auto server = host.find(u'/') == std::u16string::npos ? host : std::u16string(iri_.writtenHost());
    path = u"//" + server + u"/" + path.substr(begin);
  } else if (beginsWithDrive(path)) {
    path.erase(0, 1);
    if (path.size() == 2)  // a bare drive
      path.push_back(u'/');
  }
  return path.empty() ? fl::filesystem::upath() : make_native_form(fl::filesystem::upath(std::move(path)));
}

StorageIRI HierarchicalImpl::withPath(const std::u16string& path) const {
  auto iri = iri_.withPath(path);
  return wrap(iri.pathIsLossy() ? std::make_shared<HierarchicalImpl>(std::move(iri), path)
                                : std::make_shared<HierarchicalImpl>(std::move(iri)));
}

StorageIRI HierarchicalImpl::withChild(std::u16string_view name) const {
  auto iri = iri_.withChild(name);
  if (!iri.pathIsLossy() && !iri_.pathIsLossy())
    return wrap(std::make_shared<HierarchicalImpl>(std::move(iri)));
  const auto& folder = getPath();
  return withPath(folder + (folder.ends_with(u'/') ? u"" : u"/") + std::u16string(name));
}

}  // namespace foundation::storage::provider::detail
