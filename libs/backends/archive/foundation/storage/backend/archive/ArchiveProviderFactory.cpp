#include <foundation/storage/backend/archive/ArchiveProviderFactory.h>

#include <foundation/storage/backend/archive/detail/Archive.h>
#include <foundation/storage/backend/archive/detail/ArchiveProvider.h>
#include <foundation/storage/backend/archive/detail/Format.h>
#include <foundation/storage/provider/Exception.h>

namespace foundation::storage::backend::archive {

namespace {

std::u16string schemeOf(ArchiveFormat format) {
  switch (format) {
    case ArchiveFormat::Zip:
      return u"zip";
    case ArchiveFormat::Tar:
      return u"tar";
    case ArchiveFormat::SevenZip:
      return u"sevenzip";
    default:
      return u"archive";
  }
}

/// Of what is not there, by the nearest folder above it that is.
provider::StorageIRI canonicalLocation(const provider::StorageItem& item) {
  try {
    return item.getCanonicalLocation();
  } catch (const provider::Exception& failure) {
    if (failure.getErrorCode() != provider::ErrorCode::ResourceNotFound || !item.hasParent())
      throw;
  }
  return {canonicalLocation(item.getParent()), item.getName()};
}

}  // namespace

ArchiveProviderFactory::ArchiveProviderFactory(ArchiveFormat format) : format_(format) {}
ArchiveProviderFactory::~ArchiveProviderFactory() = default;

provider::Capabilities ArchiveProviderFactory::capabilities(ArchiveFormat format) {
  using enum provider::Capability;
  provider::Capabilities capabilities{RandomAccess, Wildcards, RecursiveListing, StorageInfo};
  if (detail::isWritten(format))
    capabilities.insert({Write, Append, RecursiveRemoval, AtomicCopy, AtomicReplacement, ExclusiveCreation,
                         SetLastModified, SetWritable, AnyName});
  return capabilities;
}

std::shared_ptr<provider::IProvider> ArchiveProviderFactory::doBuildProvider(
    const provider::StorageItem& container) const {
  return std::make_shared<detail::ArchiveProvider>(
      std::make_shared<detail::Archive>(format_, container, doGetKey(container)));
}

provider::StorageIRI ArchiveProviderFactory::doGetKey(const provider::StorageItem& container) const {
  return {schemeOf(format_), canonicalLocation(container), u"/"};
}

}  // namespace foundation::storage::backend::archive
