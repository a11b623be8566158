#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <boost/exception/exception.hpp>

#include <exception>
#include <string>

namespace foundation::storage::provider {

/// A subscription to change events failed for a location. It carries that location as the
/// error-info item `StorageIRIInfo`, and shares nothing that changes with its copies.
class FOUNDATION_EXPORT ChangeEventsSubscriptionException
    : public core::except::Exception<core::except::IInternalException, std::exception>,
      public boost::exception,
      public virtual boost::exception_detail::clone_base {
 public:
  /// @param location  where subscribing failed
  explicit ChangeEventsSubscriptionException(const StorageIRI& location);
  /// With an error-info of its own.
  /// @{
  ChangeEventsSubscriptionException(const ChangeEventsSubscriptionException& other);
  ChangeEventsSubscriptionException& operator=(const ChangeEventsSubscriptionException& other);
  /// @}
  ~ChangeEventsSubscriptionException() noexcept override;

  /// The location that the constructor was given.
  StorageIRI getStorageIRI() const;

 private:
  std::u16string ToUstringImpl() const override;
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;
};

}  // namespace foundation::storage::provider
