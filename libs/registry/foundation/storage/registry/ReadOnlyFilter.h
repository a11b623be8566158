#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/registry/FilterFactory.h>

namespace foundation::storage::registry {

/// Shows another store without letting anybody change it: every operation that would is refused with
/// `ErrorCode::ReadOnlyProvider`, before the store is asked anything, and transactions are, too. Files are read
/// with `openReadOnlyStream`, and can be copied to other stores.
///
/// All that reads is the inner provider's own answer, with two exceptions: there are no extended features, since
/// all of them change something; and polling for changes is done by the filter's provider, so that neither
/// side's callback and period bind the other. The store itself may change meanwhile, by whoever uses it
/// without the filter.
///
/// Native change events are the inner provider's. Where it takes one subscription for each location, as the local
/// file system does, that counts subscriptions made with and without the filter together. Those made through the
/// filter's provider end with it, at the latest; and where the inner provider can only end all subscriptions of a
/// location, as the local file system does for a folder and the files in it, everybody's end then.
///
/// The failures of streams, of opening one too, name locations as the inner provider does, without the prefix; so do
/// the contexts of all failures. There is nothing to configure: options belong to the scheme behind the prefix.
class FOUNDATION_EXPORT ReadOnlyFilter final : public FilterFactory {
 public:
  ReadOnlyFilter();
  ~ReadOnlyFilter() override;

 private:
  std::shared_ptr<provider::IProvider> doBuildProvider(std::shared_ptr<provider::IProvider> inner,
                                                       const std::u16string& prefix) const override;
};

}  // namespace foundation::storage::registry
