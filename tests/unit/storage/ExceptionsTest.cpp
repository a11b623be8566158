#include "support/Thrown.h"
#include <foundation/core/except/IException.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>
#include <foundation/storage/provider/ChangeEventsSubscriptionException.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/testing/Together.h>

#include <boost/exception/get_error_info.hpp>
#include <boost/exception_ptr.hpp>
#include <gtest/gtest.h>

#include <array>
#include <exception>
#include <string>

namespace foundation::storage::provider {
namespace {

using core::except::IException;
using core::except::IInternalException;
using test::textThrownBy;

const StorageIRI location(u"s:///ä/b");
const std::string text =
    "foundation::storage::provider::Exception{StorageIRI=\"s:///%C3%A4/b\", "
    "ErrorCode=\"ErrorCode::ResourceNotFound\"}\"} with ExceptionContext{\"";

ExceptionContexts frames() {
  return {ExceptionContext(u"a", ExceptionContextInfo(u"gone", u"404", {{u"x", u"y"}})), ExceptionContext(u"b"),
          ExceptionContext(u"c")};
}

TEST(Exception, SaysWhereAndWhy) {
  Exception failure(ErrorCode::ResourceNotFound, location);
  EXPECT_EQ(failure.getErrorCode(), ErrorCode::ResourceNotFound);
  EXPECT_EQ(failure.getStorageIRI(), location);
  EXPECT_EQ(failure.what(), text + "\"}");
  failure.setExceptionContexts(frames());
  EXPECT_EQ(failure.what(), text + "a:b:c\"}");
  const auto& caught = failure;
  caught.popExceptionContext();
  EXPECT_EQ(failure.what(), text + "b:c\"}");
  failure = Exception(static_cast<ErrorCode>(-1), StorageIRI(u"s:/"));
  EXPECT_EQ(fl::i18n::to_string(failure.toUstring()),
            "foundation::storage::provider::Exception{StorageIRI=\"s:///\", ErrorCode=\"Unhandled "
            "ErrorCode\"}\"} with ExceptionContext{\"\"}");
  EXPECT_EQ(textThrownBy<IException>([] { throw ChangeEventsNotSupportedException(location); }),
            "foundation::storage::provider::ChangeEventsNotSupportedException{StorageIRI=\"s:///%C3%A4/b\"}");
  EXPECT_EQ(textThrownBy<std::exception>([] { throw ChangeEventsSubscriptionException(location); }),
            "foundation::storage::provider::ChangeEventsSubscriptionException{StorageIRI=\"s:///%C3%A4/b\"}");
}

template <class Failure>
void expectAStackOfContexts(Failure failure) {
  EXPECT_EQ(failure.getExceptionContextsString(), u"");
  EXPECT_FALSE(failure.topExceptionContext());
  failure.popExceptionContext();
  failure.setExceptionContexts({ExceptionContext(u"dropped")});
  failure.setExceptionContexts(frames());
  EXPECT_EQ(failure.getExceptionContextsString(), u"a:b:c");
  EXPECT_EQ(failure.getAllExceptionContexts().size(), 3u);
  const auto info = failure.topExceptionContext()->getExceptionContextInfo();
  EXPECT_EQ(info->getProviderMessage(), u"gone");
  EXPECT_EQ(info->getResponseErrorCode(), u"404");
  EXPECT_EQ(info->getAdditionalInformation().at(u"x"), u"y");
  EXPECT_EQ(info->getAdditionalInformationString(), u"x : y\n");
  const Failure copy(failure);
  failure.popExceptionContext();
  EXPECT_FALSE(failure.topExceptionContext()->getExceptionContextInfo());
  EXPECT_EQ(failure.getExceptionContextsString(), u"b:c");
  EXPECT_EQ(copy.getExceptionContextsString(), u"a:b:c");
}

TEST(Exception, HoldsAStackOfContexts) {
  expectAStackOfContexts(Exception(ErrorCode::IOError, location));
  expectAStackOfContexts(ByteStreamReadFailure(ErrorCode::IOError));
}

TEST(ByteStreamFailure, IsAStandardFailureOfItsOperation) {
  const auto expect = []<class Failure>(const Failure& unnamed, const std::string& name) {
    EXPECT_EQ(unnamed.getErrorCode(), ErrorCode::NoSpaceLeft);
    EXPECT_EQ(unnamed.what(), name + ": " + std::make_error_code(std::io_errc::stream).message());
    const Failure named("ä", ErrorCode::IOError);
    EXPECT_EQ(named.code(), std::io_errc::stream);
    const auto raise = [&] { throw named; };
    for (const auto& what : {textThrownBy<std::ios_base::failure>(raise), textThrownBy<ByteStreamFailure>(raise),
                             textThrownBy<IInternalException>(raise)})
      EXPECT_EQ(what.rfind("ä: ", 0), 0u) << what;
    EXPECT_EQ(fl::i18n::to_string(named.toUstring()), named.what());
  };
  expect(ByteStreamOpenFailure(ErrorCode::NoSpaceLeft), "ByteStreamOpenFailure");
  expect(ByteStreamReadFailure(ErrorCode::NoSpaceLeft), "ByteStreamReadFailure");
  expect(ByteStreamWriteFailure(ErrorCode::NoSpaceLeft), "ByteStreamWriteFailure");
  expect(ByteStreamSeekFailure(ErrorCode::NoSpaceLeft), "ByteStreamSeekFailure");
  expect(ByteStreamCloseFailure(ErrorCode::NoSpaceLeft), "ByteStreamCloseFailure");
}

TEST(Exceptions, AreAssignedWithTheirText) {
  const auto expect = [](auto failure, const auto& other) {
    const std::string before = failure.what();  // which is kept from now on
    const auto& itself = failure;
    failure = itself;
    EXPECT_EQ(failure.what(), before);
    failure = other;
    EXPECT_EQ(failure.getStorageIRI(), other.getStorageIRI());
    EXPECT_STREQ(failure.what(), other.what());
    EXPECT_NE(failure.what(), before);
  };
  const StorageIRI elsewhere(u"t:///");
  expect(Exception(ErrorCode::IOError, location), Exception(ErrorCode::FileTooLarge, elsewhere));
  expect(ChangeEventsNotSupportedException(location), ChangeEventsNotSupportedException(elsewhere));
  expect(ChangeEventsSubscriptionException(location), ChangeEventsSubscriptionException(elsewhere));
}

/// Throws `original` in one thread and hands what boost::current_exception() makes of it to eight more,
/// which change what they get.
template <class Failure>
void expectClonesOfTheirOwn(Failure original) {
  if constexpr (requires { original.setExceptionContexts({}); })
    original.setExceptionContexts(frames());
  boost::exception_ptr pointer;
  testing::together(1, [&](std::size_t) {
    try {
      throw original;
    } catch (...) {
      pointer = boost::current_exception();
    }
  });
  std::array<std::string, 8> seen;
  testing::together(8, [&](std::size_t number) {
    try {
      boost::rethrow_exception(pointer);
    } catch (Failure& clone) {
      seen[number] = clone.what();
      if constexpr (requires { clone.setExceptionContexts({}); }) {
        clone.popExceptionContext();
        seen[number] += fl::i18n::to_string(clone.getExceptionContextsString());
        clone.setExceptionContexts({});
      }
      if constexpr (std::is_base_of_v<boost::exception, Failure>)
        clone << StorageIRIInfo(StorageIRI(u"t:///"));
    }
  });
  const bool hasContexts = requires { original.popExceptionContext(); };
  for (const auto& each : seen)
    EXPECT_EQ(each, original.what() + std::string(hasContexts ? "b:c" : ""));
  if constexpr (std::is_base_of_v<boost::exception, Failure>) {
    EXPECT_EQ(*boost::get_error_info<StorageIRIInfo>(original), location);
  }
}

TEST(Exceptions, CrossThreadsAsClones) {
  expectClonesOfTheirOwn(Exception(ErrorCode::PermissionDenied, location));
  expectClonesOfTheirOwn(ChangeEventsNotSupportedException(location));
  expectClonesOfTheirOwn(ChangeEventsSubscriptionException(location));
  expectClonesOfTheirOwn(ByteStreamOpenFailure("m", ErrorCode::FileTooLarge));
  expectClonesOfTheirOwn(ByteStreamReadFailure("m", ErrorCode::FileTooLarge));
  expectClonesOfTheirOwn(ByteStreamWriteFailure("m", ErrorCode::FileTooLarge));
  expectClonesOfTheirOwn(ByteStreamSeekFailure("m", ErrorCode::FileTooLarge));
  expectClonesOfTheirOwn(ByteStreamCloseFailure("m", ErrorCode::FileTooLarge));
}

TEST(Exception, IsReadByManyThreadsThroughOnePointer) {
  for (int round = 0; round < 50; ++round) {
    const auto pointer = std::make_exception_ptr(Exception(ErrorCode::ResourceNotFound, location));
    std::array<const char*, 8> seen{};
    testing::together(8, [&](std::size_t number) {
      try {
        std::rethrow_exception(pointer);
      } catch (const IException& failure) {
        seen[number] = failure.what();
      }
    });
    for (const auto* each : seen)
      ASSERT_EQ(each, text + "\"}");
  }
}

}  // namespace
}  // namespace foundation::storage::provider
