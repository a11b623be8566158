#include "disk/Peer.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/IConfigurableProvider.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <boost/property_tree/ptree.hpp>

#include <memory>

namespace bench {
namespace {

using namespace foundation::storage;
using provider::StorageItem;
using Provider = std::shared_ptr<provider::IProvider>;

Provider newProvider() {
  return backend::local::LocalProviderFactory().buildProvider(provider::StorageIRI(u"file:///"));
}

StorageItem item(const std::string& path) {
  static const auto provider = newProvider();
  return {provider, provider::toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(path)))};
}

std::vector<StorageItem> items(const Paths& paths) {
  std::vector<StorageItem> all;
  for (const auto& path : paths)
    all.push_back(item(path));
  return all;
}

Tally listNames(const std::string& folder) {
  Tally tally;
  for (const auto entries = item(folder).listAllNamesOnly(u""); entries->hasNext();) {
    entries->next();
    ++tally.entries;
    tally.nameLength += entries->current().getName().size();
  }
  return tally;
}

Tally listAttributes(const std::string& folder) {
  static const boost::posix_time::ptime epoch(boost::gregorian::date(1970, 1, 1));
  Tally tally;
  for (const auto entries = item(folder).listAll(u""); entries->hasNext();) {
    entries->next();
    const auto entry = entries->current();
    ++tally.entries;
    tally.nameLength += entry.getName().size();
    if (!entry.isFile())
      continue;
    ++tally.files;
    tally.bytes += entry.getFileAttributes()->getSize();
    tally.modified += (entry.getFileAttributes()->getLastModified() - epoch).total_seconds();
  }
  return tally;
}

Tally walk(const std::string& folder) {
  Tally tally;
  for (const auto entries = item(folder).listAllRecursiveNamesOnly(u""); entries->hasNext();) {
    entries->next();
    ++tally.entries;
    if (entries->current().isFile())
      ++tally.files;
  }
  return tally;
}

Peer::Job copier(const Paths& from, const Paths& to) {
  return [from = items(from), to = items(to)](std::size_t number) {
    from[number].copyFile(to[number], provider::ReplacementPolicy::Overwrite);
  };
}

auto replacing(const StorageItem& target) {
  return [target](const std::string& content) {
    const auto stream = target.openTransactionalStream({});
    const auto size = static_cast<std::int64_t>(content.size());
    if (stream->write(content.data(), size) != size)
      throw std::runtime_error("a short write");
    stream->close(provider::StreamClosePolicy::Commit);
  };
}

std::function<void(const std::string&)> replacer(const std::string& folder, const std::string& name) {
  return replacing(StorageItem(item(folder), fl::i18n::to_ustring(name)));
}

std::function<void(const std::string&)> durableReplacer(const std::string& folder, const std::string& name) {
  const auto provider = newProvider();
  const StorageItem durable(provider, item(folder).getLocation());
  if (std::dynamic_pointer_cast<provider::IConfigurableProvider>(provider) == nullptr)
    throw Skipped("the provider takes no options");
  boost::property_tree::ptree options;
  options.put("durable", "true");
  try {
    durable.configure(options);
  } catch (const provider::Exception& failure) {
    throw Skipped(std::string("the option \"durable\" is refused: ") + failure.what());
  }
  return replacing(StorageItem(durable, fl::i18n::to_ustring(name)));
}

std::size_t readAll(const std::string& path, char* buffer, std::size_t block) {
  const auto stream = item(path).openReadOnlyStream();
  std::size_t total = 0;
  for (std::int64_t got; (got = stream->read(buffer, static_cast<std::int64_t>(block))) > 0;)
    total += static_cast<std::size_t>(got);
  return total;
}

void removeTree(const std::string& folder) {
  if (!item(folder).hasFeature(provider::ExtendedFeature::RecursiveFolderRemoval))
    throw Skipped("the provider does not remove folders recursively");
  item(folder).removeFolderRecursively();
}

const bool added = add({.name = "ours",
                        .listNames = listNames,
                        .listAttributes = listAttributes,
                        .walk = walk,
                        .copy = copier,
                        .copySparse = copier,
                        .replace = replacer,
                        .replaceDurably = durableReplacer,
                        .read = readAll,
                        .removeTree = removeTree});

}  // namespace
}  // namespace bench
