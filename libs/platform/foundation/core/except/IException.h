#pragma once

#include <foundation/core/Export.h>

#include <string>

/// What all exceptions of this project have in common.
namespace foundation::core::except {

/// What every exception of this project offers, whatever standard exception it also is. Catch it to
/// report any of them:
///
///     catch (const foundation::core::except::IException& failure) {
///       std::cerr << failure.what() << '\n';
///     }
///
/// Reading an exception is safe from several threads at once; that includes `what()`.
class FOUNDATION_EXPORT IException {
 public:
  virtual ~IException();

  /// The text of the failure in UTF-8; valid while the exception lives and is not changed.
  virtual const char* what() const noexcept = 0;

  /// The text of the failure in UTF-16.
  std::u16string toUstring() const { return ToUstringImpl(); }

 protected:
  IException() = default;
  IException(const IException&) = default;
  IException& operator=(const IException&) = default;

 private:
  virtual std::u16string ToUstringImpl() const = 0;
};

/// A failure that the libraries report to programs, as opposed to one worded for the person in front
/// of the screen. All of this project's own exceptions are of this kind.
class FOUNDATION_EXPORT IInternalException : public IException {
 public:
  ~IInternalException() override;

 protected:
  IInternalException() = default;
  IInternalException(const IInternalException&) = default;
  IInternalException& operator=(const IInternalException&) = default;
};

}  // namespace foundation::core::except
