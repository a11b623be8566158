#include <foundation/storage/provider/Exception.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/detail/ErrorInfo.h>

#include <sstream>

namespace foundation::storage::provider {

Exception::Exception(const ErrorCode& code, const StorageIRI& location) {
  *this << ErrorCodeInfo(code) << StorageIRIInfo(location);
}

// boost::exception's own copies share their items, and count the shares without a lock.
Exception::Exception(const Exception& other)
    : boost::exception_detail::clone_base(),
      core::except::Exception<core::except::IInternalException, std::exception>(other),
      boost::exception(),
      contexts_(other.contexts_) {
  boost::exception_detail::copy_boost_exception(this, &other);
}

Exception& Exception::operator=(const Exception& other) {
  if (this == &other)
    return *this;
  auto contexts = other.contexts_;
  boost::exception_detail::copy_boost_exception(this, &other);
  contexts_ = std::move(contexts);
  forgetText();
  return *this;
}

Exception::~Exception() noexcept = default;

ErrorCode Exception::getErrorCode() const { return detail::requireInfo<ErrorCodeInfo>(*this); }

StorageIRI Exception::getStorageIRI() const { return detail::requireInfo<StorageIRIInfo>(*this); }

void Exception::setExceptionContexts(ExceptionContexts contexts) {
  contexts_ = std::move(contexts);
  forgetText();
}

ExceptionContexts Exception::getAllExceptionContexts() const { return contexts_; }

std::optional<ExceptionContext> Exception::topExceptionContext() const {
  return contexts_.empty() ? std::nullopt : std::optional(contexts_.front());
}

void Exception::popExceptionContext() const {
  if (contexts_.empty())
    return;
  contexts_.pop_front();
  forgetText();
}

std::u16string Exception::getExceptionContextsString() const { return joinContextKeys(contexts_); }

// Programs match this text: the pair "} stands twice in it.
std::u16string Exception::ToUstringImpl() const {
  std::ostringstream code;
  code << getErrorCode();
  return u"foundation::storage::provider::Exception{StorageIRI=\"" + getStorageIRI().toAsciiString() +
         u"\", ErrorCode=\"" + fl::i18n::to_ustring(code.str()) + u"\"}" + u"\"} with ExceptionContext{\"" +
         getExceptionContextsString() + u"\"}";
}

const boost::exception_detail::clone_base* Exception::clone() const { return new Exception(*this); }

void Exception::rethrow() const { throw Exception(*this); }

}  // namespace foundation::storage::provider
