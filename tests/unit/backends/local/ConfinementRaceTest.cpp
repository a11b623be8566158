// Others put links to the outside in the place of folders and files, and back, while a provider works below them.

#include "ConfinedTree.h"

#include <atomic>
#include <stdio.h>
#include <thread>

namespace foundation::storage::backend::local {
namespace {

/// Two names in an open folder.
struct Pair {
  int folder;
  const char* one;
  const char* other;
};

/// Keeps exchanging what is at two names, of each of some pairs, until it is destroyed.
class Exchanges {
 public:
  explicit Exchanges(std::vector<Pair> pairs) : pairs_(std::move(pairs)), thread_([this] { run(); }) { count_.wait(0); }
  ~Exchanges() {
    ends_ = true;
    thread_.join();
  }
  Exchanges(const Exchanges&) = delete;
  Exchanges& operator=(const Exchanges&) = delete;

 private:
  void run() {
    while (!ends_)
      for (const auto& [folder, one, other] : pairs_) {
        ::renameat2(folder, one, folder, other, RENAME_EXCHANGE);  // fails while an operation has removed one
        ++count_;
        count_.notify_all();
      }
  }

  const std::vector<Pair> pairs_;
  std::atomic<bool> ends_ = false;
  std::atomic<int> count_ = 0;
  std::thread thread_;  // the last one: it uses the others
};

class ConfinementRaceTest : public ConfinedTest {
 protected:
  void SetUp() override {
    ConfinedTest::SetUp();
    makeRoot();
  }

  detail::Descriptor opened(const std::string& name) const {
    return detail::Descriptor(::open(native(name).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  }

  /// Puts back what operations have taken away; what is there stays.
  void repair(int root, int inner) const {
    for (const auto& [parent, name] : {std::pair(root, "other-folder"), {inner, "deep"}})
      ::mkdirat(parent, name, 0755);
    for (const auto& [parent, name] : {std::pair(root, "other"), {inner, "file"}, {inner, "deep/file"}}) {
      const detail::Descriptor file(::openat(parent, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    }
    ::symlinkat("../../outside/area", inner, "away");
    ::symlinkat("../../outside/file", inner, "file-away");
    ::unlinkat(root, "result", 0);
    ::unlinkat(root, "result", AT_REMOVEDIR);
  }

  /// Folders with files, each beside a link to an outside one that has the same names.
  void makeTree() const {
    fs::remove_all(native("root/tree"));
    fs::create_directories(native("root/tree/folder/deep"));
    for (int i = 0; i < 10; ++i) {
      put("root/tree/folder/file" + std::to_string(i), "inside");
      put("root/tree/folder/deep/file" + std::to_string(i), "inside");
    }
    fs::create_symlink("../../outside/area", native("root/tree/link"));
    fs::create_symlink("../../../outside/area", native("root/tree/folder/link"));
  }

  /// Each operation below "folder" that is now and then a link, at names that are.
  void attack(Guard guard, const detail::Descriptor& root, const detail::Descriptor& inner) const {
    const auto provider = configured({{"root", native("root")}}, guard);
    for (const auto& operation : operations_)
      for (const auto* name : {"folder/file", "folder/deep", "folder/deep/file", "folder/new"})
        for (int i = 0; i < rounds; ++i) {
          repair(root.get(), inner.get());
          SCOPED_TRACE(operation.name + " at " + name);
          expectNothingSecret(
              told(operation, subjectAt(provider, native(std::string("root/") + name), native("root"))));
        }
  }

  static constexpr int rounds = 50;
};

TEST_F(ConfinementRaceTest, NothingLeadsOutWhileOthersExchangeFoldersAndLinks) {
  const auto contentBefore = outsideContent();
  for (const auto guard : guards) {
    makeRoot();
    const auto root = opened("root");
    const auto inner = opened("root/folder");
    {
      const Exchanges others({{root.get(), "folder", "chained"},
                              {inner.get(), "deep", "away"},
                              {root.get(), "folder", "chained"},
                              {inner.get(), "file", "file-away"}});
      attack(guard, root, inner);
    }
    EXPECT_EQ(outside(), outsideBefore_);
    expectNothingSecret(seen("root", content));
  }
  EXPECT_EQ(outsideContent(), contentBefore);
}

/// Neither for a confined provider nor for another.
TEST_F(ConfinementRaceTest, RemovalsFollowNoLinkThatOthersPutInTheirWay) {
  for (const auto& options : {Options{}, Options{{"root", native("root")}}})
    for (int i = 0; i < 200; ++i) {
      makeTree();
      const StorageItem tree(configured(options, Guard::Kernel), at(native("root/tree")));
      const auto top = opened("root/tree");
      const auto inner = opened("root/tree/folder");
      const Exchanges others({{top.get(), "folder", "link"}, {inner.get(), "deep", "link"}});
      try {
        tree.removeFolderRecursively();
      } catch (const Exception&) {
        // Something has come back behind it.
      }
      ASSERT_EQ(outside(), outsideBefore_);
    }
}

/// Wherever the link leads, and whether or not the provider is confined.
TEST_F(ConfinementRaceTest, ListingsOfTreesDescendIntoNoLinkThatTookAFoldersPlace) {
  for (const auto* target : {"../folder", "../../outside/area"})
    for (const auto& options : {Options{}, Options{{"root", native("root")}}}) {
      makeTree();
      fs::remove(native("root/tree/link"));
      fs::create_symlink(target, native("root/tree/link"));
      const auto listing =
          StorageItem(configured(options, Guard::Kernel), at(native("root/tree"))).listAllRecursive(u"");
      try {
        while (listing->hasNext()) {
          listing->next();
          const auto name = listing->current().getName();
          EXPECT_NE(name, u"folder/deep/file") << "that is behind the link to " << target;
          if (name == u"folder/deep") {
            fs::rename(native("root/tree/folder"), native("root/tree/moved"));
            fs::rename(native("root/tree/link"), native("root/tree/folder"));
          }
        }
      } catch (const Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), ErrorCode::PermissionDenied);
      }
    }
}

}  // namespace
}  // namespace foundation::storage::backend::local
