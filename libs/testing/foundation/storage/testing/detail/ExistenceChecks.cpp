#include <foundation/storage/testing/detail/Check.h>

namespace foundation::storage::testing::detail {

using provider::ExistenceType;
using provider::ExistenceTypeExtended;

namespace {

const Contents tree{{u"file", "x"}, {u"folder/inner", "y"}};

void expectNothingAt(const StorageItem& item) {
  EXPECT_FALSE(item.fileExists());
  EXPECT_FALSE(item.folderExists());
  EXPECT_EQ(item.exists(), ExistenceType::AsNeither);
  EXPECT_EQ(item.existsExtended(), ExistenceTypeExtended::None);
}

}  // namespace

CheckGroup existenceChecks() {
  return {"Existence",
          {},
          {
              {"OfAFile",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_TRUE(s.item(u"file").fileExists());
                 EXPECT_FALSE(s.item(u"file").folderExists());
                 EXPECT_EQ(s.item(u"file").exists(), ExistenceType::AsFile);
                 EXPECT_EQ(s.item(u"file").existsExtended(), ExistenceTypeExtended::RegularFile);
               }},
              {"OfAFolder",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_FALSE(s.item(u"folder").fileExists());
                 EXPECT_TRUE(s.item(u"folder").folderExists());
                 EXPECT_EQ(s.item(u"folder").exists(), ExistenceType::AsFolder);
                 EXPECT_EQ(s.item(u"folder").existsExtended(), ExistenceTypeExtended::RegularFolder);
               }},
              {"OfAFileInAFolder",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_EQ(s.item(u"folder/inner").exists(), ExistenceType::AsFile);
               }},
              {"OfNothing",
               [](Store& s) {
                 s.fill(tree);
                 expectNothingAt(s.item(u"missing"));
               }},
              {"OfNothingInAMissingFolder",
               [](Store& s) {
                 s.fill(tree);
                 expectNothingAt(s.item(u"missing/inner"));
               }},
              {"OfNothingBelowAFile",
               [](Store& s) {
                 s.fill(tree);
                 expectNothingAt(s.item(u"file/inner"));
               }},
              {"OfNothingByThePrefixOfAName",
               [](Store& s) {
                 s.fill(tree);
                 expectNothingAt(s.item(u"fil"));
                 expectNothingAt(s.item(u"fold"));
                 expectNothingAt(s.item(u"folder1"));
               }},
              {"OfTheFolderItself",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_TRUE(s.folder().folderExists());
               }},
              {"OfAFolderWithASlashAfterIt",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_TRUE(s.item(u"folder/").folderExists());
                 EXPECT_TRUE(s.item(u"folder/inner").getParent().folderExists());
               }},
              {"GoesByTheCaseOfNames",
               [](Store& s) {
                 s.fill(tree);
                 EXPECT_EQ(s.item(u"FILE").fileExists(), !s.folder().getFilenameSensitivity().isCaseSensitive);
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
