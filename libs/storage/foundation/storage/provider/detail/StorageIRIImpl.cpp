#include <foundation/storage/provider/detail/StorageIRIImpl.h>

#include <foundation/core/except/detail/AnonymousInternalException.h>
#include <foundation/network/DotSegments.h>
#include <foundation/storage/provider/detail/Absolute.h>
#include <foundation/storage/provider/detail/AsciiForm.h>
#include <foundation/storage/provider/detail/ContainerImpl.h>
#include <foundation/storage/provider/detail/HierarchicalImpl.h>

#include <stdexcept>

namespace foundation::storage::provider::detail {
namespace {

std::u16string resolved(const std::u16string& path) {
  if (path.size() < 2)
    return path;
  return path.front() == u'/' ? network::removeDotSegments(path) : network::removeDotSegments(u"/" + path);
}

}  // namespace

// A chain of parents is let go one by one: it may be longer than the stack is deep. The outermost destructor
// of a thread takes each parent over from the one that held it; none touches another location's members.
StorageIRIImpl::~StorageIRIImpl() {
  thread_local Pointer* outermost = nullptr;
  auto next = takeParent();
  if (outermost != nullptr) {
    outermost->swap(next);
    return;
  }
  while (next != nullptr) {
    Pointer released;
    released.swap(next);
    outermost = &next;
    released.reset();
    outermost = nullptr;
  }
}

StorageIRIImpl::Pointer StorageIRIImpl::takeParent() noexcept {
  const auto* known = seldomAsked_.peek();
  auto* parent = known != nullptr ? known->parent.peek() : nullptr;
  return parent != nullptr ? std::move(*parent) : nullptr;
}

// A location's ASCII form follows from its text, so texts that are the same need no look at it.

bool StorageIRIImpl::equals(const StorageIRIImpl& other) const {
  return this == &other || sameAsciiForm(toString(), other.toString());
}

bool StorageIRIImpl::less(const StorageIRIImpl& other) const {
  return this != &other && lessAsciiForm(toString(), other.toString());
}

const std::u16string& StorageIRIImpl::getResolvedPath() const {
  return seldomAsked().resolvedPath.get([this] { return resolved(getPath()); });
}

std::uint64_t StorageIRIImpl::hashValue() const {
  return hash_.get([this] { return hashAsciiForm(toString()); });
}

const std::u16string& StorageIRIImpl::asciiTextOf(const network::IRI& iri) const {
  return iri.isAscii() ? iri.text() : seldomAsked().asciiText.get([&iri] { return iri.toAsciiString(); });
}

void StorageIRIImpl::throwHasNoParent() {
  throw core::except::detail::AnonymousInternalException<std::logic_error>("IRI does not have a parent IRI.");
}

void StorageIRIImpl::throwHasNoInnerIRI() {
  throw core::except::detail::AnonymousInternalException<std::logic_error>("IRI does not have an inner IRI.");
}

StorageIRIImpl::Pointer makeImplFromIRI(network::IRI iri, int nesting) {
  if (iri.isOpaque())
    return std::make_shared<ContainerImpl>(std::move(iri), nesting);
  requireAbsolute(iri);
  // With an empty authority "s:/a" is the same location as "s:///a", in its texts too.
  if (!iri.hasAuthority())
    return std::make_shared<HierarchicalImpl>(network::IRI(iri.toArgs().setHost(u"")));
  return std::make_shared<HierarchicalImpl>(std::move(iri));
}

}  // namespace foundation::storage::provider::detail
