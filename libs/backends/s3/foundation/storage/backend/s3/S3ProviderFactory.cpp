#include <foundation/storage/backend/s3/S3ProviderFactory.h>

#include <foundation/storage/backend/s3/detail/Place.h>
#include <foundation/storage/backend/s3/detail/S3Provider.h>

namespace foundation::storage::backend::s3 {

S3ProviderFactory::S3ProviderFactory() = default;
S3ProviderFactory::~S3ProviderFactory() = default;

provider::Capabilities S3ProviderFactory::capabilities() {
  using enum provider::Capability;
  return {
      Write, Append, Wildcards, RecursiveListing, RecursiveRemoval, AtomicCopy, AtomicReplacement, ExclusiveCreation};
}

std::shared_ptr<provider::IProvider> S3ProviderFactory::doBuildProvider(const provider::StorageIRI& location) const {
  return std::make_shared<detail::S3Provider>(detail::rootOf(location));
}

provider::StorageIRI S3ProviderFactory::doGetKey(const provider::StorageIRI& location) const {
  return detail::rootOf(location);
}

}  // namespace foundation::storage::backend::s3
