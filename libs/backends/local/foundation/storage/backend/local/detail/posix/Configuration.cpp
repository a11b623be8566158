#include <foundation/storage/backend/local/detail/posix/Configuration.h>

#include <foundation/storage/backend/local/detail/posix/Failure.h>
#include <foundation/storage/backend/support/InvalidOptionException.h>
#include <foundation/storage/backend/support/Options.h>

#include <boost/property_tree/ptree.hpp>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>

namespace foundation::storage::backend::local::detail {
namespace {

std::shared_ptr<const FileSystem> fileSystemFor(const std::optional<std::string>& root, bool followsLinks) {
  if (!root && followsLinks)
    return wholeFileSystem();
  const auto path = root.value_or("/");
  if (!path.starts_with('/') || path.find('\0') != std::string::npos)
    throw support::InvalidOptionException("root", "\"" + path + "\" is no absolute path");
  auto confined = confinedFileSystem(path, followsLinks);
  if (!confined)
    throw support::InvalidOptionException("root", "\"" + path + "\" cannot be opened: " + systemMessage(errno));
  return confined;
}

}  // namespace

Configuration readConfiguration(boost::property_tree::ptree tree) {
  support::Options options(std::move(tree));
  const auto root = options.takeText("root");
  const auto followsLinks = options.takeFlag("follow-links");
  const auto isDurable = options.takeFlag("durable");
  const auto hidesScratchFiles = options.takeFlag("hide-scratch-files");
  options.requireNoMore();
  return {fileSystemFor(root, followsLinks.value_or(true)), isDurable.value_or(false),
          hidesScratchFiles.value_or(false)};
}

}  // namespace foundation::storage::backend::local::detail
