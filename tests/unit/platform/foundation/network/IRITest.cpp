#include <fl/i18n/Convert.h>
#include <foundation/network/DotSegments.h>
#include <foundation/network/IRI.h>
#include <foundation/network/IRISyntaxException.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace foundation::network {
namespace {

using fl::i18n::to_string;
using Component = IRIArgs::Component;
constexpr auto display = IRIEncoding::Display;

/// A lone surrogate cannot be written in a literal.
std::u16string unit(unsigned value) { return {static_cast<char16_t>(value)}; }

/// Scheme, user information, host, port, path, query and fragment; '~' stands for an absent one.
std::u16string components(const IRI& iri) {
  const auto shown = [](bool has, const std::u16string& text) { return (has ? text : u"~") + u"|"; };
  return shown(iri.isAbsolute(), iri.getScheme()) + shown(iri.hasUserInfo(), iri.getUserInfo(display)) +
         shown(iri.hasHost(), iri.getHost(display)) + shown(iri.hasPort(), iri.getPort()) +
         shown(true, iri.getPath(display)) + shown(iri.hasQuery(), iri.getQuery(display)) +
         shown(iri.hasFragment(), iri.getFragment(display));
}

TEST(IRI, FindsComponents) {
  const struct {
    std::u16string text, components;
    bool isOpaque = false;
  } cases[] = {
      {u"http://ann:pw@example.org:8080/a/b%20c?x=1#top", u"http|ann:pw|example.org|8080|/a/b%20c|x=1|top|"},
      {u"s://h", u"s|~|h|~||~|~|"},
      {u"s://", u"s|~||~||~|~|"},
      {u"s:///a", u"s|~||~|/a|~|~|"},
      {u"s:/a//b@c:1", u"s|~|~|~|/a//b@c:1|~|~|"},
      {u"s:", u"s|~|~|~||~|~|", true},
      {u"s:?q", u"s|~|~|~||q|~|", true},
      {u"s:a:b/c?", u"s|~|~|~|a:b/c||~|", true},
      {u"s://@h:/x#", u"s||h||/x|~||"},
      {u"s+1.x-y://u%40:p@h//b/./../c", u"s+1.x-y|u%40:p|h|~|//b/./../c|~|~|"},
      {u"s://h?a?b/c:@#d?/e", u"s|~|h|~||a?b/c:@|d?/e|"},
      {u"s://h#//u@y:1/z", u"s|~|h|~||~|//u@y:1/z|"},
      {u"s://u@[2001:DB8::192.0.2.1]:80?q", u"s|u|[2001:DB8::192.0.2.1]|80||q|~|"},
      {u"s://[v1F.a:b~]/", u"s|~|[v1F.a:b~]|~|/|~|~|"},
      {u"s://1.2.3.4.5:/", u"s|~|1.2.3.4.5||/|~|~|"},
      {u"s://hö/ä€😀?\uE000ü#ß", u"s|~|hö|~|/ä€😀|\uE000ü|ß|"},
      {u"", u"~|~|~|~||~|~|"},
      {u"//h/p", u"~|~|h|~|/p|~|~|"},
      {u"a/b:c", u"~|~|~|~|a/b:c|~|~|"},
      {u"?q#", u"~|~|~|~||q||"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.text));
    const IRI iri(row.text);
    EXPECT_EQ(components(iri), row.components);
    EXPECT_EQ(iri.isOpaque(), row.isOpaque);
    EXPECT_EQ(iri.toString(), row.text);
    EXPECT_EQ(IRI(iri.toArgs()), iri);
  }
  EXPECT_EQ(IRI(u"s://u@h:1/a?q").getAuthority(), u"u@h:1");
  EXPECT_EQ(IRI(u"zip:file:///a!/b#f").getSchemeSpecificPart(), u"file:///a!/b#f");
}

TEST(IRI, RefusesWithTheOffset) {
  struct Case {
    std::u16string text;
    std::size_t offset;
  };
  // clang-format off
  std::vector<Case> cases = {
      {u":a", 0},                 {u"1a:b", 0},               {u"a_b:c", 3},              {u"ä:c", 1},
      {u"a b", 1},                {u"s:/a%2", 4},             {u"s:/%zz", 3},             {u"s:/x%", 4},
      {u"s://%4/", 4},            {u"s:/a#b#c", 6},           {u"s://h[x", 5},            {u"s://[::1", 4},
      {u"s://[::1]x", 9},         {u"s://[1:2]", 4},          {u"s://[v.a]", 4},          {u"s://[v1.]", 4},
      {u"s://[::g]", 4},          {u"s://[::1%25e]", 4},      {u"s://[]", 4},             {u"s://h:8a", 7},
      {u"s://h:1:2", 7},          {u"s://a@b@c/", 5},         {u"s://[::1]:x", 10},       {u"s:/[", 3},
      {u"s:/?]", 4},              {u"s:/\u0080", 3},          {u"s:/\uFDD0", 3},          {u"s:/\uE000", 3},
      {u"s:/?\uE000#\uE000", 6},  {u"s:/😀\uFFFF", 5},         {u"s:/\u202E", 3},          {u"s:/\U0001FFFE", 3},
      {u"s:/\U000E0001", 3},      {u"s:/\U000F0000", 3},
      {u"s:/a" + unit(0xD800), 4}, {u"s:/" + unit(0xDC80) + u"a", 3},
      {u"s:/" + unit(0xDE00) + unit(0xD83D), 3},
  };
  // clang-format on
  for (const char16_t c : std::u16string(u"\0\t\n \"<>\\^`{|}\x7F", 15))
    cases.push_back({u"s:/a" + std::u16string{c}, 4});
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.text));
    try {
      const IRI iri(row.text);
      ADD_FAILURE() << "was accepted";
    } catch (const IRISyntaxException& failure) {
      EXPECT_EQ(failure.getOffset(), row.offset);
      EXPECT_EQ(failure.getText(), row.text);
      EXPECT_NE(std::string(failure.what()).find(failure.getReason()), std::string::npos);
      EXPECT_NE(std::string(failure.what()).find("offset " + std::to_string(row.offset)), std::string::npos);
    }
  }
}

// The ASCII form is the mapping of RFC 3987, section 3.1, for all components.
TEST(IRI, GivesTextsInThreeEncodings) {
  const IRI iri(u"s://ü@hö.x:1/ä%20%c3%a4€/😀?q=%26ü#ß%23");
  EXPECT_EQ(iri.toAsciiString(), u"s://%C3%BC@h%C3%B6.x:1/%C3%A4%20%c3%a4%E2%82%AC/%F0%9F%98%80?q=%26%C3%BC#%C3%9F%23");
  EXPECT_EQ(iri.getPath(), u"/ä ä€/😀");
  EXPECT_EQ(iri.getPath(display), u"/ä%20%c3%a4€/😀");
  EXPECT_EQ(iri.getPath(IRIEncoding::Ascii), u"/%C3%A4%20%c3%a4%E2%82%AC/%F0%9F%98%80");
  EXPECT_EQ(iri.getUserInfo(), u"ü");
  EXPECT_EQ(iri.getHost(), u"hö.x");
  EXPECT_EQ(iri.getHost(IRIEncoding::Ascii), u"h%C3%B6.x");
  EXPECT_EQ(iri.getQuery(), u"q=&ü");
  EXPECT_EQ(iri.getFragment(), u"ß#");
  EXPECT_FALSE(iri.isAscii());
  EXPECT_EQ(IRI(iri.toAsciiString()).getPath(), iri.getPath());
  EXPECT_TRUE(IRI(iri.toAsciiString()).isAscii());
}

TEST(IRI, DecodesOnceAndKeepsBytesThatAreNoUtf8) {
  const struct {
    std::u16string written, plain;
  } cases[] = {
      {u"%FF%fe", unit(0xDCFF) + unit(0xDCFE)},
      {u"%C3%A4%c3%a4ä", u"äää"},
      {u"a%C3b%A4", u"a" + unit(0xDCC3) + u"b" + unit(0xDCA4)},
      {u"%C3ä", unit(0xDCC3) + u"ä"},
      {u"%2525%00+", std::u16string(u"%25\0+", 5)},
      {u"%F0%9F%98%80", u"😀"},
      {u"%E2%82x", unit(0xDCE2) + unit(0xDC82) + u"x"},
      {u"%ED%A0%80", unit(0xDCED) + unit(0xDCA0) + unit(0xDC80)},
      {u"%C0%AF", unit(0xDCC0) + unit(0xDCAF)},
      {u"plain", u"plain"},
      {u"", u""},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.written));
    EXPECT_EQ(IRI::decode(row.written), row.plain);
    const IRI iri(u"s:///" + row.written + u"?x%20");
    EXPECT_EQ(iri.getPath(), u"/" + row.plain);
    EXPECT_EQ(iri.pathHasEscapes(), row.written.find(u'%') != std::u16string::npos);
  }
}

TEST(IRIArgs, EscapesPathsSoThatTheyComeBack) {
  struct Case {
    std::u16string plain, written;
    bool comesBack = true;
  };
  const Case cases[] = {
      {u"/100%/%41", u"/100%25/%2541"},
      {u"/a#b?c d", u"/a%23b%3Fc%20d"},
      {u"/ä€😀", u"/ä€😀"},
      {u"/-._~!$&'()*+,;=:@", u"/-._~!$&'()*+,;=:@"},
      {u"/[\"<>\\^`{|}]", u"/%5B%22%3C%3E%5C%5E%60%7B%7C%7D%5D"},
      {std::u16string(u"/\0\x1F\x7F\u0085", 5), u"/%00%1F%7F%C2%85"},
      {u"/\u202E\uE000\uFFFE\U000F0000", u"/%E2%80%AE%EE%80%80%EF%BF%BE%F3%B0%80%80"},
      {u"/" + unit(0xDC80) + unit(0xDCFF) + u"x", u"/%80%FFx"},
      {u"/" + unit(0xD800), u"/%ED%A0%80", false},
      {u"/" + unit(0xDCC3) + unit(0xDCA4), u"/%C3%A4", false},
      {u"", u""},
  };
  for (const auto& row : cases)
    for (const auto* base : {u"s://u@h:1/old%20?q=ä#f", u"s:///x", u"s:/ä", u"s:x#f", u"//h"}) {
      SCOPED_TRACE(to_string(row.plain) + " on " + to_string(base));
      const IRI moved = IRI(base).withPath(row.plain);
      const IRI reparsed(moved.text());
      EXPECT_EQ(moved, IRI(IRI(base).toArgs().setPath(row.plain)));
      EXPECT_EQ(moved.getPath(display), row.written);
      EXPECT_EQ(moved.getPath() == row.plain, row.comesBack);
      EXPECT_EQ(moved.getAuthority(), IRI(base).getAuthority());
      EXPECT_EQ(components(moved), components(reparsed));
      EXPECT_EQ(moved.isAscii(), reparsed.isAscii());
      EXPECT_EQ(moved.pathHasEscapes(), reparsed.pathHasEscapes());
    }
}

TEST(IRIArgs, KeepsAPathAPath) {
  const struct {
    Component scheme, host;
    std::u16string path, text;
  } cases[] = {
      {u"s", {}, u"//a", u"s:/.//a"}, {{}, {}, u"//a", u"/.//a"},      {{}, {}, u"a:b/c", u"./a:b/c"},
      {u"s", {}, u"a:b", u"s:a:b"},   {{}, {}, u"a/b:c", u"a/b:c"},    {u"s", u"h", u"a", u"s://h/a"},
      {u"s", u"", u"a", u"s:///a"},   {u"s", u"", u"//a", u"s:////a"}, {{}, u"", u"a:b", u"///a:b"},
      {u"s", u"h", u"", u"s://h"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(to_string(row.text));
    const IRI iri(IRIArgs().setScheme(row.scheme).setHost(row.host).setPath(row.path));
    EXPECT_EQ(iri.text(), row.text);
    EXPECT_EQ(iri.hasAuthority(), row.host.has_value());
  }
}

TEST(IRIArgs, KeepsComponentsApart) {
  const auto args = IRIArgs()
                        .setScheme(u"s")
                        .setUserInfo(u"a@b:c/%")
                        .setHost(u"h:1/ö@")
                        .setPort(u"80")
                        .setPath(u"/p?q#f")
                        .setQuery(u"q#?/\uE000")
                        .setFragment(u"f#\uE000");
  const IRI iri(args);
  EXPECT_EQ(iri.text(), u"s://a%40b:c%2F%25@h%3A1%2Fö%40:80/p%3Fq%23f?q%23?/\uE000#f%23%EE%80%80");
  EXPECT_EQ(iri.getUserInfo(), u"a@b:c/%");
  EXPECT_EQ(iri.getHost(), u"h:1/ö@");
  EXPECT_EQ(IRI(iri.toArgs().setUserInfo({}).setPort({}).setQuery({}).setFragment({})).text(),
            u"s://h%3A1%2Fö%40/p%3Fq%23f");
  EXPECT_EQ(IRI(IRIArgs().setHost(u"[::1]")).text(), u"//[::1]");
  EXPECT_EQ(IRI(IRIArgs().setHost(u"[nope]")).text(), u"//%5Bnope%5D");
  EXPECT_EQ(IRI(IRIArgs().setHost(u"[::1]/[x]")).getHost(), u"[::1]/[x]");

  const IRIArgs bad[] = {
      IRIArgs().setScheme(u""),
      IRIArgs().setScheme(u"1"),
      IRIArgs().setScheme(u"a/b").setPath(u"c"),
      IRIArgs().setScheme(u"a:b"),
      IRIArgs().setHost(u"h").setPort(u"80/x"),
      IRIArgs().setHost(u"h").setPort(u"80@evil"),
  };
  for (const auto& each : bad)
    EXPECT_THROW(IRI{each}, IRISyntaxException);
}

// RFC 3986, sections 5.4.1 (normal examples) and 5.4.2 (abnormal examples).
TEST(IRI, ResolvesTheReferencesOfRfc3986) {
  // The reference and what follows "http://a" in the target.
  // clang-format off
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"g", u"/b/c/g"},                    {u"./g", u"/b/c/g"},                  {u"g/", u"/b/c/g/"},
      {u"/g", u"/g"},                       {u"?y", u"/b/c/d;p?y"},               {u"g?y", u"/b/c/g?y"},
      {u"#s", u"/b/c/d;p?q#s"},             {u"g#s", u"/b/c/g#s"},                {u"g?y#s", u"/b/c/g?y#s"},
      {u";x", u"/b/c/;x"},                  {u"g;x", u"/b/c/g;x"},                {u"g;x?y#s", u"/b/c/g;x?y#s"},
      {u"", u"/b/c/d;p?q"},                 {u".", u"/b/c/"},                     {u"./", u"/b/c/"},
      {u"..", u"/b/"},                      {u"../", u"/b/"},                     {u"../g", u"/b/g"},
      {u"../..", u"/"},                     {u"../../", u"/"},                    {u"../../g", u"/g"},
      {u"../../../g", u"/g"},               {u"../../../../g", u"/g"},            {u"/./g", u"/g"},
      {u"/../g", u"/g"},                    {u"g.", u"/b/c/g."},                  {u".g", u"/b/c/.g"},
      {u"g..", u"/b/c/g.."},                {u"..g", u"/b/c/..g"},                {u"./../g", u"/b/g"},
      {u"./g/.", u"/b/c/g/"},               {u"g/./h", u"/b/c/g/h"},              {u"g/../h", u"/b/c/h"},
      {u"g;x=1/./y", u"/b/c/g;x=1/y"},      {u"g;x=1/../y", u"/b/c/y"},           {u"g?y/./x", u"/b/c/g?y/./x"},
      {u"g?y/../x", u"/b/c/g?y/../x"},      {u"g#s/./x", u"/b/c/g#s/./x"},        {u"g#s/../x", u"/b/c/g#s/../x"},
  };
  // clang-format on
  const IRI base(u"http://a/b/c/d;p?q");
  for (const auto& [reference, target] : cases)
    EXPECT_EQ(base.resolve(IRI(reference)).text(), u"http://a" + std::u16string(target)) << to_string(reference);
  for (const auto* absolute : {u"g:h", u"http:g"})
    EXPECT_EQ(base.resolve(IRI(absolute)).text(), absolute);
  EXPECT_EQ(base.resolve(IRI(u"//g")).text(), u"http://g");

  EXPECT_EQ(IRI(u"s://u@h:1").resolve(IRI(u"x")).text(), u"s://u@h:1/x");
  EXPECT_EQ(IRI(u"s:/a#f").resolve(IRI(u"/.//b")).text(), u"s:/.//b");
  EXPECT_EQ(IRI(u"s:a/b").resolve(IRI(u"c:d/..")).text(), u"c:/");
  EXPECT_EQ(IRI(u"s:a/b").resolve(IRI(u"./c:d")).text(), u"s:a/c:d");
}

TEST(IRI, RemovesDotSegments) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"/a/b/c/./../../g", u"/a/g"},
      {u"mid/content=5/../6", u"mid/6"},
      {u"/..", u"/"},
      {u"/.", u"/"},
      {u"/a/..", u"/"},
      {u"/a/.", u"/a/"},
      {u"/a/../../b", u"/b"},
      {u"//a/..", u"//"},
      {u"/a//../b", u"/a/b"},
      {u"/.../..b/.c", u"/.../..b/.c"},
      {u"/a/b/", u"/a/b/"},
      {u"/./a/", u"/a/"},
      {u"/%2e%2E/a", u"/%2e%2E/a"},
      {u"../a", u"a"},
      {u"./a", u"a"},
      {u"..", u""},
      {u"a/../b", u"/b"},
      {u"", u""},
      {u"//", u"//"},
  };
  for (const auto& [path, clean] : cases)
    EXPECT_EQ(removeDotSegments(path), clean) << to_string(path);
}

TEST(IRI, MakesReferences) {
  const struct {
    const char16_t *target, *base, *reference;
  } cases[] = {
      {u"s://h/a/b/d", u"s://h/a/b/c", u"d"},
      {u"s://h/a/b/", u"s://h/a/b/", u"./"},
      {u"s://h/a/b", u"s://h/a/b", u"b"},
      {u"s://h/x", u"s://h/a/b", u"../x"},
      {u"s://h/a", u"s://h/a/b/c/", u"../../../a"},
      {u"s://h/abc/d", u"s://h/ab/c", u"../abc/d"},
      {u"s://h/a:b", u"s://h/x", u"./a:b"},
      {u"s://h//x", u"s://h/", u".//x"},
      {u"s://h/a?q#f", u"s://h/b?z#g", u"a?q#f"},
      {u"s://h/a", u"s://h/a?q", u"a"},
      {u"s://h/b/./d", u"s://h/a/../b/c", u"d"},
      {u"s:/a/c", u"s:/a/b", u"c"},
      {u"s://h/a", u"s://h", u"a"},
      {u"s://h/a", u"t://h/a", u"s://h/a"},
      {u"s://h/a", u"s://g/a", u"s://h/a"},
      {u"s://h/a", u"s:/a", u"s://h/a"},
      {u"s:a/b", u"s:/a", u"s:a/b"},
      {u"s://h:1/a", u"s://h/a", u"s://h:1/a"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(IRI(row.target).makeRelativeTo(IRI(row.base)).text(), row.reference)
        << to_string(row.target) << " seen from " << to_string(row.base);
}

TEST(IRI, ReferencesLeadBackToTheirTarget) {
  const char16_t* const paths[] = {u"/",    u"/a",      u"/a/",     u"/a/b", u"/a//b",    u"//a",  u"//a/b//",
                                   u"/a:b", u"/a/../c", u"/a/b/..", u"/./",  u"/b/%2e/x", u"/ä b", u"/a/b/c/d"};
  for (const Component& host : {Component(u"h"), Component(u""), Component()})
    for (const auto* from : paths)
      for (const auto* to : paths) {
        const IRI base(IRIArgs().setScheme(u"s").setHost(host).setPath(from).setQuery(u"z"));
        const IRI target(IRIArgs().setScheme(u"s").setHost(host).setPath(to));
        const IRI reference = target.makeRelativeTo(base);
        EXPECT_FALSE(reference.isAbsolute());
        EXPECT_EQ(base.resolve(reference).text(), base.resolve(target).text())
            << to_string(base.text()) << " + " << to_string(reference.text());
      }
}

}  // namespace
}  // namespace foundation::network
