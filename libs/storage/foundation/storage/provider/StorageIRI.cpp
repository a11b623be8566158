#include <foundation/storage/provider/StorageIRI.h>

#include <fl/i18n/StreamOperator.h>
#include <foundation/storage/provider/detail/ContainerImpl.h>
#include <foundation/storage/provider/detail/HierarchicalImpl.h>
#include <foundation/storage/provider/detail/StorageIRIImpl.h>
#include <foundation/storage/provider/detail/UPathIRIImpl.h>

#include <algorithm>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <typeinfo>

namespace foundation::storage::provider {
namespace {

using detail::HierarchicalImpl;
using detail::StorageIRIImpl;

/// A child that replaces its parent's path: leading '/' count as one.
std::u16string absolutePath(const std::u16string& child) {
  return u"/" + child.substr(std::min(child.find_first_not_of(u'/'), child.size()));
}

std::u16string continuedPath(std::u16string path, std::u16string_view name) {
  if (path.empty() || path.back() != u'/')
    path.push_back(u'/');
  path.append(name);
  return path;
}

StorageIRI childOf(const StorageIRI& parent, const std::u16string& child) {
  const auto& impl = *StorageIRIImpl::of(parent);
  if (child.empty())
    return parent;
  if (child.front() == u'/')
    return impl.withPath(absolutePath(child));
  const auto name = std::u16string_view(child).substr(0, child.size() - (child.back() == u'/' ? 1 : 0));
  // The common case, without taking the parent's path out of its text and putting it in again.
  if (typeid(impl) == typeid(HierarchicalImpl))
    return static_cast<const HierarchicalImpl&>(impl).withChild(name);
  return impl.withPath(continuedPath(parent.getPath(), name));
}

/// A reference to `path` alone, under an empty authority so that even "//a" is read as a path.
network::IRI pathReference(const std::u16string& path) {
  return network::IRI(network::IRIArgs().setHost(u"").setPath(path));
}

[[noreturn]] void throwNoCommonRoot(const StorageIRI& location, const StorageIRI& base) {
  std::ostringstream message;
  message << "Can not make relative path between " << location << " and " << base
          << " as they don't have a common root.";
  throw std::runtime_error(message.str());
}

}  // namespace

StorageIRI::StorageIRI(std::u16string iri) : StorageIRI(network::IRI(std::move(iri))) {}

StorageIRI::StorageIRI(network::IRI iri) : impl_(detail::makeImplFromIRI(std::move(iri))) {}

StorageIRI::StorageIRI(const StorageIRI& parent, const std::u16string& child) : StorageIRI(childOf(parent, child)) {}

StorageIRI::StorageIRI(const std::u16string& scheme, const StorageIRI& inner, std::u16string path)
    : impl_(std::make_shared<detail::ContainerImpl>(scheme, inner.impl_, std::move(path))) {}

StorageIRI::StorageIRI(std::u16string scheme, fl::filesystem::upath path)
    : impl_(std::make_shared<detail::UPathIRIImpl>(std::move(scheme), std::move(path))) {}

StorageIRI::StorageIRI(std::shared_ptr<const detail::StorageIRIImpl> impl) noexcept : impl_(std::move(impl)) {}

std::u16string StorageIRI::getScheme() const { return impl_->getScheme(); }
std::u16string StorageIRI::getHost() const { return impl_->getHost(); }
bool StorageIRI::hasHost() const { return impl_->hasHost(); }
const std::u16string& StorageIRI::getPath() const { return impl_->getPath(); }
bool StorageIRI::hasPath() const { return impl_->hasPath(); }
PathView StorageIRI::getPathView() const { return PathView(getPath()); }
const std::u16string& StorageIRI::getName() const { return impl_->getName(); }
StorageIRI StorageIRI::getParent() const { return StorageIRI(impl_->getParent()); }
bool StorageIRI::hasParent() const { return impl_->hasParent(); }
StorageIRI StorageIRI::getInnerIRI() const { return StorageIRI(impl_->getInnerIRI()); }
bool StorageIRI::hasInnerIRI() const { return impl_->hasInnerIRI(); }
bool StorageIRI::isOpaque() const { return impl_->isOpaque(); }
const std::u16string& StorageIRI::toString() const { return impl_->toString(); }
const std::u16string& StorageIRI::toAsciiString() const { return impl_->toAsciiString(); }
network::IRI StorageIRI::toIRI() const { return impl_->toIRI(); }
fl::filesystem::upath StorageIRI::toUPath() const { return impl_->toUPath(); }
const std::u16string& StorageIRI::getResolvedPath() const { return impl_->getResolvedPath(); }
StorageIRI StorageIRI::getResolvedIRI() const { return impl_->withPath(getResolvedPath()); }
std::uint64_t StorageIRI::hashValue() const { return impl_->hashValue(); }

bool StorageIRI::isAncestorOf(const StorageIRI& other) const {
  if (other.getScheme() != getScheme() || other.hasInnerIRI() != hasInnerIRI())
    return false;
  if (hasInnerIRI() && !impl_->getInnerIRI()->equals(*other.impl_->getInnerIRI()))
    return false;
  const auto ancestor = getPathView().toStringView();
  const std::u16string_view path = other.getPath();
  if (path.size() <= ancestor.size() || !path.starts_with(std::u16string_view(ancestor.data(), ancestor.size())))
    return false;
  return (!ancestor.empty() && ancestor.back() == u'/') || path[ancestor.size()] == u'/';
}

std::u16string StorageIRI::makePathRelativeTo(const StorageIRI& base) const {
  if (!(base.impl_->getRoot() == impl_->getRoot()))
    throwNoCommonRoot(*this, base);
  const auto& folder = base.getPath();
  const auto from = pathReference(folder.size() < 2 ? folder : folder + u"/");
  return pathReference(getPath()).makeRelativeTo(from).getPath();
}

bool StorageIRI::operator==(const StorageIRI& other) const { return impl_->equals(*other.impl_); }
bool StorageIRI::operator<(const StorageIRI& other) const { return impl_->less(*other.impl_); }

std::size_t hash_value(const StorageIRI& location) { return location.hashValue(); }

std::ostream& operator<<(std::ostream& out, const StorageIRI& location) {
  return fl::i18n::operator<<(out, location.toString());
}

}  // namespace foundation::storage::provider
