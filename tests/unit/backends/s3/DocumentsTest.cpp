#include <foundation/storage/backend/s3/detail/wire/Documents.h>

#include "laws/DocumentLaws.h"

#include <foundation/storage/backend/s3/detail/wire/Encoding.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace foundation::storage::backend::s3::detail::wire {
namespace {

const std::string declaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
const std::string itsNamespace = R"( xmlns="http://s3.amazonaws.com/doc/2006-03-01/")";

std::string document(const std::string& root, const std::string& content) {
  return declaration + "<" + root + itsNamespace + ">" + content + "</" + root + ">";
}

std::string listing(const std::string& content) { return document("ListBucketResult", content); }

std::string listed(const std::string& key, const std::string& size = "1") {
  return "<Contents><Key>" + key + "</Key><LastModified>2009-10-12T17:50:30.000Z</LastModified><ETag>&quot;e" + size +
         "&quot;</ETag><Size>" + size + "</Size></Contents>";
}

TEST(DocumentsTest, ReadsErrors) {
  const auto error =
      parseError(declaration +
                 "<Error><Code>PermanentRedirect</Code><Message>use &lt;eu&gt; &amp; <![CDATA[<that>]]></Message>"
                 "<Endpoint>b.s3.eu-west-1.amazonaws.com</Endpoint><Region>eu-west-1</Region>"
                 "<RequestId>tx1</RequestId></Error>");
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, "PermanentRedirect");
  EXPECT_EQ(error->message, "use <eu> & <that>");
  EXPECT_EQ(error->requestId, "tx1");
  EXPECT_EQ(error->region, "eu-west-1");
  EXPECT_EQ(error->endpoint, "b.s3.eu-west-1.amazonaws.com");
  EXPECT_TRUE(parseError("\n \n" + declaration + "<Error><Code>InternalError</Code></Error>"))
      << "blanks keep connections alive while a store works";
}

TEST(DocumentsTest, TakesNothingElseForAnError) {
  using namespace std::string_literals;
  for (const auto& body :
       {""s, " \n"s, "busy"s, "<html><body>502</body></html>"s, "<Error><Code>NoSuchKey</Co"s, "<Error>"s,
        document("DeleteResult", "<Error><Code>AccessDenied</Code></Error>"), "<Error><Code>a\0b"s})
    EXPECT_FALSE(parseError(body)) << body;
}

TEST(DocumentsTest, ReadsPagesOfListings) {
  const auto page = parseListPage(listing(
      "<EncodingType>url</EncodingType><Name>b</Name><IsTruncated>true</IsTruncated>"
      "<NextContinuationToken>1+%2B=</NextContinuationToken>" +
      listed("a%2Fb") + listed("c", "5368709120") +
      "<CommonPrefixes><Prefix>d/e%20/</Prefix></CommonPrefixes><CommonPrefixes><Prefix>f/</Prefix></CommonPrefixes>"));
  ASSERT_EQ(page.objects.size(), 2U);
  EXPECT_EQ(page.objects[0].key, "a/b");
  EXPECT_EQ(page.objects[0].lastModified, boost::posix_time::time_from_string("2009-10-12 17:50:30"));
  EXPECT_EQ(page.objects[1].size, 5'368'709'120U);
  EXPECT_EQ(page.objects[1].eTag, "e5368709120");
  EXPECT_EQ(page.prefixes, (std::vector<std::string>{"d/e /", "f/"}));
  EXPECT_EQ(page.nextToken, "1+%2B=") << "tokens are not encoded";
  const auto last =
      parseListPage(listing("<IsTruncated>false</IsTruncated><NextContinuationToken>x"
                            "</NextContinuationToken>"));
  EXPECT_TRUE(last.objects.empty());
  EXPECT_EQ(last.nextToken, "");
}

TEST(DocumentsTest, DecodesKeysWhereTheyAreEncoded) {
  struct Case {
    std::string written, encoded, plain;
  };
  for (const auto& [written, encoded, plain] : std::vector<Case>{{"a+b", "a b", "a+b"},
                                                                 {"a%20b", "a b", "a%20b"},
                                                                 {"a%2Bb", "a+b", "a%2Bb"},
                                                                 {"%2541", "%41", "%2541"},
                                                                 {"  ", "  ", "  "},
                                                                 {"x&amp;&lt;y", "x&<y", "x&<y"},
                                                                 {"r&#x0d;", "r\r", "r\r"},
                                                                 {"&#xe9;%C3%A9", "\u00e9\u00e9", "\u00e9%C3%A9"}}) {
    const auto key = [](const std::string& content) { return parseListPage(listing(content)).objects.at(0).key; };
    EXPECT_EQ(key("<EncodingType>url</EncodingType>" + listed(written)), encoded) << written;
    EXPECT_EQ(key(listed(written)), plain) << written;
  }
}

TEST(DocumentsTest, ReadsElementsOfAnyNamespace) {
  const auto page = parseListPage(R"(<s3:ListBucketResult xmlns:s3="urn:x"><s3:Contents><s3:Key>k</s3:Key>)"
                                  "<s3:Size>2</s3:Size></s3:Contents></s3:ListBucketResult>");
  ASSERT_EQ(page.objects.size(), 1U);
  EXPECT_EQ(page.objects[0].key, "k");
  EXPECT_TRUE(page.objects[0].lastModified.is_not_a_date_time());
  EXPECT_EQ(parseListPage("<ListBucketResult>" + listed("k") + "</ListBucketResult>").objects.size(), 1U) << "none";
}

TEST(DocumentsTest, ReadsOpenUploads) {
  const auto upload = [](const std::string& key) {
    return "<Upload><Key>" + key +
           "</Key><UploadId>2~id</UploadId><Initiated>2009-10-12T17:50:30Z</Initiated></Upload>";
  };
  const auto page = parseUploadsPage(document("ListMultipartUploadsResult",
                                              "<EncodingType>url</EncodingType><NextKeyMarker>a%20b</NextKeyMarker>"
                                              "<NextUploadIdMarker>2~id</NextUploadIdMarker>"
                                              "<IsTruncated>true</IsTruncated>" +
                                                  upload("a") + upload("a%20b")));
  ASSERT_EQ(page.uploads.size(), 2U);
  EXPECT_EQ(page.uploads[1].key, "a b");
  EXPECT_EQ(page.uploads[1].uploadId, "2~id");
  EXPECT_EQ(page.uploads[1].initiated, boost::posix_time::time_from_string("2009-10-12 17:50:30"));
  EXPECT_EQ(page.nextKeyMarker, "a b");
  EXPECT_EQ(page.nextUploadIdMarker, "2~id");
  const auto last = parseUploadsPage(document(
      "ListMultipartUploadsResult", "<NextKeyMarker>a</NextKeyMarker><IsTruncated>false</IsTruncated>" + upload("a")));
  EXPECT_EQ(last.nextKeyMarker, "");
}

TEST(DocumentsTest, ReadsIdsAndETags) {
  EXPECT_EQ(parseUploadId(document("InitiateMultipartUploadResult", "<UploadId>2~J-Y</UploadId>")), "2~J-Y");
  EXPECT_EQ(parseETag(document("CopyObjectResult", "<ETag>&quot;e-1&quot;</ETag>")), "e-1");
  EXPECT_EQ(parseETag(document("CopyPartResult", "<ETag>e</ETag>")), "e");
  EXPECT_EQ(parseETag(document("CompleteMultipartUploadResult", "<ETag></ETag>")), "") << "as Ceph 16 has it";
  EXPECT_EQ(unquoted("W/\"a\""), "a");
  EXPECT_EQ(unquoted("\""), "\"");
}

TEST(DocumentsTest, TellsWhichETagsAreDigests) {
  EXPECT_EQ(md5OfETag("\"f96b697d7cb7938d525a2f31aaf161d0\""), md5("message digest"));
  EXPECT_EQ(md5OfETag("F96B697D7CB7938D525A2F31AAF161D0"), md5("message digest"));
  for (const auto* const eTag : {"", "\"f96b697d7cb7938d525a2f31aaf161d0-2\"", "f96b697d7cb7938d525a2f31aaf161d",
                                 "f96b697d7cb7938d525a2f31aaf161dg", "f96b697d7cb7938d525a2f31aaf1 1d0"})
    EXPECT_FALSE(md5OfETag(eTag)) << eTag;
}

TEST(DocumentsTest, RefusesWhatIsCutOffOrIncomplete) {
  const auto whole = listing("<IsTruncated>false</IsTruncated>" + listed("key"));
  for (std::size_t size = 0; size < whole.size(); ++size)
    EXPECT_THROW(parseListPage(whole.substr(0, size)), MalformedDocument) << size;
  const std::pair<std::string, std::function<void(const std::string&)>> cases[] = {
      {"<Error><Code>SlowDown</Code></Error>", parseETag},
      {"<Error><Code>SlowDown</Code></Error>", parseListPage},
      {"<html></html>", parseDeletionResult},
      {document("InitiateMultipartUploadResult", "<Key>k</Key>"), parseUploadId},
      {listing("<IsTruncated>true</IsTruncated>"), parseListPage},
      {listing("<Contents><Size>1</Size></Contents>"), parseListPage},
      {listing(listed("k", "-1")), parseListPage},
      {listing(listed("k", "18446744073709551616")), parseListPage},
      {listing("<CommonPrefixes/>"), parseListPage},
      {document("ListMultipartUploadsResult", "<Upload><Key>k</Key></Upload>"), parseUploadsPage},
      {document("ListMultipartUploadsResult", "<IsTruncated>true</IsTruncated>"), parseUploadsPage}};
  for (const auto& [body, parse] : cases)
    EXPECT_THROW(parse(body), MalformedDocument) << body;
}

TEST(DocumentsTest, ExpandsNoEntitiesOfADocument) {
  const auto page = parseListPage(
      "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">"
      "<!ENTITY f SYSTEM \"file:///etc/passwd\">]><ListBucketResult>" +
      listed("&b;&f;") + "</ListBucketResult>");
  EXPECT_EQ(page.objects.at(0).key, "&b;&f;");
}

TEST(DocumentsTest, WritesCompletions) {
  const auto body = makeCompletion({{1, "a"}, {10'000, "b-2"}});
  EXPECT_EQ(body, document("CompleteMultipartUpload",
                           "<Part><PartNumber>1</PartNumber><ETag>&#x22;a&#x22;</ETag></Part>"
                           "<Part><PartNumber>10000</PartNumber><ETag>&#x22;b-2&#x22;</ETag></Part>"));
}

TEST(DocumentsTest, WritesDeletions) {
  EXPECT_EQ(makeDeletion({"a&b", "<\r\n\t>", "\u00e9 +%"}),
            document("Delete",
                     "<Quiet>true</Quiet><Object><Key>a&#x26;b</Key></Object>"
                     "<Object><Key>&#x3c;&#x0d;&#x0a;&#x09;&#x3e;</Key></Object>"
                     "<Object><Key>\u00e9 +%</Key></Object>"));
}

TEST(DocumentsTest, TellsWhatXmlCannotHold) {
  for (const auto* const key : {"", "a\tb\r\n", "\u00e9", "\u20ac", "\U0001F600", "\u007f\u0085\u2028", "\ufffd"})
    EXPECT_TRUE(canBeInXml(key)) << key;
  for (const auto& key : {std::string("\0", 1), std::string("a\x01"), std::string("\x1f"), std::string("\xff"),
                          std::string("\xed\xa0\x80"), std::string("\ufffe"), std::string("\uffff")})
    EXPECT_FALSE(canBeInXml(key)) << key;
}

TEST(DocumentsTest, GiveBackEveryKey) {
  std::mt19937 engine(1);
  const std::vector<std::string> pieces{"a",     "/",    " ",      "+",      "%",      "%41",        "&",
                                        "&amp;", "<",    "]]>",    "\"",     "\r\n",   "\n",         "\t",
                                        "\x01",  "\x7f", "\u0085", "\u00e9", "\uffff", "\U0001F600", "\xff"};
  for (int i = 0; i < 1000; ++i) {
    std::string key;
    for (auto count = engine() % 6; count > 0; --count)
      key += pieces[engine() % pieces.size()];
    EXPECT_NO_THROW(laws::checkKey(key)) << key;
  }
}

TEST(DocumentsTest, ReadsWhatCouldNotBeDeleted) {
  const auto failures = parseDeletionResult(
      document("DeleteResult",
               "<Deleted><Key>gone</Key></Deleted><Error><Key> a&amp;b</Key><Code>AccessDenied</Code>"
               "<Message>no</Message></Error>"));
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].key, " a&b");
  EXPECT_EQ(failures[0].code, "AccessDenied");
  EXPECT_EQ(failures[0].message, "no");
  EXPECT_TRUE(parseDeletionResult("<DeleteResult/>").empty());
}

}  // namespace
}  // namespace foundation::storage::backend::s3::detail::wire
