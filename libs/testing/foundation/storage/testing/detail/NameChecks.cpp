#include <foundation/storage/testing/detail/Check.h>

namespace foundation::storage::testing::detail {
namespace {

/// Whether a name goes through every operation and comes out unchanged, as a file's and as a folder's.
void expectRoundTrip(Store& s, const std::u16string& name) {
  const auto file = s.item(name);
  EXPECT_EQ(file.getName(), name);
  put(file, "content");
  EXPECT_EQ(s.names(), Names{name});
  EXPECT_EQ(contentOf(StorageItem(file, provider::StorageIRI(file.getLocation().toString()))), "content")
      << "by the text of the location";
  EXPECT_EQ(contentOf(StorageItem(file, provider::StorageIRI(file.getLocation().toAsciiString()))), "content")
      << "by the ASCII text of the location";
  file.moveFile(s.item(u"other").getLocation(), ReplacementPolicy::NoClobber);
  EXPECT_EQ(s.names(), Names{u"other"});
  s.item(u"other").copyFile(file, ReplacementPolicy::NoClobber);
  EXPECT_EQ(contentOf(file), "content");
  file.removeFile();
  file.createFolder();
  put(StorageItem(file, u"inner"), "x");
  EXPECT_EQ(contentOf(StorageItem(file, u"inner")), "x");
  EXPECT_EQ(namesIn(file.listAll({})), Names{u"inner"});
}

}  // namespace

CheckGroup nameChecks() {
  using S = Store;
  return {"Name",
          {Capability::Write, Capability::AnyName},
          {
              {"WithAPercentSign", [](S& s) { expectRoundTrip(s, u"100%"); }},
              {"ThatLooksEscaped", [](S& s) { expectRoundTrip(s, u"%41%2F%00"); }},
              {"WithAHash", [](S& s) { expectRoundTrip(s, u"#1#"); }},
              {"WithAQuestionMark", [](S& s) { expectRoundTrip(s, u"what?x=1"); }},
              {"WithBlanks", [](S& s) { expectRoundTrip(s, u" a  b "); }},
              {"WithAColon", [](S& s) { expectRoundTrip(s, u"a:b"); }},
              {"ThatLooksLikeADrive", [](S& s) { expectRoundTrip(s, u"C:"); }},
              {"WithABackslash", [](S& s) { expectRoundTrip(s, u"a\\b"); }},
              {"WithAnExclamationMark", [](S& s) { expectRoundTrip(s, u"a!b"); }},
              {"WithBrackets", [](S& s) { expectRoundTrip(s, u"[x]{y}<z>|"); }},
              {"WithQuotationMarks", [](S& s) { expectRoundTrip(s, u"\"a'b`"); }},
              {"WithPunctuation", [](S& s) { expectRoundTrip(s, u"~$&+,;=@^_-"); }},
              {"WithAWildcard", [](S& s) { expectRoundTrip(s, u"*"); }},
              {"OfThreeDots", [](S& s) { expectRoundTrip(s, u"..."); }},
              {"WithDotsAtItsEnds", [](S& s) { expectRoundTrip(s, u".a."); }},
              {"WithALineBreak", [](S& s) { expectRoundTrip(s, u"a\nb\r\tc"); }},
              {"WithControlCharacters", [](S& s) { expectRoundTrip(s, u"\x01\x1F\x7F\u0085"); }},
              {"BeyondAscii", [](S& s) { expectRoundTrip(s, u"Grüße-日本-\u202E"); }},
              {"BeyondTheFirstPlane", [](S& s) { expectRoundTrip(s, u"\U0001F600\U00020000"); }},
              {"OfBytesThatAreNoUnicode", [](S& s) { expectRoundTrip(s, u"a\xDCFF\xDC80z"); }},
              {"Of255Bytes", [](S& s) { expectRoundTrip(s, std::u16string(255, u'n')); }},
              {"ComposedIsNotDecomposed",
               [](S& s) {
                 put(s.item(u"\u00E9"), "1");
                 put(s.item(u"e\u0301"), "2");
                 EXPECT_EQ(s.content(u"\u00E9"), "1");
                 EXPECT_EQ(s.content(u"e\u0301"), "2");
                 EXPECT_EQ(s.names().size(), 2u);
               }},
              {"DiffersByWhatTheStoreSaysOfCase",
               [](S& s) {
                 put(s.item(u"name"), "1");
                 put(s.item(u"Name"), "2");
                 const bool isSensitive = s.folder().getFilenameSensitivity().isCaseSensitive;
                 EXPECT_EQ(s.names().size(), isSensitive ? 2u : 1u);
                 EXPECT_EQ(s.content(u"name"), isSensitive ? "1" : "2");
               }},
          }};
}

}  // namespace foundation::storage::testing::detail
