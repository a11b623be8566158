#pragma once

#include <foundation/storage/backend/archive/detail/Budget.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>
#include <foundation/storage/backend/archive/detail/zip/Content.h>

#include <exception>
#include <memory>
#include <string>

struct archive;

namespace foundation::storage::backend::archive::detail::zip {

/// Content that is compressed. libarchive decodes it, whatever the method: it is shown an archive of one entry, whose
/// local header is made here of what the directory says, so that it needs neither the real one nor the rest of the
/// file.
class DecodedReader final : public ContentReader {
 public:
  /// @param archive  owns `budget`
  DecodedReader(std::shared_ptr<const StoredArchive> archive, Budget& budget, const Limits& limits, Input input,
                const Content& content);

  std::size_t read(char* buffer, std::size_t count) override;
  /// Only to the beginning.
  bool seek(std::uint64_t position) override;

 private:
  struct Free {
    void operator()(::archive* decoder) const;
  };

  void begin();
  /// The next part of the archive of one entry; called by libarchive, which must see no exception.
  static long giveBytes(::archive* decoder, void* self, const void** bytes) noexcept;
  std::size_t nextBytes(const void** bytes);
  void requireWell(long long result);

  const std::shared_ptr<const StoredArchive> archive_;
  Budget& budget_;
  const Limits limits_;
  Input input_;
  const Content content_;
  std::string buffer_;
  bool isHeaderGiven_ = false;
  std::uint64_t consumed_ = 0;  ///< of the stored content
  std::uint64_t produced_ = 0;
  std::exception_ptr failure_;  ///< of the input
  std::unique_ptr<::archive, Free> decoder_;
};

}  // namespace foundation::storage::backend::archive::detail::zip
