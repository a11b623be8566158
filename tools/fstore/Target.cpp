#include "Target.h"

#include "Arguments.h"

#include <span>

namespace fstore {

using namespace foundation::storage::provider;

void transferEach(const std::vector<std::string>& arguments, Report& report,
                  const std::function<void(const StorageItem&, const StorageItem&)>& transfer) {
  report.attempt(arguments.back(), [&] {
    const auto target = itemFor(arguments.back());
    const bool isFolder = target.folderExists();
    if (!isFolder && arguments.back().ends_with('/'))
      return report.fail(target.getLocation(), ErrorCode::ResourceNotFound, "There is no such folder");
    const auto sources = std::span(arguments).first(arguments.size() - 1);
    if (sources.size() > 1 && !isFolder)
      return report.fail(target.getLocation(), ErrorCode::InvalidLocation, "Several sources need a folder to go into");
    for (const auto& argument : sources)
      report.attempt(argument, [&] {
        const auto source = itemFor(argument);
        const auto named = isFolder ? StorageItem(target, source.getName()) : target;
        report.attempt(source.getLocation(), [&] { transfer(source, named); });
      });
  });
}

}  // namespace fstore
