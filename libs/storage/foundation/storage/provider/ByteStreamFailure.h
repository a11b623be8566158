#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/IException.h>
#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/ExceptionContext.h>

#include <boost/exception/exception.hpp>

#include <ios>
#include <optional>
#include <string>

namespace foundation::storage::provider {

/// A failure of a byte stream. It is a standard stream failure, so code that knows only those handles
/// it; it carries an `ErrorCode` and the same frames of context as `Exception`. Streams throw the
/// subclass of the operation that failed, never this class itself.
///
/// `what()` is the message, ": ", and the standard library's words for a stream error.
class FOUNDATION_EXPORT ByteStreamFailure : public core::except::IInternalException, public std::ios_base::failure {
 public:
  ByteStreamFailure(const ByteStreamFailure&) = default;
  ByteStreamFailure(ByteStreamFailure&&) = default;
  ByteStreamFailure& operator=(const ByteStreamFailure&) = default;
  ByteStreamFailure& operator=(ByteStreamFailure&&) = default;
  ~ByteStreamFailure() override;

  /// Why it failed.
  virtual ErrorCode getErrorCode() const { return code_; }
  const char* what() const noexcept override { return std::ios_base::failure::what(); }

  /// Replaces all frames by `contexts`, top first.
  void setExceptionContexts(ExceptionContexts contexts);
  /// All frames, top first; empty where no layer has attached any.
  ExceptionContexts getAllExceptionContexts() const;
  /// The frame attached last, if there is one.
  std::optional<ExceptionContext> topExceptionContext() const;
  /// Removes that frame, if there is one, even from a failure caught by reference to const.
  void popExceptionContext() const;
  /// The keys of all frames from the top down, joined by ":".
  std::u16string getExceptionContextsString() const;

 protected:
  /// @param message  in UTF-8
  ByteStreamFailure(const std::string& message, ErrorCode code);

 private:
  std::u16string ToUstringImpl() const override;

  ErrorCode code_;
  mutable ExceptionContexts contexts_;
};

/// Opening a stream failed.
class FOUNDATION_EXPORT ByteStreamOpenFailure : public ByteStreamFailure,
                                                public virtual boost::exception_detail::clone_base {
 public:
  /// @param message  in UTF-8
  ByteStreamOpenFailure(const std::string& message, ErrorCode code);
  /// With the class's name as the message.
  explicit ByteStreamOpenFailure(ErrorCode code);
  ~ByteStreamOpenFailure() override;
  ByteStreamOpenFailure(const ByteStreamOpenFailure&) = default;
  ByteStreamOpenFailure(ByteStreamOpenFailure&&) = default;
  ByteStreamOpenFailure& operator=(const ByteStreamOpenFailure&) = default;
  ByteStreamOpenFailure& operator=(ByteStreamOpenFailure&&) = default;

 private:
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;
};

/// `ByteStream::read` failed.
class FOUNDATION_EXPORT ByteStreamReadFailure : public ByteStreamFailure,
                                                public virtual boost::exception_detail::clone_base {
 public:
  /// @param message  in UTF-8
  ByteStreamReadFailure(const std::string& message, ErrorCode code);
  /// With the class's name as the message.
  explicit ByteStreamReadFailure(ErrorCode code);
  ~ByteStreamReadFailure() override;
  ByteStreamReadFailure(const ByteStreamReadFailure&) = default;
  ByteStreamReadFailure(ByteStreamReadFailure&&) = default;
  ByteStreamReadFailure& operator=(const ByteStreamReadFailure&) = default;
  ByteStreamReadFailure& operator=(ByteStreamReadFailure&&) = default;

 private:
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;
};

/// `ByteStream::write` failed.
class FOUNDATION_EXPORT ByteStreamWriteFailure : public ByteStreamFailure,
                                                 public virtual boost::exception_detail::clone_base {
 public:
  /// @param message  in UTF-8
  ByteStreamWriteFailure(const std::string& message, ErrorCode code);
  /// With the class's name as the message.
  explicit ByteStreamWriteFailure(ErrorCode code);
  ~ByteStreamWriteFailure() override;
  ByteStreamWriteFailure(const ByteStreamWriteFailure&) = default;
  ByteStreamWriteFailure(ByteStreamWriteFailure&&) = default;
  ByteStreamWriteFailure& operator=(const ByteStreamWriteFailure&) = default;
  ByteStreamWriteFailure& operator=(ByteStreamWriteFailure&&) = default;

 private:
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;
};

/// `ByteStream::seek` failed.
class FOUNDATION_EXPORT ByteStreamSeekFailure : public ByteStreamFailure,
                                                public virtual boost::exception_detail::clone_base {
 public:
  /// @param message  in UTF-8
  ByteStreamSeekFailure(const std::string& message, ErrorCode code);
  /// With the class's name as the message.
  explicit ByteStreamSeekFailure(ErrorCode code);
  ~ByteStreamSeekFailure() override;
  ByteStreamSeekFailure(const ByteStreamSeekFailure&) = default;
  ByteStreamSeekFailure(ByteStreamSeekFailure&&) = default;
  ByteStreamSeekFailure& operator=(const ByteStreamSeekFailure&) = default;
  ByteStreamSeekFailure& operator=(ByteStreamSeekFailure&&) = default;

 private:
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;
};

/// `ByteStream::close` failed; what was written may be incomplete.
class FOUNDATION_EXPORT ByteStreamCloseFailure : public ByteStreamFailure,
                                                 public virtual boost::exception_detail::clone_base {
 public:
  /// @param message  in UTF-8
  ByteStreamCloseFailure(const std::string& message, ErrorCode code);
  /// With the class's name as the message.
  explicit ByteStreamCloseFailure(ErrorCode code);
  ~ByteStreamCloseFailure() override;
  ByteStreamCloseFailure(const ByteStreamCloseFailure&) = default;
  ByteStreamCloseFailure(ByteStreamCloseFailure&&) = default;
  ByteStreamCloseFailure& operator=(const ByteStreamCloseFailure&) = default;
  ByteStreamCloseFailure& operator=(ByteStreamCloseFailure&&) = default;

 private:
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;
};

}  // namespace foundation::storage::provider
