#pragma once

#include <boost/exception/get_error_info.hpp>

#include <stdexcept>

namespace foundation::storage::provider::detail {

/// The error-info item that an exception's constructor attached.
template <class Info, class Failure>
typename Info::value_type requireInfo(const Failure& failure) {
  const auto* value = boost::get_error_info<Info>(failure);
  if (value == nullptr)
    throw std::logic_error("An exception has lost its error-info items.");
  return *value;
}

}  // namespace foundation::storage::provider::detail
