#pragma once

#include <fl/filesystem/Path.h>
#include <foundation/core/Export.h>
#include <foundation/core/except/Exception.h>
#include <foundation/core/except/IException.h>

#include <exception>
#include <string>

namespace fl::filesystem {

/// A path operation that failed: which one, on which path, and why. The text reads
/// "operation 'path': reason (error number)", with the reason in strerror(3)'s words; where the system
/// was not asked there is no number. Control characters in the path are spelt out (`fl::i18n::to_printable`).
class FOUNDATION_EXPORT FsysExceptionBase
    : public foundation::core::except::Exception<foundation::core::except::IInternalException, std::exception> {
 public:
  /// @param operation  the name of the operation, UTF-8
  /// @param error      the system's error number (errno(3)), or 0 where it was not asked
  FsysExceptionBase(std::string operation, upath path, int error);
  ~FsysExceptionBase() override;

  /// What the constructor was given.
  /// @{
  const std::string& getOperation() const noexcept { return operation_; }
  const upath& getPath() const noexcept { return path_; }
  int getErrorNumber() const noexcept { return error_; }
  /// @}

 private:
  std::u16string ToUstringImpl() const override;

  std::string operation_;
  upath path_;
  int error_;
};

/// The caller may not do that.
class FOUNDATION_EXPORT AccessDenied : public FsysExceptionBase {
 public:
  using FsysExceptionBase::FsysExceptionBase;
  ~AccessDenied() override;
};

/// The system failed in some other way.
class FOUNDATION_EXPORT SystemError : public FsysExceptionBase {
 public:
  using FsysExceptionBase::FsysExceptionBase;
  ~SystemError() override;
};

/// Nothing is at the path, or a file stands where a folder should be.
class FOUNDATION_EXPORT PathNotFound : public FsysExceptionBase {
 public:
  using FsysExceptionBase::FsysExceptionBase;
  ~PathNotFound() override;
};

/// The path cannot name anything: relative, too long, a loop of links, a form that the system lacks.
class FOUNDATION_EXPORT InvalidArgument : public FsysExceptionBase {
 public:
  using FsysExceptionBase::FsysExceptionBase;
  ~InvalidArgument() override;
};

}  // namespace fl::filesystem
