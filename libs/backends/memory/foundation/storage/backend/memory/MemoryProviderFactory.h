#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/Capability.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>

/// Stores in memory.
namespace foundation::storage::backend::memory {

/// Makes providers of stores in memory: for a program's own unit tests, and wherever files are needed that
/// nobody has to keep.
///
///     const provider::StorageIRI root(u"memory:///");
///     const provider::StorageItem store(MemoryProviderFactory().buildProvider(root), root);
///
/// Each host is a store of its own, `memory://HOST/`; the empty one, too. A store lives as long as somebody
/// holds its provider, and begins with an empty root. Locations have no query, fragment, user or port. Names
/// hold any character but '/'; case matters; dot segments are resolved as the text says; there are no links.
///
/// **What it can do.** Everything that the contract has, and all of it atomically: no operation on entries shows
/// half of its work, but for the creation of several folders at once. A copy is what the source held at one
/// moment; with a callback, what a reader sees who takes 4 MiB at a time. Transactions show no scratch file. A
/// file stays readable and writable through streams that are open while it
/// is moved, replaced or removed. Wildcards are those of `support::Wildcard`, by case. A listing is what the
/// folder held when the listing began. Names that begin with '.' are hidden. Files that are not writable
/// refuse streams, transactions, copies onto them and truncation, folders that are not writable refuse changes of their
/// entries. Times are kept to the microsecond.
///
/// **Space.** The option `capacity` (`IConfigurableProvider`) limits the sum of the files' sizes in bytes, those of
/// removed files included as long as they are open; without it there is no limit. What does not fit fails with
/// `NoSpaceLeft`, and leaves all that is there as it was. Replacing a file by a copy or a transaction takes room
/// for both, for a moment. Gaps in files take no memory.
///
/// Every failure has a context with the key "memory", whose info says why in words.
class FOUNDATION_EXPORT MemoryProviderFactory : public provider::PhysicalProviderFactory {
 public:
  /// With no store yet; copies of a factory share their stores.
  MemoryProviderFactory();
  ~MemoryProviderFactory() override;
  MemoryProviderFactory(const MemoryProviderFactory&) = default;
  MemoryProviderFactory& operator=(const MemoryProviderFactory&) = default;

  /// What its providers can do.
  static provider::Capabilities capabilities();

 private:
  std::shared_ptr<provider::IProvider> doBuildProvider(const provider::StorageIRI& location) const override;
  /// The root of the store. Throws `Exception` with `InvalidLocation` for a location that no store in memory
  /// has.
  provider::StorageIRI doGetKey(const provider::StorageIRI& location) const override;
};

}  // namespace foundation::storage::backend::memory
