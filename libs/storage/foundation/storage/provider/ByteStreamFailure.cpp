#include <foundation/storage/provider/ByteStreamFailure.h>

#include <fl/i18n/Convert.h>

#include <system_error>
#include <utility>

namespace foundation::storage::provider {

ByteStreamFailure::ByteStreamFailure(const std::string& message, ErrorCode code)
    : std::ios_base::failure(message, std::make_error_code(std::io_errc::stream)), code_(code) {}

ByteStreamFailure::~ByteStreamFailure() = default;

void ByteStreamFailure::setExceptionContexts(ExceptionContexts contexts) { contexts_ = std::move(contexts); }

ExceptionContexts ByteStreamFailure::getAllExceptionContexts() const { return contexts_; }

std::optional<ExceptionContext> ByteStreamFailure::topExceptionContext() const {
  return contexts_.empty() ? std::nullopt : std::optional(contexts_.front());
}

void ByteStreamFailure::popExceptionContext() const {
  if (!contexts_.empty())
    contexts_.pop_front();
}

std::u16string ByteStreamFailure::getExceptionContextsString() const { return joinContextKeys(contexts_); }

std::u16string ByteStreamFailure::ToUstringImpl() const { return fl::i18n::to_ustring(what()); }

ByteStreamOpenFailure::ByteStreamOpenFailure(const std::string& message, ErrorCode code)
    : ByteStreamFailure(message, code) {}
ByteStreamOpenFailure::ByteStreamOpenFailure(ErrorCode code) : ByteStreamFailure("ByteStreamOpenFailure", code) {}
ByteStreamOpenFailure::~ByteStreamOpenFailure() = default;
const boost::exception_detail::clone_base* ByteStreamOpenFailure::clone() const {
  return new ByteStreamOpenFailure(*this);
}
void ByteStreamOpenFailure::rethrow() const { throw ByteStreamOpenFailure(*this); }

ByteStreamReadFailure::ByteStreamReadFailure(const std::string& message, ErrorCode code)
    : ByteStreamFailure(message, code) {}
ByteStreamReadFailure::ByteStreamReadFailure(ErrorCode code) : ByteStreamFailure("ByteStreamReadFailure", code) {}
ByteStreamReadFailure::~ByteStreamReadFailure() = default;
const boost::exception_detail::clone_base* ByteStreamReadFailure::clone() const {
  return new ByteStreamReadFailure(*this);
}
void ByteStreamReadFailure::rethrow() const { throw ByteStreamReadFailure(*this); }

ByteStreamWriteFailure::ByteStreamWriteFailure(const std::string& message, ErrorCode code)
    : ByteStreamFailure(message, code) {}
ByteStreamWriteFailure::ByteStreamWriteFailure(ErrorCode code) : ByteStreamFailure("ByteStreamWriteFailure", code) {}
ByteStreamWriteFailure::~ByteStreamWriteFailure() = default;
const boost::exception_detail::clone_base* ByteStreamWriteFailure::clone() const {
  return new ByteStreamWriteFailure(*this);
}
void ByteStreamWriteFailure::rethrow() const { throw ByteStreamWriteFailure(*this); }

ByteStreamSeekFailure::ByteStreamSeekFailure(const std::string& message, ErrorCode code)
    : ByteStreamFailure(message, code) {}
ByteStreamSeekFailure::ByteStreamSeekFailure(ErrorCode code) : ByteStreamFailure("ByteStreamSeekFailure", code) {}
ByteStreamSeekFailure::~ByteStreamSeekFailure() = default;
const boost::exception_detail::clone_base* ByteStreamSeekFailure::clone() const {
  return new ByteStreamSeekFailure(*this);
}
void ByteStreamSeekFailure::rethrow() const { throw ByteStreamSeekFailure(*this); }

ByteStreamCloseFailure::ByteStreamCloseFailure(const std::string& message, ErrorCode code)
    : ByteStreamFailure(message, code) {}
ByteStreamCloseFailure::ByteStreamCloseFailure(ErrorCode code) : ByteStreamFailure("ByteStreamCloseFailure", code) {}
ByteStreamCloseFailure::~ByteStreamCloseFailure() = default;
const boost::exception_detail::clone_base* ByteStreamCloseFailure::clone() const {
  return new ByteStreamCloseFailure(*this);
}
void ByteStreamCloseFailure::rethrow() const { throw ByteStreamCloseFailure(*this); }

}  // namespace foundation::storage::provider
