#include <foundation/storage/backend/archive/detail/library/TarOutput.h>

#include <foundation/storage/backend/archive/detail/Fault.h>
#include <foundation/storage/backend/archive/detail/posix/NameLocale.h>

#include <algorithm>
#include <array>
#include <new>
#include <string>

namespace foundation::storage::backend::archive::detail::library {

using posix::NameForm;
using posix::NameLocale;

TarOutput::TarOutput(Output& output, const std::vector<int>& filters) : output_(output), handle_(archive_write_new()) {
  if (!handle_)
    throw std::bad_alloc();
  // Of the variants with extended headers the one that tells times exactly.
  check(archive_write_set_format_pax(handle_.get()));
  addFilters(filters);
  const NameLocale locale(NameForm::Utf8);
  isWritten_ = true;
  check(archive_write_open2(handle_.get(), this, nullptr, &TarOutput::onWrite, nullptr, nullptr));
}

TarOutput::~TarOutput() { isWritten_ = false; }

void TarOutput::addFilters(const std::vector<int>& filters) {
  for (const auto filter : filters)
    // A warning says that a program would do the work.
    if (archive_write_add_filter(handle_.get(), filter) != ARCHIVE_OK)
      throw Fault(provider::ErrorCode::UnsupportedOperation, "its compression can only be read here");
  // A tar of its own is filled up to the size that tape drives liked; compressed bytes are not.
  if (!filters.empty())
    check(archive_write_set_bytes_in_last_block(handle_.get(), 1));
}

void TarOutput::begin(archive_entry* header) {
  const NameLocale locale(NameForm::Utf8);
  check(archive_write_header(handle_.get(), header));
}

void TarOutput::write(std::string_view content) {
  while (!content.empty()) {
    const auto written = archive_write_data(handle_.get(), content.data(), content.size());
    check(written < 0 ? static_cast<int>(written) : ARCHIVE_OK);
    if (written == 0)
      throw damage("an entry's content is longer than it was said to be");
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

void TarOutput::writeZeros(std::uint64_t count) {
  static constexpr std::array<char, std::size_t{64}* 1024> zeros = {};
  while (count > 0) {
    const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(count, zeros.size()));
    write({zeros.data(), piece});
    count -= piece;
  }
}

void TarOutput::finishEntry() { check(archive_write_finish_entry(handle_.get())); }

void TarOutput::close() { check(archive_write_close(handle_.get())); }

/// Warnings pass: they say that a name is not UTF-8, and is stored as it is.
void TarOutput::check(int result) const {
  if (failure_)
    std::rethrow_exception(failure_);
  if (result >= ARCHIVE_WARN && result != ARCHIVE_RETRY)
    return;
  const auto* const told = archive_error_string(handle_.get());
  throw damage(told != nullptr ? told : "the archive cannot be written");
}

/// Never fails: libarchive does not free everything after a failure. `check` tells of it.
la_ssize_t TarOutput::onWrite(::archive*, void* self, const void* bytes, std::size_t count) {
  auto& output = *static_cast<TarOutput*>(self);
  try {
    if (output.isWritten_)
      output.output_.write({static_cast<const char*>(bytes), count});
  } catch (...) {
    output.failure_ = std::current_exception();
    output.isWritten_ = false;
  }
  return static_cast<la_ssize_t>(count);
}

}  // namespace foundation::storage::backend::archive::detail::library
