#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/InvalidateProvider.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/testing/Conformance.h>
#include <foundation/storage/testing/FaultyProvider.h>
#include <foundation/storage/testing/Together.h>

#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <latch>
#include <sstream>

namespace foundation::storage::testing {
namespace {

using namespace provider;

class FaultyProviderTest : public ::testing::Test {
 protected:
  const StorageIRI root_{u"memory:///"};
  const std::shared_ptr<Faults> faults_ = std::make_shared<Faults>();
  const StorageItem folder_{
      std::make_shared<FaultyProvider>(backend::memory::MemoryProviderFactory().buildProvider(root_), faults_), root_};
};

TEST_F(FaultyProviderTest, FailsTheChosenCalls) {
  faults_->fail(Operation::CreateFile, 2, ErrorCode::PermissionDenied);
  faults_->fail(Operation::CreateFile, 3, ErrorCode::IOError, FaultMoment::After);
  const StorageItem a(folder_, u"a"), b(folder_, u"b"), c(folder_, u"c");
  a.createFile();
  EXPECT_THROW(b.createFile(), Exception);
  EXPECT_FALSE(b.fileExists()) << "it failed before";
  EXPECT_THROW(c.createFile(), Exception);
  EXPECT_TRUE(c.fileExists()) << "it failed after";
  EXPECT_EQ(faults_->calls(),
            (std::vector<std::string>{"CreateFile memory:///a", "CreateFile memory:///b", "FileExists memory:///b",
                                      "CreateFile memory:///c", "FileExists memory:///c"}));
  EXPECT_EQ(faults_->countCalls(Operation::CreateFile), 3u);
  EXPECT_EQ(faults_->countFailures(), 2u);
  faults_->clear();
  b.createFile();
  EXPECT_EQ(faults_->countCalls(), 1u);
}

TEST_F(FaultyProviderTest, FailsStreamsByTheirOwnFailures) {
  const StorageItem a(folder_, u"a");
  faults_->fail(Operation::Write, 1, ErrorCode::NoSpaceLeft);
  faults_->fail(Operation::Seek, Faults::every, ErrorCode::IOError);
  faults_->fail(Operation::CloseStream, 1, ErrorCode::IOError);
  faults_->shorten(Operation::Write, 2, 1);
  auto stream = a.openStream({});
  EXPECT_EQ(faults_->countOpenStreams(), 1u);
  EXPECT_THROW(stream->write("abc", 3), ByteStreamWriteFailure);
  EXPECT_EQ(stream->write("abc", 3), 1);
  EXPECT_EQ(stream->write("bc", 2), 2);
  for (int times = 0; times < 2; ++times)
    EXPECT_THROW(stream->seek(0, 0), ByteStreamSeekFailure);
  EXPECT_THROW(stream->close(), ByteStreamCloseFailure);
  stream.reset();
  EXPECT_EQ(faults_->countOpenStreams(), 0u);
}

TEST_F(FaultyProviderTest, DelaysOneCallWhileOthersPass) {
  const StorageItem a(folder_, u"a"), b(folder_, u"b");
  std::latch passed(1);
  faults_->delay(Operation::CreateFile, 1, [&] { passed.wait(); });
  together(2, [&](std::size_t number) {
    if (number == 0) {
      a.createFile();
      EXPECT_TRUE(b.folderExists()) << "it went on too early";
    } else {
      while (faults_->countCalls(Operation::CreateFile) == 0)
        std::this_thread::yield();
      b.createFolder();
      passed.count_down();
    }
  });
}

TEST_F(FaultyProviderTest, ReachesOptionalCapabilities) {
  boost::property_tree::ptree options;
  options.put("capacity", 5);
  folder_.configure(options);
  EXPECT_EQ(folder_.getProviderStorageInfo().getStorageCapacity(), 5u);
  folder_.flushFilesystem();  // memory has nothing to flush or to forget
  invalidateProvider(folder_);
  faults_->fail(Operation::Invalidate, 2, ErrorCode::IOError);
  EXPECT_THROW(invalidateProvider(folder_), Exception);
  EXPECT_EQ(faults_->countCalls(Operation::Flush), 1u);
}

TEST(Conformance, RefusesDescriptionsThatAreNotWhole) {
  const auto place = [] { return Place(); };
  const BackEnd cases[] = {
      {.name = "", .makeEmptyFolder = place, .capabilities = {Capability::Write}},
      {.name = "With Blank", .makeEmptyFolder = place, .capabilities = {Capability::Write}},
      {.name = "NoFolder", .makeEmptyFolder = {}, .capabilities = {Capability::Write}},
      {.name = "ReadOnlyWithoutContents", .makeEmptyFolder = place, .capabilities = {}},
      {.name = "NoSmallFolder",
       .makeEmptyFolder = place,
       .capabilities = {Capability::Write, Capability::LimitedSpace}},
      {.name = "UnknownDeviation",
       .makeEmptyFolder = place,
       .capabilities = {Capability::Write},
       .deviations = {{"Move.Nothing", "a typing error"}}},
      {.name = "NeedlessDeviation",
       .makeEmptyFolder = place,
       .capabilities = {Capability::Write},
       .deviations = {{"Time.OfAFolder", "it has no times anyway"}}},
  };
  for (const auto& backEnd : cases)
    EXPECT_THROW(registerConformance(backEnd), std::invalid_argument) << backEnd.name;
}

TEST(Conformance, WritesDeviationsBelowItsTable) {
  std::ostringstream out;
  writeCapabilities(out, {{.name = "Mine",
                           .makeEmptyFolder = {},
                           .capabilities = {Capability::Write},
                           .deviations = {{"Move.AFolderOverAnEmptyOne", "it cannot"}}}});
  EXPECT_NE(out.str().find("| writing | yes |\n"), std::string::npos);
  EXPECT_NE(out.str().find("| wildcards | no |\n"), std::string::npos);
  EXPECT_NE(out.str().find("- Mine deviates in Move.AFolderOverAnEmptyOne: it cannot\n"), std::string::npos);
}

}  // namespace
}  // namespace foundation::storage::testing
