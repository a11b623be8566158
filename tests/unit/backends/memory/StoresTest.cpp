// Which stores there are, and several threads in one of them.

#include "Store.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/testing/Together.h>

#include <atomic>
#include <functional>

namespace foundation::storage::backend::memory {
namespace {

using testing::together;

class StoresTest : public StoreTest {};

TEST_F(StoresTest, HasOneStoreForEachHost) {
  const MemoryProviderFactory factory;
  const auto build = [&](const char16_t* text) { return factory.buildProvider(StorageIRI(text)); };
  const auto first = build(u"memory://a/");
  EXPECT_EQ(build(u"MEMORY://A/x/y"), first);
  EXPECT_NE(build(u"memory://b/"), first);
  EXPECT_NE(build(u"memory:/"), first);
  EXPECT_EQ(factory.getKey(StorageIRI(u"Memory://a/x/../y/")), StorageIRI(u"memory://a/"));
  EXPECT_NE(MemoryProviderFactory().buildProvider(StorageIRI(u"memory://a/")), first);
  first->createFile(StorageIRI(u"memory://A//x/..//y/"));
  EXPECT_TRUE(first->fileExists(StorageIRI(u"memory://a/y")));
  EXPECT_EQ(first->getCanonicalLocation(StorageIRI(u"MEMORY://A//x/..//y/")), StorageIRI(u"memory://a/y"));
}

TEST_F(StoresTest, RefusesWhatItDoesNotServe) {
  const MemoryProviderFactory factory;
  for (const auto* text : {u"file:///a", u"zip:memory://test/a.zip!/b", u"memory:memory://test/a!/b", u"memory://test",
                           u"memory://test/a?b", u"memory://test/a#b", u"memory://ann@test/a", u"memory://test:80/a"}) {
    SCOPED_TRACE(fl::i18n::to_string(text));
    const StorageItem foreign(root, StorageIRI(text));
    EXPECT_EQ(codeThrownAt(foreign, [&] { factory.buildProvider(foreign.getLocation()); }), ErrorCode::InvalidLocation);
    EXPECT_EQ(codeThrownAt(foreign, [&] { foreign.createFile(); }), ErrorCode::InvalidLocation);
  }
  for (const auto* path : {u"C:/a", u"//server/share/a"}) {
    const StorageItem foreign(root, toStorageIRI(u"memory", fl::filesystem::upath(path)));
    EXPECT_EQ(codeThrownAt(foreign, [&] { foreign.exists(); }), ErrorCode::InvalidLocation);
  }
  const StorageItem other(root, StorageIRI(u"memory://other/a"));
  EXPECT_EQ(codeThrownAt(other, [&] { other.exists(); }), ErrorCode::InvalidLocation);
  put(u"a", "");
  EXPECT_EQ(codeThrownAt(other, [&] { child(u"a").moveFile(other.getLocation(), ReplacementPolicy::Overwrite); }),
            ErrorCode::InvalidLocation);
}

TEST_F(StoresTest, ChangesNothingInFoldersThatAreNotWritable) {
  child(u"top/locked/empty").createFolderRecursive();
  put(u"top/locked/file", "x");
  put(u"other", "y");
  child(u"top/locked").setWritable(false);
  using I = const StorageItem&;
  constexpr auto over = ReplacementPolicy::Overwrite;
  const struct {
    const char16_t* name;  ///< of what is refused
    std::function<void(I)> change;
  } cases[] = {
      {u"top/locked/new", [](I item) { item.createFile(); }},
      {u"top/locked/new", [](I item) { item.createFolder(); }},
      {u"top/locked/new", [](I item) { item.openStream({}); }},
      {u"top/locked/file", [](I item) { item.removeFile(); }},
      {u"top/locked/empty", [](I item) { item.removeFolder(); }},
      {u"top", [](I item) { item.removeFolderRecursively(); }},
      {u"top/locked/file", [&](I item) { item.moveFile(child(u"moved").getLocation(), over); }},
      {u"top/locked/other", [&](I item) { child(u"other").moveFile(item.getLocation(), over); }},
      {u"top/locked/other", [&](I item) { child(u"other").copyFile(item, over); }},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    const auto item = child(cases[i].name);
    EXPECT_EQ(codeThrownAt(item, [&] { cases[i].change(item); }), ErrorCode::PermissionDenied);
  }
  EXPECT_EQ(content(u"top/locked/file") + content(u"other"), "xy");
  EXPECT_FALSE(child(u"top/locked/other").fileExists() || child(u"top/locked/new").fileExists());
  child(u"top/locked").setWritable(true);
  child(u"top").removeFolderRecursively();
  EXPECT_FALSE(child(u"top").folderExists());
}

TEST_F(StoresTest, CopiesWhatTheCallbackMovesAndRemoves) {
  put(u"a", std::string(5 * 1024 * 1024, 'x'));
  const CopyFileOptions options{.transactionPolicy = TransactionPolicy::Atomic, .interruptCallback = [&] {
                                  if (child(u"a").fileExists())
                                    child(u"a").removeFile();
                                  child(u"b").createFolderRecursive();
                                  child(u"b").removeFolder();
                                  return InterruptSignal::Continue;
                                }};
  EXPECT_EQ(child(u"a").copyFile(child(u"b"), options), TransactionStatus::Completed);
  EXPECT_EQ(content(u"b"), std::string(5 * 1024 * 1024, 'x'));
}

TEST_F(StoresTest, SharesOneTreeAmongManyThreads) {
  constexpr std::size_t count = 8;
  child(u"log").createFile();
  std::atomic<int> created = 0;
  std::atomic<int> moved = 0;
  together(count, [&](std::size_t number) {
    const auto mine = u"f" + std::u16string(1, static_cast<char16_t>(u'0' + number));
    const auto succeeds = [](const auto& action) {
      try {
        action();
        return true;
      } catch (const Exception&) {
        return false;
      }
    };
    const auto log = child(u"log").openStream({.truncate = ByteStreamTruncate::PreserveExisting});
    for (int i = 0; i < 200; ++i) {
      created += succeeds([&] { child(u"one").createFile(); });
      moved += succeeds([&] { child(u"one").moveFile(child(mine).getLocation(), ReplacementPolicy::Overwrite); });
      for (const auto entries = root.listAllRecursive(u"f*"); entries->hasNext();) {
        entries->next();
        EXPECT_TRUE(entries->current().isFile());
      }
      EXPECT_EQ(log->write("0123456789", 10), 10);
      succeeds([&] { child(mine).copyFile(child(u"copy"), ReplacementPolicy::Overwrite); });
      succeeds([&] { child(u"one").setWritable(i % 2 == 0); });
    }
    if (child(mine).fileExists())
      child(mine).removeFile();
  });
  EXPECT_EQ(created - moved, child(u"one").fileExists() ? 1 : 0);
  EXPECT_EQ(child(u"log").getFileAttributes().getSize(), count * 200 * 10);
  for (std::size_t at = 0; const char byte : content(u"log"))
    ASSERT_EQ(byte, static_cast<char>('0' + at++ % 10));
}

TEST_F(StoresTest, MovesFoldersCrosswiseWithoutLosingOne) {
  for (int round = 0; round < 100; ++round) {
    child(u"a").createFolder();
    child(u"b").createFolder();
    together(2, [&](std::size_t number) {
      const auto from = child(number == 0 ? u"a" : u"b");
      const auto into = child(number == 0 ? u"b/a" : u"a/b").getLocation();
      try {
        from.moveFolder(into, ReplacementPolicy::Preserve);
      } catch (const Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), ErrorCode::ResourceNotFound);
      }
    });
    const auto entries = root.listAll(u"");
    entries->next();
    EXPECT_FALSE(entries->hasNext());
    StorageItem(root, entries->current().getName()).removeFolderRecursively();
  }
}

TEST_F(StoresTest, LetsGoOfTreesDeeperThanTheStack) {
  child(u"deep").createFolder();
  for (int depth = 0; depth < 100'000; ++depth) {
    child(u"outer").createFolder();
    child(u"deep").moveFolder(child(u"outer/deep").getLocation(), ReplacementPolicy::Preserve);
    child(u"outer").moveFolder(child(u"deep").getLocation(), ReplacementPolicy::Preserve);
  }
  child(u"deep").removeFolderRecursively();
  EXPECT_FALSE(root.listAll(u"")->hasNext());
}

}  // namespace
}  // namespace foundation::storage::backend::memory
