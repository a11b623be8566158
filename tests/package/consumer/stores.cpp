// Copies a file from disk into an archive in memory and back, and says what a missing file gives.
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <filesystem>
#include <iostream>

using namespace foundation::storage;

int main(int, char** argv) {
  const auto registry = registry::makeDefaultRegistry();
  const auto folder = u"file://" + std::filesystem::absolute(argv[1]).u16string();
  const auto archive = registry.item(u"zip:memory:///a.zip!/");
  archive.createFolder();
  const auto packed = registry.item(u"zip:memory:///a.zip!/packed");
  registry.item(folder + u"/source").copyFile(packed, provider::ReplacementPolicy::Preserve);
  packed.copyFile(registry.item(folder + u"/copy"), provider::ReplacementPolicy::Preserve);
  try {
    registry.item(u"zip:memory:///a.zip!/missing").openReadOnlyStream();
  } catch (const provider::ByteStreamFailure& failure) {
    std::cout << failure.getErrorCode() << '\n';
  }
}
