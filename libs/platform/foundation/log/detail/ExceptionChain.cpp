#include <foundation/log/detail/ExceptionChain.h>

#include <foundation/core/except/IException.h>

#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/exception_ptr.hpp>

#include <exception>

namespace foundation::log::detail {
namespace {

constexpr int mostLinks = 32;

std::string textOf(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const core::except::IException& exception) {
    return exception.what();
  } catch (const std::exception& exception) {
    return exception.what();
  } catch (...) {
    return "exception of an unknown type";
  }
}

std::exception_ptr toStandard(const boost::exception_ptr& failure) {
  if (!failure)
    return nullptr;
  try {
    boost::rethrow_exception(failure);
  } catch (...) {
    return std::current_exception();
  }
}

std::exception_ptr causeOf(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const std::nested_exception& exception) {
    return exception.nested_ptr();
  } catch (const boost::exception& exception) {
    const auto* cause = boost::get_error_info<boost::errinfo_nested_exception>(exception);
    return cause == nullptr ? nullptr : toStandard(*cause);
  } catch (...) {  // it can have no cause
    return nullptr;
  }
}

}  // namespace

std::string current_exception_chain_as_string() {
  const auto failure = std::current_exception();
  if (failure == nullptr)
    return "no exception";
  auto text = textOf(failure);
  auto cause = causeOf(failure);
  for (int links = 1; cause != nullptr; ++links, cause = causeOf(cause)) {
    if (links == mostLinks)
      return text + "; and so on";
    text.append("; caused by: ").append(textOf(cause));
  }
  return text;
}

}  // namespace foundation::log::detail
