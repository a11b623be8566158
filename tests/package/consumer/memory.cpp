// Uses one back end directly: writes a file atomically, and reads it.
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/StorageItem.h>

#include <array>
#include <iostream>
#include <string_view>

using namespace foundation::storage;

int main() {
  const provider::StorageIRI location(u"memory:///letter");
  const provider::StorageItem letter(backend::memory::MemoryProviderFactory().buildProvider(location), location);
  constexpr std::string_view text = "Dear reader";
  const auto out = letter.openTransactionalStream(
      {.access = provider::ByteStreamAccess::WriteOnly, .create = provider::ByteStreamCreate::Create});
  out->write(text.data(), text.size());
  out->close(provider::StreamClosePolicy::Commit);
  std::array<char, 100> bytes{};
  const auto got = letter.openReadOnlyStream()->read(bytes.data(), bytes.size());
  std::cout << std::string_view(bytes.data(), static_cast<std::size_t>(got)) << '\n';
}
