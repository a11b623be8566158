#pragma once

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/s3/S3ProviderFactory.h>
#include <foundation/storage/testing/Conformance.h>

#include <boost/property_tree/ptree.hpp>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

/// Object stores over the S3 protocol.
namespace foundation::storage::testing {

/// An empty folder in a bucket, with a provider of its own.
inline std::unique_ptr<const provider::StorageItem> makeObjectFolder(const boost::property_tree::ptree& options,
                                                                     const std::string& bucket) {
  const auto name = boost::uuids::to_string(boost::uuids::random_generator()());
  const provider::StorageIRI location(fl::i18n::to_ustring("s3://" + bucket + "/" + name));
  backend::s3::S3ProviderFactory factory;
  factory.configure(options);
  auto folder = std::make_unique<const provider::StorageItem>(factory.buildProvider(location), location);
  folder->createFolder();
  return folder;
}

/// The back end, and in what the protocol differs from what the checks would have.
inline BackEnd objectStore(const std::string& name, std::function<Place()> makeEmptyFolder) {
  const std::string verbatim = "a key is taken as it is, with all dots and empty segments";
  const std::string blind = "a removal does not tell whether there was anything";
  return {.name = name,
          .makeEmptyFolder = std::move(makeEmptyFolder),
          .capabilities = backend::s3::S3ProviderFactory::capabilities(),
          .deviations = {{"Location.CanonicalStandsForAllTexts", verbatim},
                         {"Location.DotsAreUnderstood", verbatim},
                         {"Move.AFileOntoItselfByAnotherTextChangesNothing", verbatim},
                         {"Concurrency.OneMovesTheFile", "a move is a copy and then a removal, and " + blind},
                         {"Concurrency.OneRemovesTheFile", blind},
                         {"Concurrency.OneMoveKeepsTheOthersFromItsDestination",
                          "a move looks at its destination before it copies, not while it does"}}};
}

/// A store that the environment names: FOUNDATION_S3_ENDPOINT, FOUNDATION_S3_REGION, FOUNDATION_S3_BUCKET, and
/// AWS_ACCESS_KEY_ID and AWS_SECRET_ACCESS_KEY.
class Engine {
 public:
  static bool isThere() { return std::getenv("FOUNDATION_S3_ENDPOINT") != nullptr; }

  /// A folder in its bucket, removed in the end.
  static Place makeFolder() {
    boost::property_tree::ptree options;
    options.put("endpoint", variable("FOUNDATION_S3_ENDPOINT"));
    options.put("region", variable("FOUNDATION_S3_REGION"));
    return {makeObjectFolder(options, variable("FOUNDATION_S3_BUCKET")).release(), &remove};
  }

 private:
  static std::string variable(const char* name) {
    const auto* value = std::getenv(name);
    if (value == nullptr)
      throw std::runtime_error(std::string(name) + " is not set");
    return value;
  }

  static void remove(const provider::StorageItem* folder) {
    const std::unique_ptr<const provider::StorageItem> owned(folder);
    try {
      folder->removeFolderRecursively();
    } catch (const std::exception& failure) {
      std::cerr << "A folder of the tests could not be removed: " << failure.what() << '\n';
    }
  }
};

}  // namespace foundation::storage::testing
