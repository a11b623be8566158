#pragma once

#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamFailure.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace foundation::storage::provider::test {

/// What streams are to do, and what was asked of them and of their provider, in order.
struct Script {
  std::vector<std::string> log;
  std::int64_t mostPerWrite = std::numeric_limits<std::int64_t>::max();
  std::string failing;  ///< the line of the log after which the operation fails

  void add(const std::string& line) { log.push_back(line); }
  std::vector<std::string> take() { return std::exchange(log, {}); }
};

/// A stream over a string, in which writes beyond the end leave a gap of zeros.
class MemoryStream final : public ByteStream {
 public:
  MemoryStream(std::shared_ptr<std::string> content, std::shared_ptr<Script> script, std::string name = "",
               bool appends = false)
      : content_(std::move(content)), script_(std::move(script)), name_(std::move(name)), appends_(appends) {}
  ~MemoryStream() override { script_->add(name_ + "gone"); }

 private:
  std::int64_t doRead(char* buffer, std::int64_t count) override {
    note<ByteStreamReadFailure>("read " + std::to_string(count));
    const auto size = static_cast<std::int64_t>(content_->size());
    const auto taken = std::min(count, size - std::min(size, position_));
    std::copy_n(content_->data() + std::min(size, position_), taken, buffer);
    position_ += taken;
    return taken == 0 && count != 0 ? -1 : taken;
  }
  std::int64_t doWrite(const char* buffer, std::int64_t count) override {
    note<ByteStreamWriteFailure>("write " + std::to_string(count));
    if (appends_)
      position_ = static_cast<std::int64_t>(content_->size());
    const auto taken = std::min(count, script_->mostPerWrite);
    content_->resize(std::max(content_->size(), static_cast<std::size_t>(position_ + taken)));
    std::copy_n(buffer, taken, content_->data() + position_);
    position_ += taken;
    return taken;
  }
  std::streampos doSeek(std::int64_t offset, int origin) override {
    note<ByteStreamSeekFailure>("seek " + std::to_string(offset) + " " + std::to_string(origin));
    const auto size = static_cast<std::int64_t>(content_->size());
    position_ = offset + (origin == std::ios_base::cur ? position_ : origin == std::ios_base::end ? size : 0);
    return position_;
  }
  void doClose() override { note<ByteStreamCloseFailure>("close"); }

  template <class Failure>
  void note(const std::string& operation) {
    script_->add(name_ + operation);
    if (script_->failing == name_ + operation) {
      Failure failure("on demand", ErrorCode::NoSpaceLeft);
      failure.setExceptionContexts({ExceptionContext(u"disk")});
      throw failure;
    }
  }

  std::shared_ptr<std::string> content_;
  std::shared_ptr<Script> script_;
  std::string name_;
  bool appends_;
  std::int64_t position_ = 0;
};

}  // namespace foundation::storage::provider::test
