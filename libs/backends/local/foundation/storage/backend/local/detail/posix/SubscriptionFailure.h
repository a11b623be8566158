#pragma once

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <boost/exception/info.hpp>

#include <string>

namespace foundation::storage::backend::local::detail {

struct TagSubscriptionReason {};
/// Why a subscription failed, for people.
using SubscriptionReason = boost::error_info<TagSubscriptionReason, std::string>;

/// A system call of inotify(7) failed. Where a limit of the kernel's was reached, the failure names the setting
/// that raises it, and so does a record in the diagnostic log.
provider::Exception watchFailure(int error, const char* call, const provider::StorageIRI& location);

/// The exception that is being handled made a subscription fail: throws `ChangeEventsSubscriptionException` with
/// it as the cause (`boost::errinfo_nested_exception`) and its reason as text.
[[noreturn]] void refuseSubscription(const provider::StorageIRI& location);

/// The same without a cause.
[[noreturn]] void refuseSubscription(const provider::StorageIRI& location, const std::string& reason);

}  // namespace foundation::storage::backend::local::detail
