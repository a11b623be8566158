#include <foundation/storage/testing/detail/Check.h>

#include <foundation/storage/provider/Exception.h>

namespace foundation::storage::testing::detail {

using provider::CaseModifier;
using provider::ExtendedFeature;
using provider::StorageIRI;

namespace {

/// A location that no store but one of that kind serves.
StorageItem foreign(Store& s) { return {s.folder(), StorageIRI(u"no-such-scheme:///a")}; }

}  // namespace

CheckGroup locationChecks() {
  return {"Location",
          {},
          {
              {"CanonicalStandsForAllTexts",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}, {u"b/", ""}});
                 const auto canonical = s.item(u"a/x").getCanonicalLocation();
                 for (const auto* path : {u"a/./x", u"b/../a/x", u"a//x"})
                   EXPECT_EQ(s.item(path).getCanonicalLocation(), canonical);
               }},
              {"CanonicalIsItsOwnCanonical",
               [](Store& s) {
                 s.fill({{u"a", "1"}});
                 const StorageItem canonical(s.folder(), s.item(u"a").getCanonicalLocation());
                 EXPECT_EQ(canonical.getCanonicalLocation(), canonical.getLocation());
                 EXPECT_EQ(contentOf(canonical), "1");
               }},
              {"DotsAreUnderstood",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}, {u"b", "2"}});
                 EXPECT_EQ(s.content(u"a/../b"), "2");
                 EXPECT_EQ(s.content(u"./a/./x"), "1");
               }},
              {"TheComparatorGoesByItsModifier",
               [](Store& s) {
                 const auto same = s.folder().getPathComparator();
                 EXPECT_TRUE(same(u"name", u"name", CaseModifier::None));
                 EXPECT_FALSE(same(u"name", u"nam", CaseModifier::None));
                 EXPECT_FALSE(same(u"name", u"Name", CaseModifier::Sensitive));
                 EXPECT_TRUE(same(u"name", u"Name", CaseModifier::InSensitive));
                 EXPECT_TRUE(same(u"", u"", CaseModifier::None));
               }},
              {"FeaturesAreThoseDeclared",
               [](Store& s) {
                 EXPECT_EQ(s.folder().hasFeature(ExtendedFeature::RecursiveFolderRemoval),
                           s.can(Capability::RecursiveRemoval));
                 EXPECT_EQ(s.folder().hasFeature(ExtendedFeature::AtomicFileCopy), s.can(Capability::AtomicCopy));
               }},
              {"OfAnotherSchemeIsRefused",
               [](Store& s) {
                 const auto item = foreign(s);
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, item, [&] { item.exists(); }));
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, item, [&] { item.getFileAttributes(); }));
                 EXPECT_TRUE(refusesStream(ErrorCode::InvalidLocation, item, [&] { item.openReadOnlyStream(); }));
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, item, [&] { item.listAll({})->hasNext(); }));
               }},
              {"OfAnotherSchemeIsRefusedForWriting",
               [](Store& s) {
                 const auto item = foreign(s);
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, item, [&] { item.createFile(); }));
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, item, [&] { item.removeFile(); }));
                 s.fill({{u"a", "1"}});
                 EXPECT_TRUE(refuses(ErrorCode::InvalidLocation, item,
                                     [&] { s.item(u"a").moveFile(item.getLocation(), ReplacementPolicy::Overwrite); }));
                 EXPECT_EQ(s.content(u"a"), "1");
               },
               {Capability::Write}},
              {"FailuresSayWhy",
               [](Store& s) {
                 try {
                   s.item(u"missing").getFileAttributes();
                   ADD_FAILURE() << "nothing was thrown";
                 } catch (const provider::Exception& failure) {
                   EXPECT_TRUE(failure.topExceptionContext().has_value()) << "a context tells what the store said";
                   EXPECT_NE(std::string(failure.what()).find("ErrorCode::ResourceNotFound"), std::string::npos);
                 }
               }},
              {"TheParentOfAnItemIsItsFolder",
               [](Store& s) {
                 s.fill({{u"a/x", "1"}});
                 EXPECT_EQ(namesIn(s.item(u"a/x").getParent().listAll({})), Names{u"x"});
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
