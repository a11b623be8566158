#include <foundation/core/except/IException.h>
#include <foundation/log/detail/ExceptionChain.h>

#include <exception>

namespace foundation::log::detail {
namespace {

struct Link {
  std::string text;
  std::exception_ptr cause;
};

Link describe(const std::exception_ptr& failure) {
  Link link;
  try {
    std::rethrow_exception(failure);
  } catch (const core::except::IException& exception) {
    link.text = exception.what();
  } catch (const std::exception& exception) {
    link.text = exception.what();
  } catch (...) {
    link.text = "exception of an unknown type";
  }
  try {
    std::rethrow_exception(failure);
  } catch (const std::nested_exception& nested) {
    link.cause = nested.nested_ptr();
  } catch (...) {  // it has no cause
  }
  return link;
}

}  // namespace

std::string current_exception_chain_as_string() {
  auto failure = std::current_exception();
  if (failure == nullptr)
    return "no exception";
  auto [text, cause] = describe(failure);
  while (cause != nullptr) {
    const auto link = describe(cause);
    text.append("; caused by: ").append(link.text);
    cause = link.cause;
  }
  return text;
}

}  // namespace foundation::log::detail
