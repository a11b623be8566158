#pragma once

#include <foundation/storage/backend/archive/detail/Output.h>
#include <foundation/storage/backend/archive/detail/library/Handles.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::archive::detail::library {

/// Writes a tar with extended headers (pax) by libarchive: a header, as much content as it says, the next header.
///
/// Operations throw `Fault`, and what the output throws. After a failure nothing but the destructor may be called;
/// it writes nothing.
class TarOutput {
 public:
  /// @param output   lives longer
  /// @param filters  libarchive's codes, from the innermost to the outermost
  TarOutput(Output& output, const std::vector<int>& filters);
  ~TarOutput();
  TarOutput(const TarOutput&) = delete;
  TarOutput& operator=(const TarOutput&) = delete;

  /// Begins an entry; the one before has to be finished.
  void begin(archive_entry* header);
  void write(std::string_view content);
  /// The same for content that is all zeros; where the header says so, they become a hole.
  void writeZeros(std::uint64_t count);
  void finishEntry();

  /// Writes what belongs at the end.
  void close();

  /// Where what comes next begins in what is to be compressed.
  std::uint64_t position() const { return static_cast<std::uint64_t>(archive_filter_bytes(handle_.get(), 0)); }

 private:
  static la_ssize_t onWrite(::archive* writer, void* self, const void* bytes, std::size_t count);

  void addFilters(const std::vector<int>& filters);
  void check(int result) const;

  Output& output_;
  bool isWritten_ = false;  ///< whether what libarchive gives goes anywhere
  std::exception_ptr failure_;
  WriterHandle handle_;
};

}  // namespace foundation::storage::backend::archive::detail::library
