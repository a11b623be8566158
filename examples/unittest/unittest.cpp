// A program's own code and its tests. Stores in memory need no temporary folders and no clean-up: each begins empty, is
// as small as the test says, and is gone with its last item.

#include <foundation/storage/provider/ByteStreamDevice.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <boost/iostreams/stream.hpp>
#include <gtest/gtest.h>

using namespace foundation::storage::provider;

// [code]
/// Copies a file to one beside it, ".bak" behind its name; whether there was a file.
bool backUp(const StorageItem& file) {
  if (!file.fileExists())
    return false;
  const StorageItem copy(file.getParent(), file.getName() + u".bak");
  file.copyFile(copy, {ReplacementPolicy::Overwrite, TransactionPolicy::Atomic});
  return true;
}
// [code]

void write(const StorageItem& file, const std::string& text) {
  const auto stream = file.openStream({});
  ASSERT_EQ(stream->write(text.data(), std::ssize(text)), std::ssize(text));
  stream->close();
}

std::string read(const StorageItem& file) {
  auto stream = file.openReadOnlyStream();
  boost::iostreams::stream<ByteStreamDevice> in{ByteStreamDevice(stream)};
  return {std::istreambuf_iterator<char>(in), {}};
}

// [test]
struct BackUp : testing::Test {
  foundation::storage::registry::ProviderRegistry registry = foundation::storage::registry::makeDefaultRegistry();
  StorageItem notes = registry.item(u"memory:///notes");
  StorageItem copy = registry.item(u"memory:///notes.bak");
};

TEST_F(BackUp, NeedsAFile) { EXPECT_FALSE(backUp(notes)); }

TEST_F(BackUp, KeepsTheOldCopyWhereThereIsNoRoomForANewOne) {
  write(notes, "milk");
  EXPECT_TRUE(backUp(notes));
  write(notes, "milk and honey");
  boost::property_tree::ptree options;
  options.put("memory.capacity", 20);
  registry.configure(options);
  EXPECT_THROW(backUp(notes), Exception);
  EXPECT_EQ(read(copy), "milk");
}
// [test]
