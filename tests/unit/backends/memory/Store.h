#pragma once

#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/StorageItem.h>

#include <boost/property_tree/ptree.hpp>
#include <gtest/gtest.h>

#include <string>

namespace foundation::storage::backend::memory {

using namespace provider;

/// Tests in a store of their own.
class StoreTest : public ::testing::Test {
 protected:
  StorageItem child(const std::u16string& name) const { return {root, name}; }

  void limitTo(std::uint64_t capacity) const {
    boost::property_tree::ptree options;
    options.put("capacity", capacity);
    root.configure(options);
  }

  std::uint64_t occupied() const { return root.getProviderStorageInfo().getSpaceOccupied(); }

  void put(const std::u16string& name, const std::string& bytes) const {
    const auto stream = child(name).openStream({});
    ASSERT_EQ(stream->write(bytes.data(), static_cast<std::int64_t>(bytes.size())),
              static_cast<std::int64_t>(bytes.size()));
    stream->close();
  }

  std::string content(const std::u16string& name) const {
    std::string bytes(child(name).getFileAttributes().getSize(), '\0');
    const auto got = child(name).openReadOnlyStream()->read(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    return bytes.substr(0, got < 0 ? 0 : static_cast<std::size_t>(got));
  }

  const StorageIRI location{u"memory://test/"};
  const StorageItem root{MemoryProviderFactory().buildProvider(location), location};
};

/// The code of the `Exception` or stream failure that `action` throws, which has to tell of `expected`.
template <class Action>
ErrorCode codeThrownAt(const StorageItem& expected, const Action& action) {
  const auto check = [&](const auto& failure) {
    const auto context = failure.topExceptionContext().value();
    EXPECT_EQ(context.getExceptionContextKey(), u"memory");
    EXPECT_EQ(context.getExceptionContextInfo()->getAdditionalInformation().at(u"location"),
              expected.getLocation().toString());
    return failure.getErrorCode();
  };
  try {
    action();
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getStorageIRI(), expected.getLocation());
    return check(failure);
  } catch (const ByteStreamFailure& failure) {
    return check(failure);
  }
  ADD_FAILURE() << "nothing was thrown";
  return ErrorCode::Unknown;
}

}  // namespace foundation::storage::backend::memory
