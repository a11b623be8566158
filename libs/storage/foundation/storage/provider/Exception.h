#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/Exception.h>
#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/ExceptionContext.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <boost/exception/exception.hpp>
#include <boost/exception/info.hpp>

#include <exception>
#include <optional>
#include <string>

namespace foundation::storage::provider {

/// Tags of the Boost error-info items that the exceptions here carry.
/// @{
struct TagErrorCode {};
struct TagStorageIRI {};
/// @}

/// The items themselves, for `boost::get_error_info`.
/// @{
using ErrorCodeInfo = boost::error_info<TagErrorCode, ErrorCode>;
using StorageIRIInfo = boost::error_info<TagStorageIRI, StorageIRI>;
/// @}

/// A provider's refusal: why, and at which location. Layers that it passes on its way up may attach
/// frames of context.
///
///     try {
///       provider->removeFile(location);
///     } catch (const Exception& failure) {
///       if (failure.getErrorCode() != ErrorCode::ResourceNotFound)
///         throw;
///     }
///
/// Copies and clones (as `boost::current_exception` makes them) share nothing that changes. Reading
/// one exception from several threads is safe, as long as none of them changes its contexts.
class FOUNDATION_EXPORT Exception : public core::except::Exception<core::except::IInternalException, std::exception>,
                                    public boost::exception,
                                    public virtual boost::exception_detail::clone_base {
 public:
  /// Without contexts.
  Exception(const ErrorCode& code, const StorageIRI& location);
  /// With error-infos and contexts of its own.
  /// @{
  Exception(const Exception& other);
  Exception& operator=(const Exception& other);
  /// @}
  ~Exception() noexcept override;

  /// Why it failed.
  ErrorCode getErrorCode() const;
  /// The location at fault: of two, the one that is the reason.
  StorageIRI getStorageIRI() const;

  /// Replaces all frames by `contexts`, top first. To add a frame, put one in front of
  /// `getAllExceptionContexts()` and set the result.
  void setExceptionContexts(ExceptionContexts contexts);
  /// All frames, top first; empty where no layer has attached any.
  ExceptionContexts getAllExceptionContexts() const;

  /// The frame attached last, if there is one.
  std::optional<ExceptionContext> topExceptionContext() const;
  /// Removes that frame, if there is one, even from an exception caught by reference to const.
  void popExceptionContext() const;

  /// The keys of all frames from the top down, joined by ":".
  std::u16string getExceptionContextsString() const;

 private:
  std::u16string ToUstringImpl() const override;
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;

  mutable ExceptionContexts contexts_;
};

}  // namespace foundation::storage::provider
