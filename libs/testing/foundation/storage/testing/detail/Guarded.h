#pragma once

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/testing/Faults.h>

#include <type_traits>

namespace foundation::storage::testing::detail {

/// Makes a call unless it is to fail.
/// @param fail  throws the failure with the code that it gets
/// @param call  gets the verdict
template <class Fail, class Call>
auto guarded(Faults& faults, Operation operation, const std::string& subject, const Fail& fail, const Call& call) {
  const auto verdict = faults.enter(operation, subject);
  const auto failAt = [&](FaultMoment moment) {
    if (verdict.failure && verdict.moment == moment)
      fail(*verdict.failure);
  };
  failAt(FaultMoment::Before);
  if constexpr (std::is_void_v<decltype(call(verdict))>) {
    call(verdict);
    failAt(FaultMoment::After);
  } else {
    auto result = call(verdict);
    failAt(FaultMoment::After);
    return result;
  }
}

/// For operations of providers and listings.
template <class Call>
auto guardedAt(Faults& faults, Operation operation, const provider::StorageIRI& location, const Call& call) {
  const auto fail = [&](provider::ErrorCode code) {
    provider::Exception failure(code, location);
    failure.setExceptionContexts({provider::ExceptionContext(u"fault")});
    throw failure;
  };
  return guarded(faults, operation, toLogText(location), fail, [&](const Faults::Verdict&) { return call(); });
}

}  // namespace foundation::storage::testing::detail
