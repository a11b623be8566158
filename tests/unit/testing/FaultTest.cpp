// Every call that an inherited algorithm makes fails once, before it has done its work and after. Whatever the
// call: the failure arrives with a type, files hold what they held or what they were to hold, nothing leaks.

#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/testing/FaultyProvider.h>
#include <foundation/storage/testing/PrimitiveProvider.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <ostream>

namespace foundation::storage::testing {
namespace {

using namespace provider;

const std::string oldContent(300'000, 'o');
const std::string newContent(200'000, 'n');
const std::string bigContent(5 * 1024 * 1024, 'b');

constexpr ByteStreamOpenOptions replacing{.append = ByteStreamAppend::Overwrite};

using Files = std::map<std::u16string, std::string>;

/// A store in memory that can be made to fail, seen through what back ends inherit.
class World {
 public:
  World() { put(u"old", oldContent), put(u"new", newContent), put(u"big", bigContent); }

  /// Fails as planned.
  StorageItem item(const std::u16string& path) const { return {StorageItem(failing_, root_), path}; }
  Faults& faults() const { return *faults_; }

  void put(const std::u16string& path, const std::string& bytes) const {
    const auto stream = StorageItem(StorageItem(store_, root_), path).openStream(replacing);
    stream->write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    stream->close();
  }

  /// All files with their content; folders with none.
  Files files() const {
    Files found;
    for (const auto entries = store_->listAllRecursive(root_, u""); entries->hasNext();) {
      entries->next();
      const auto entry = entries->current();
      auto& content = found[entry.getName()];
      if (!entry.isFile())
        continue;
      content.resize(entry.getFileAttributes()->getSize());
      const auto stream = StorageItem(StorageItem(store_, root_), entry.getName()).openReadOnlyStream();
      stream->read(content.data(), static_cast<std::int64_t>(content.size()));
    }
    return found;
  }

 private:
  const StorageIRI root_{u"memory:///"};
  const std::shared_ptr<IProvider> store_ = backend::memory::MemoryProviderFactory().buildProvider(root_);
  const std::shared_ptr<Faults> faults_ = std::make_shared<Faults>();
  const std::shared_ptr<IProvider> failing_ =
      std::make_shared<PrimitiveProvider>(std::make_shared<FaultyProvider>(store_, faults_));
};

bool isScratch(const std::u16string& name) { return name.starts_with(u".") && name.ends_with(u".tmp.bak"); }

/// An inherited algorithm, and what may be there when it has failed.
struct Algorithm {
  const char* name;
  std::function<void(const World& world)> run;
  /// Whether the files are as they were before, or as they were to become; without scratch files.
  std::function<bool(const Files& before, const Files& files, const Files& after)> isSound;
  bool reportsAll = true;  ///< false where it may succeed in spite of a failure
};

bool isOldOrNew(const Files& before, const Files& files, const Files& after) {
  return files == before || files == after;
}

/// What a copy that is not atomic has written stays.
bool isPrefixOfCopy(const Files& before, const Files& files, const Files& after) {
  auto others = files;
  const auto written = others.extract(u"old");
  auto expected = before;
  const auto old = expected.extract(u"old");
  return others == expected && (written.mapped() == old.mapped() || after.at(u"old").starts_with(written.mapped()));
}

bool holdsChainOfFolders(const Files&, const Files& files, const Files&) {
  return files.contains(u"a") >= files.contains(u"a/b") && files.contains(u"a/b") >= files.contains(u"a/b/c");
}

bool isGrownInPart(const Files& before, const Files& files, const Files& after) {
  auto others = files;
  const auto grown = others.extract(u"old").mapped();
  auto expected = before;
  return expected.extract(u"old").mapped().size() <= grown.size() && after.at(u"old").starts_with(grown) &&
         others == expected;
}

/// Besides the scratch copy, whose name is the file's and a UUID.
bool isOldOrNewBesidesTheScratchCopy(const Files& before, const Files& files, const Files& after) {
  auto others = files;
  std::erase_if(others, [](const auto& file) { return file.first.starts_with(u"old") && file.first != u"old"; });
  return isOldOrNew(before, others, after);
}

void write(TransactionalStream& stream, const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();)
    done += static_cast<std::size_t>(stream.write(bytes.data() + done, static_cast<std::int64_t>(bytes.size() - done)));
}

std::function<void(const World&)> copying(TransactionPolicy transaction, bool asks) {
  return [=](const World& world) {
    CopyFileOptions options{ReplacementPolicy::Overwrite, transaction, {}};
    if (asks)
      options.interruptCallback = [] { return InterruptSignal::Continue; };
    EXPECT_EQ(world.item(u"big").copyFile(world.item(u"old"), options), TransactionStatus::Completed);
  };
}

void transact(const World& world, std::optional<StreamClosePolicy> close) {
  const auto stream = world.item(u"old").openTransactionalStream(replacing);
  write(*stream, newContent);
  if (close)
    stream->close(*close);
}

std::vector<Algorithm> algorithms() {
  using enum TransactionPolicy;
  return {
      {"CreateFolders", [](const World& world) { world.item(u"a/b/c").createFolderRecursive(); }, holdsChainOfFolders},
      {"Copy",
       [](const World& world) { world.item(u"new").copyFile(world.item(u"old"), ReplacementPolicy::Overwrite); },
       isPrefixOfCopy},
      {"CopyAsking", copying(NonAtomic, true), isPrefixOfCopy},
      {"CopyAtomically", copying(Atomic, false), isOldOrNew},
      {"CopyAtomicallyAsking", copying(Atomic, true), isOldOrNew},
      {"Grow", [](const World& world) { world.item(u"old").truncateToSize(500'000); }, isGrownInPart},
      {"Shrink", [](const World& world) { world.item(u"old").truncateToSize(150'000); },
       isOldOrNewBesidesTheScratchCopy},
      {"Commit", [](const World& world) { transact(world, StreamClosePolicy::Commit); }, isOldOrNew},
      {"Abort", [](const World& world) { transact(world, StreamClosePolicy::Abort); }, isOldOrNew},
      {"Drop", [](const World& world) { transact(world, std::nullopt); }, isOldOrNew, false},
      {"ClassifyByExistence",
       [](const World& world) {
         EXPECT_EQ(world.item(u"old").exists(), ExistenceType::AsFile);
         EXPECT_EQ(world.item(u"none").existsExtended(), ExistenceTypeExtended::None);
       },
       isOldOrNew},
  };
}

void PrintTo(const Algorithm& algorithm, std::ostream* out) { *out << algorithm.name; }

class Faulted : public ::testing::TestWithParam<Algorithm> {
 protected:
  static Files filesAfterSuccess() {
    const World world;
    GetParam().run(world);
    return world.files();
  }

  /// @return whether it succeeded
  static bool runs(const World& world) {
    try {
      GetParam().run(world);
      return true;
    } catch (const Exception& failure) {
      EXPECT_EQ(failure.getErrorCode(), ErrorCode::IOError) << failure.what();
    } catch (const ByteStreamFailure& failure) {
      EXPECT_EQ(failure.getErrorCode(), ErrorCode::IOError) << failure.what();
    }
    return false;
  }

  /// A scratch file may stay only where its creation seemed to fail.
  static void expectSound(const World& world, const Files& before, const Files& after) {
    auto files = world.files();
    const auto calls = world.faults().calls();
    ASSERT_FALSE(calls.empty());
    const bool openSeemedToFail = calls.back().starts_with("OpenStream");
    const auto scratch = std::erase_if(files, [](const auto& file) { return isScratch(file.first); });
    EXPECT_TRUE(scratch == 0 || openSeemedToFail) << calls.back();
    EXPECT_TRUE(GetParam().isSound(before, files, after)) << calls.back();
    EXPECT_EQ(world.faults().countOpenStreams(), 0u);
  }
};

TEST_P(Faulted, AtEveryCall) {
  const auto before = World().files();
  const auto after = filesAfterSuccess();
  for (const auto moment : {FaultMoment::Before, FaultMoment::After}) {
    std::size_t call = 1;
    for (bool failed = true; failed; ++call) {
      const World world;
      world.faults().failAny(call, ErrorCode::IOError, moment);
      SCOPED_TRACE(call);
      const bool succeeded = runs(world);
      failed = world.faults().countFailures() > 0;
      EXPECT_TRUE(failed || succeeded);
      EXPECT_TRUE(!failed || !succeeded || !GetParam().reportsAll) << "the failure was swallowed";
      expectSound(world, before, after);
    }
    EXPECT_GT(call, 3u) << "nothing was made to fail";
  }
}

TEST_P(Faulted, ByShortReadsAndWrites) {
  const auto after = filesAfterSuccess();
  const World world;
  world.faults().shorten(Operation::Read, Faults::every, 70'001);
  world.faults().shorten(Operation::Write, Faults::every, 70'003);
  EXPECT_TRUE(runs(world));
  EXPECT_TRUE(world.files() == after);
}

INSTANTIATE_TEST_SUITE_P(Inherited, Faulted, ::testing::ValuesIn(algorithms()),
                         [](const auto& algorithm) { return std::string(algorithm.param.name); });

}  // namespace
}  // namespace foundation::storage::testing
