#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>

namespace foundation::storage::backend::local {

/// Makes the provider of the local file system, which serves locations of the scheme `file` without a
/// host:
///
///     const provider::StorageIRI folder(u"file:///home/ann");
///     const provider::StorageItem home(LocalProviderFactory().buildProvider(folder), folder);
///
/// Names are the system's own bytes: those that are no UTF-8 are kept as `fl::i18n` says. Links are
/// followed, but for removing, moving and `existsExtended`. Entries whose names begin with '.' are
/// hidden. Listings ignore wildcards. A copy gets the source's mode, less the umask. Folders and anything that only
/// blocks (pipes, sockets) cannot be opened as streams.
///
/// What the system said of a failure is the failure's top context: its key names the system call, its
/// info holds the system's words, the error number as the response code, under "name" the number's
/// symbol (errno(3)), and under "location" the text of the location, which a stream's failure does not
/// carry otherwise.
class FOUNDATION_EXPORT LocalProviderFactory : public provider::PhysicalProviderFactory {
 public:
  LocalProviderFactory();
  ~LocalProviderFactory() override;
  LocalProviderFactory(const LocalProviderFactory&) = default;
  LocalProviderFactory& operator=(const LocalProviderFactory&) = default;

 private:
  std::shared_ptr<provider::IProvider> doBuildProvider(const provider::StorageIRI& location) const override;
  /// One provider serves the whole file system. Throws `Exception` with `InvalidLocation` for locations
  /// that it cannot serve.
  provider::StorageIRI doGetKey(const provider::StorageIRI& location) const override;
};

}  // namespace foundation::storage::backend::local
