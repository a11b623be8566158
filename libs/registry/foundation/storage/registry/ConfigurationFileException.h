#pragma once

#include <foundation/core/Export.h>
#include <foundation/core/except/IException.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace foundation::storage::registry {

/// A configuration file that cannot be read as one. Nothing was configured.
class FOUNDATION_EXPORT ConfigurationFileException : public core::except::IInternalException,
                                                     public std::runtime_error {
 public:
  /// @param file    as the program named it, or as the line that includes it does
  /// @param line    counted from 1; 0 where the failure is at no particular line
  /// @param reason  in UTF-8
  ConfigurationFileException(std::filesystem::path file, unsigned long line, const std::string& reason);
  ~ConfigurationFileException() override;

  /// What the constructor was given.
  /// @{
  const std::filesystem::path& getFile() const noexcept { return file_; }
  unsigned long getLine() const noexcept { return line_; }
  /// @}

  /// "FILE:LINE: reason", without the line where there is none.
  const char* what() const noexcept override { return std::runtime_error::what(); }

 private:
  std::u16string ToUstringImpl() const override;

  std::filesystem::path file_;
  unsigned long line_;
};

}  // namespace foundation::storage::registry
