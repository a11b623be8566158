#pragma once

#include <foundation/storage/provider/ChangeCallback.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <optional>
#include <string>
#include <vector>

namespace foundation::storage::backend::local::detail {

/// Tells one subscriber of changes: makes locations out of the system's names, and leaves out the kinds that were
/// not asked for. What the callback throws is logged; publishing never throws because of it.
class ChangePublisher {
 public:
  using Kinds = std::vector<events::Kind>;

  ChangePublisher(provider::StorageIRI watched, provider::ChangeCallback callback, const Kinds& kinds);

  /// For the only entry that is watched.
  /// @param watched  the folder that holds it
  ChangePublisher(provider::StorageIRI watched, provider::StorageIRI entry, provider::ChangeCallback callback,
                  const Kinds& kinds);

  bool wants(events::Kind kind) const noexcept;
  /// Whether any change of an entry is wanted.
  bool wantsEntries() const noexcept;

  /// The watched folder itself changed.
  void publish(events::Kind kind) const;

  /// An entry changed.
  /// @param path  relative to the watched folder, in the system's bytes
  void publish(events::Kind kind, const std::string& path, events::EntryType type) const;

  const provider::StorageIRI& watched() const noexcept { return watched_; }

 private:
  void call(events::Kind kind, const provider::StorageIRI& subject, events::EntryType type) const;

  provider::StorageIRI watched_;
  std::optional<provider::StorageIRI> onlyEntry_;
  provider::ChangeCallback callback_;
  unsigned kinds_;  ///< one bit a kind
};

}  // namespace foundation::storage::backend::local::detail
