#pragma once

#include <foundation/storage/provider/ChangeCallback.h>
#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>
#include <foundation/storage/provider/ChangeEventsSubscriptionException.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <string>

namespace foundation::storage::registry::detail {

/// A location that a filter was asked for: takes the prefix off, and puts it onto the locations that come back.
class AskedLocation {
 public:
  /// Throws `Exception` with `InvalidLocation` where the location has not the prefix.
  /// @param prefix  as registered
  AskedLocation(const provider::StorageIRI& asked, const std::u16string& prefix);

  /// The location as the inner provider knows it.
  const provider::StorageIRI& inner() const { return inner_; }

  /// A location of the inner provider's with the prefix, which is written as in the location asked for.
  provider::StorageIRI outer(const provider::StorageIRI& inner) const;

  /// A callback for the inner provider that tells `callback` of locations with the prefix.
  provider::ChangeCallback translating(const provider::ChangeCallback& callback) const;

  /// Calls `call(inner())`; failures come out with the prefix on their locations.
  template <class Call>
  auto run(const Call& call) const;

 private:
  template <class Failure>
  Failure relocated(const Failure& failure) const;

  provider::StorageIRI asked_;
  std::u16string prefix_;  ///< as it is written, with the '+'
  provider::StorageIRI inner_;
};

template <class Call>
auto AskedLocation::run(const Call& call) const {
  try {
    return call(inner_);
  } catch (const provider::Exception& failure) {
    throw relocated(failure);
  } catch (const provider::ChangeEventsNotSupportedException& failure) {
    throw relocated(failure);
  } catch (const provider::ChangeEventsSubscriptionException& failure) {
    throw relocated(failure);
  }
}

// A failure may be shared with other threads, so a copy is changed.
template <class Failure>
Failure AskedLocation::relocated(const Failure& failure) const {
  Failure copy(failure);
  copy << provider::StorageIRIInfo(outer(failure.getStorageIRI()));
  return copy;
}

}  // namespace foundation::storage::registry::detail
