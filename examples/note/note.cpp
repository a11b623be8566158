// Adds a line to a file, and prints all lines of the file with their numbers.
//
//     note file:///home/ann/notes.txt "Write to Ben"

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ByteStreamDevice.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <boost/iostreams/stream.hpp>

#include <iostream>

namespace provider = foundation::storage::provider;
using ByteIOStream = boost::iostreams::stream<provider::ByteStreamDevice>;

// [write]
void add(const provider::StorageItem& file, const std::string& line) {
  auto stream = file.openStream({.truncate = provider::ByteStreamTruncate::PreserveExisting});
  ByteIOStream out{provider::ByteStreamDevice(stream), 0};  // without a buffer, in which a failure could be lost
  out.exceptions(std::ios::badbit | std::ios::failbit);
  out << line + '\n';
  out.close();
}
// [write]

// [read]
void print(const provider::StorageItem& file) {
  auto stream = file.openReadOnlyStream();
  ByteIOStream in{provider::ByteStreamDevice(stream)};
  in.exceptions(std::ios::badbit);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number)
    std::cout << number << ' ' << line << '\n';
}
// [read]

int main(int argc, char** argv) try {
  if (argc != 3)
    throw std::invalid_argument("what, and where? note LOCATION TEXT");
  const auto registry = foundation::storage::registry::makeDefaultRegistry();
  const auto file = registry.item(fl::i18n::to_ustring(argv[1]));
  add(file, argv[2]);
  file.flushFilesystem();  // an archive is written now; elsewhere nothing is left to do
  print(file);
  return std::cout.flush() ? 0 : 1;
} catch (const provider::Exception& failure) {
  std::cerr << "note: " << toLogText(failure.getStorageIRI()) << ": " << failure.getErrorCode() << '\n';
  return 1;
} catch (const std::exception& failure) {
  std::cerr << "note: " << failure.what() << '\n';
  return 1;
}
