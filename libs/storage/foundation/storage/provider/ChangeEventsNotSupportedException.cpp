#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>

#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/detail/ErrorInfo.h>

namespace foundation::storage::provider {

using Self = ChangeEventsNotSupportedException;

Self::ChangeEventsNotSupportedException(const StorageIRI& location) { *this << StorageIRIInfo(location); }

Self::ChangeEventsNotSupportedException(const Self& other)
    : boost::exception_detail::clone_base(),
      core::except::Exception<core::except::IInternalException, std::exception>(other),
      boost::exception() {
  boost::exception_detail::copy_boost_exception(this, &other);
}

Self& Self::operator=(const Self& other) {
  if (this != &other) {
    boost::exception_detail::copy_boost_exception(this, &other);
    forgetText();
  }
  return *this;
}

Self::~ChangeEventsNotSupportedException() noexcept = default;

StorageIRI Self::getStorageIRI() const { return detail::requireInfo<StorageIRIInfo>(*this); }

std::u16string Self::ToUstringImpl() const {
  return u"foundation::storage::provider::ChangeEventsNotSupportedException{StorageIRI=\"" +
         getStorageIRI().toAsciiString() + u"\"}";
}

const boost::exception_detail::clone_base* Self::clone() const { return new Self(*this); }

void Self::rethrow() const { throw Self(*this); }

}  // namespace foundation::storage::provider
