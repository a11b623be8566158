#include "support/LogRecords.h"
#include <foundation/log/DiagnosticLogger.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/GenericTransactionalStream.h>

#include <gtest/gtest.h>

#include <functional>

namespace foundation::storage::provider {
namespace {

class NullStream final : public ByteStream {
  std::int64_t doRead(char*, std::int64_t) override { return -1; }
  std::int64_t doWrite(const char*, std::int64_t count) override { return count; }
  std::streampos doSeek(std::int64_t, int) override { return 0; }
  void doClose() override {}
};

const char* const channel = "foundation::storage::provider";

/// What the log holds after a transaction was dropped whose aborting fails that often.
std::vector<std::string> recordsOfDropping(int failures, const std::function<void()>& fail) {
  const log::test::LogRecords records;
  log::openChannel(channel, log::Level::detail);
  int attempts = 0;
  {
    const GenericTransactionalStream<ByteStream> dropped(std::make_shared<NullStream>(),
                                                         [&](const StreamClosePolicy& policy) {
                                                           EXPECT_EQ(policy, StreamClosePolicy::Abort);
                                                           if (++attempts <= failures)
                                                             fail();
                                                         });
  }
  log::closeChannel(channel);
  std::vector<std::string> messages;
  for (const auto& record : records.all())
    messages.push_back(record.message);
  return messages;
}

TEST(TransactionalStream, LogsAnAbortThatFailedTwiceWithoutPasswords) {
  using Messages = std::vector<std::string>;
  const std::string failed = "Error in aborting a transaction.";
  const auto refuse = [] { throw Exception(ErrorCode::IOError, StorageIRI(u"s://ann:secret@host/a")); };
  EXPECT_EQ(recordsOfDropping(0, refuse), Messages{});
  EXPECT_EQ(recordsOfDropping(1, refuse), Messages{}) << "the second attempt cleaned up";
  EXPECT_EQ(recordsOfDropping(2, refuse),
            (Messages{failed, "Exception caught: ErrorCode::IOError at s://ann:***@host/a"}));
  const auto failToClose = [] { throw ByteStreamCloseFailure("s://ann:secret@host/a", ErrorCode::NoSpaceLeft); };
  EXPECT_EQ(recordsOfDropping(2, failToClose), (Messages{failed, "Exception caught: ErrorCode::NoSpaceLeft"}));
  const auto wrap = [&] {
    try {
      refuse();
    } catch (const Exception&) {
      std::throw_with_nested(std::runtime_error("upload"));
    }
  };
  EXPECT_EQ(recordsOfDropping(2, wrap),
            (Messages{failed, "Exception caught: upload, because of: ErrorCode::IOError at s://ann:***@host/a"}));
  EXPECT_EQ(recordsOfDropping(2, [] { throw 7; }),
            (Messages{failed, "Exception caught: an exception of unknown type"}));
  const auto others = recordsOfDropping(2, [] { throw std::runtime_error("something else"); });
  ASSERT_EQ(others.size(), 2u);
  EXPECT_NE(others[1].find("something else"), std::string::npos);
}

}  // namespace
}  // namespace foundation::storage::provider
