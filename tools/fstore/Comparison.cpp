#include <fstore/Comparison.h>
#include <fstore/Refusal.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ByteStream.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ErrorCode;
using provider::StorageItem;

namespace {

/// A file, block by block; all blocks but the last are full.
class BlockReader {
 public:
  explicit BlockReader(const StorageItem& file) : stream_(file.openReadOnlyStream()) {}

  std::string_view next() {
    std::size_t filled = 0;
    while (filled < buffer_.size()) {
      const auto got = stream_->read(buffer_.data() + filled, static_cast<std::int64_t>(buffer_.size() - filled));
      if (got <= 0)
        break;
      filled += static_cast<std::size_t>(got);
    }
    return {buffer_.data(), filled};
  }

 private:
  std::unique_ptr<provider::ByteStream> stream_;
  std::string buffer_ = std::string(256 * 1024, '\0');
};

}  // namespace

void requireSameContent(const StorageItem& source, const StorageItem& copy, const std::function<bool()>& isToStop) {
  BlockReader wanted(source);
  BlockReader found(copy);
  for (std::uint64_t offset = 0;;) {
    if (isToStop())
      throw refusal(ErrorCode::IOError, copy.getLocation(), u"Interrupted; the copy is whole, but was not verified");
    const auto a = wanted.next();
    const auto b = found.next();
    if (a != b) {
      const auto [end, other] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
      offset += static_cast<std::uint64_t>(end - a.begin());
      throw refusal(ErrorCode::IOError, copy.getLocation(),
                    u"The copy differs from its source at byte " + fl::i18n::to_ustring(std::to_string(offset)));
    }
    if (a.empty())
      return;
    offset += a.size();
  }
}

}  // namespace fstore
