#include <foundation/storage/provider/detail/UPathIRIImpl.h>

#include <algorithm>
#include <typeinfo>

namespace foundation::storage::provider::detail {
namespace {

using fl::filesystem::upath;

bool isDriveRoot(const upath& path) {
  return !path.string().starts_with(u'/') && root_length(path) == path.string().size() && !path.empty();
}

const UPathIRIImpl* asUPath(const StorageIRIImpl& other) {
  return typeid(other) == typeid(UPathIRIImpl) ? static_cast<const UPathIRIImpl*>(&other) : nullptr;
}

/// scheme://server/share for a network path, scheme:///C:/a for one with a drive, else scheme:///a.
network::IRI makeIRI(const std::u16string& scheme, const std::u16string& path) {
  if (!path.starts_with(u"//"))
    return network::IRI(scheme + u"://").withPath(path);
  const auto serverEnd = std::min(path.find(u'/', 2), path.size());
  network::IRIArgs args;
  args.setScheme(scheme).setHost(path.substr(2, serverEnd - 2)).setPath(path.substr(serverEnd));
  return network::IRI(args);
}

/// `path` under `root`, which it may already begin with: as "C:/a" or, once resolved, as "/C:/a" does.
std::u16string placedUnder(const std::u16string& root, const std::u16string& path) {
  if (path.empty())
    return root;
  if (root.size() > 1 && path.starts_with(root))
    return path;
  if (root.size() > 1 && path.compare(1, root.size(), root) == 0)
    return path.substr(1);
  const auto begin = std::min(path.find_first_not_of(u'/'), path.size());
  return (root.empty() ? u"/" : root) + path.substr(begin);
}

}  // namespace

UPathIRIImpl::UPathIRIImpl(std::u16string scheme, upath path) : scheme_(std::move(scheme)), path_(std::move(path)) {}

bool UPathIRIImpl::equals(const StorageIRIImpl& other) const {
  const auto* local = asUPath(other);
  return local != nullptr ? path_ == local->path_ : StorageIRIImpl::equals(other);
}

bool UPathIRIImpl::less(const StorageIRIImpl& other) const {
  const auto* local = asUPath(other);
  return local != nullptr ? path_ < local->path_ : StorageIRIImpl::less(other);
}

const StorageIRIImpl::Pointer& UPathIRIImpl::getParent() const {
  return seldomAsked().parent.get([this]() -> Pointer {
    // All drives hang under one root.
    if (isDriveRoot(path_))
      return std::make_shared<UPathIRIImpl>(scheme_, upath(u"/"));
    auto parent = extract_parent_path(path_);
    if (parent.empty())
      throwHasNoParent();
    return std::make_shared<UPathIRIImpl>(scheme_, std::move(parent));
  });
}

bool UPathIRIImpl::hasParent() const { return root_length(path_) < path_.string().size(); }

StorageIRI UPathIRIImpl::getRoot() const {
  return withPath(std::u16string(fl::filesystem::upath_constant::GENERIC_PATHNAME_SEPARATOR));
}

const std::u16string& UPathIRIImpl::getName() const {
  return name_.get([this] { return extract_filename(path_).string(); });
}

std::u16string UPathIRIImpl::getHost() const {
  if (!hasHost())
    return {};
  const auto root = extract_root_path(path_).string();  // "//server/"
  return root.substr(2, root.size() - 3);
}

StorageIRI UPathIRIImpl::withPath(const std::u16string& path) const {
  return wrap(std::make_shared<UPathIRIImpl>(
      scheme_, make_generic_form(upath(placedUnder(extract_root_path(path_).string(), path)))));
}

const network::IRI& UPathIRIImpl::iri() const {
  return iri_.get([this] { return makeIRI(scheme_, path_.string()); });
}

}  // namespace foundation::storage::provider::detail
