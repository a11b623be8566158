#include "support/MemoryStream.h"
#include "support/Thrown.h"
#include <foundation/storage/provider/ByteStreamDevice.h>
#include <foundation/storage/provider/SafeByteStream.h>

#include <boost/iostreams/stream.hpp>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace foundation::storage::provider {
namespace {

using test::MemoryStream;
using test::Script;
using Log = std::vector<std::string>;

class ByteStreams : public testing::Test {
 protected:
  std::unique_ptr<ByteStream> open() { return std::make_unique<MemoryStream>(content_, script_); }

  std::shared_ptr<std::string> content_ = std::make_shared<std::string>("0123456789");
  std::shared_ptr<Script> script_ = std::make_shared<Script>();
  char buffer_[16] = {};
};

TEST_F(ByteStreams, SafeStreamKeepsThePromisesOfItsOpening) {
  for (const bool readable : {false, true})
    for (const bool writable : {false, true}) {
      {
        SafeByteStream stream(open(), readable, writable);
        EXPECT_EQ(stream.read(buffer_, 2), readable ? 2 : -1);
        const auto write = [&] { stream.write("ab", 2); };
        const auto refused = test::textThrownBy<ByteStreamWriteFailure>(write);
        EXPECT_EQ(refused.rfind(writable ? "nothing was thrown" : "Stream was not opened for writing.", 0), 0u);
        EXPECT_EQ(stream.seek(-1, std::ios_base::end), std::streampos(9));
        stream.close();
      }
      Log expected{"seek -1 2", "close", "gone"};
      if (writable)
        expected.insert(expected.begin(), "write 2");
      if (readable)
        expected.insert(expected.begin(), "read 2");
      EXPECT_EQ(script_->take(), expected);
    }
  try {
    SafeByteStream(open(), true, false).write("x", 1);
    ADD_FAILURE() << "was written";
  } catch (const ByteStreamWriteFailure& failure) {
    EXPECT_EQ(failure.getErrorCode(), ErrorCode::IOError);
  }
}

TEST_F(ByteStreams, DevicesShareOneStream) {
  auto stream = open();
  {
    const ByteStreamDevice first(stream);
    EXPECT_EQ(stream, nullptr);
    {
      const ByteStreamDevice second = first;
      EXPECT_EQ(first.read(buffer_, 3), 3);
      EXPECT_EQ(second.read(buffer_, 3), 3);
      EXPECT_EQ(std::string(buffer_, 3), "345");
      EXPECT_EQ(second.write("x", 1), 1);
      EXPECT_EQ(second.seek(-2, std::ios_base::cur), std::streampos(5));
    }
    first.close();
  }
  EXPECT_EQ(*content_, "012345x789");
  EXPECT_EQ(script_->take(), (Log{"read 3", "read 3", "write 1", "seek -2 1", "close", "gone"}));
}

TEST_F(ByteStreams, StandardStreamReadsWritesAndSeeks) {
  auto stream = open();
  boost::iostreams::stream<ByteStreamDevice> file{ByteStreamDevice(stream)};
  std::string text;
  file.seekg(4);
  ASSERT_TRUE(std::getline(file, text));
  EXPECT_EQ(text, "456789");
  file.clear();
  file.seekp(0, std::ios_base::end);
  file << "ab\n" << 17;
  file.seekg(-3, std::ios_base::cur);
  EXPECT_EQ(file.get(), '\n');
  file.close();
  EXPECT_EQ(*content_, "0123456789ab\n17");
  EXPECT_EQ(std::count(script_->log.begin(), script_->log.end(), "close"), 1);
}

TEST_F(ByteStreams, StandardStreamReportsFailures) {
  script_->failing = "write 3";
  auto stream = open();
  boost::iostreams::stream<ByteStreamDevice> file{ByteStreamDevice(stream)};
  file << "abc" << std::flush;
  EXPECT_TRUE(file.bad());
}

/// Records how it is closed.
class RecordingTransaction final : public TransactionalStream {
 public:
  RecordingTransaction(std::unique_ptr<ByteStream> inner, std::shared_ptr<Script> script)
      : inner_(std::move(inner)), script_(std::move(script)) {}

 private:
  void doClose(const StreamClosePolicy& policy) override {
    std::ostringstream text;
    text << policy;
    script_->add(text.str());
  }
  ByteStream& doGetByteStream() override { return *inner_; }

  std::unique_ptr<ByteStream> inner_;
  std::shared_ptr<Script> script_;
};

TEST_F(ByteStreams, TransactionalDeviceCommitsUnlessToldToAbort) {
  std::unique_ptr<TransactionalStream> stream = std::make_unique<RecordingTransaction>(open(), script_);
  const TransactionalStreamDevice device(stream);
  EXPECT_EQ(device.read(buffer_, 2), 2);
  EXPECT_EQ(device.write("x", 1), 1);
  EXPECT_EQ(device.seek(1, std::ios_base::beg), std::streampos(1));
  device.close();
  device.close(StreamClosePolicy::Abort);
  const GenericByteStreamDevice<TransactionalStream> copy = device;
  copy.close();
  EXPECT_EQ(script_->take(), (Log{"read 2", "write 1", "seek 1 0", "StreamClosePolicy::Commit",
                                  "StreamClosePolicy::Abort", "StreamClosePolicy::Commit"}));
}

TEST_F(ByteStreams, TransactionalDeviceCommitsNothingThatWasNotAllWritten) {
  const struct {
    const char* what;
    std::int64_t mostPerWrite;
    const char* failing;
    const char* end;
  } cases[] = {
      {"all taken", 100, "", "StreamClosePolicy::Commit"},
      {"a part of the last buffer", 4, "", "StreamClosePolicy::Abort"},
      {"a failure on the last buffer", 100, "write 6", "StreamClosePolicy::Abort"},
  };
  for (const auto& [what, mostPerWrite, failing, end] : cases) {
    SCOPED_TRACE(what);
    script_->mostPerWrite = mostPerWrite;
    script_->failing = failing;
    std::unique_ptr<TransactionalStream> stream = std::make_unique<RecordingTransaction>(open(), script_);
    boost::iostreams::stream<TransactionalStreamDevice> file{TransactionalStreamDevice(stream)};
    file.exceptions(std::ios::badbit | std::ios::failbit);
    file << "abcdef";
    const auto thrown = test::textThrownBy<std::exception>([&] { file.close(); });
    EXPECT_EQ(thrown == "nothing was thrown", end == std::string("StreamClosePolicy::Commit")) << thrown;
    EXPECT_EQ(script_->take(), (Log{"write 6", end, "gone"}));
  }
}

TEST_F(ByteStreams, TransactionalDeviceKeepsInMindThatAWriteFailedUntilItIsClosed) {
  script_->failing = "write 6";
  std::unique_ptr<TransactionalStream> stream = std::make_unique<RecordingTransaction>(open(), script_);
  const TransactionalStreamDevice device(stream);
  EXPECT_THROW(device.write("abcdef", 6), ByteStreamWriteFailure);
  EXPECT_EQ(device.write("ghi", 3), 3);
  EXPECT_THROW(device.close(), ByteStreamCloseFailure);
  device.close();
  EXPECT_THROW(device.write("abcdef", 6), ByteStreamWriteFailure);
  device.close(StreamClosePolicy::Commit);
  EXPECT_EQ(script_->take(), (Log{"write 6", "write 3", "StreamClosePolicy::Abort", "StreamClosePolicy::Commit",
                                  "write 6", "StreamClosePolicy::Commit"}));
}

}  // namespace
}  // namespace foundation::storage::provider
