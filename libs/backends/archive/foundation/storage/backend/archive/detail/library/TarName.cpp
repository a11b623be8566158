#include <foundation/storage/backend/archive/detail/library/TarName.h>

#include <archive.h>

#include <algorithm>
#include <string>

namespace foundation::storage::backend::archive::detail::library {
namespace {

struct Ending {
  std::u16string_view text;  ///< in small letters
  int filter;
};

/// As GNU tar's --auto-compress knows them (tar(1)).
constexpr Ending endings[] = {
    {u".tar.gz", ARCHIVE_FILTER_GZIP},   {u".tgz", ARCHIVE_FILTER_GZIP},   {u".taz", ARCHIVE_FILTER_GZIP},
    {u".tar.bz2", ARCHIVE_FILTER_BZIP2}, {u".tbz2", ARCHIVE_FILTER_BZIP2}, {u".tbz", ARCHIVE_FILTER_BZIP2},
    {u".tz2", ARCHIVE_FILTER_BZIP2},     {u".tar.xz", ARCHIVE_FILTER_XZ},  {u".txz", ARCHIVE_FILTER_XZ},
    {u".tar.zst", ARCHIVE_FILTER_ZSTD},  {u".tzst", ARCHIVE_FILTER_ZSTD},  {u".tar.lz4", ARCHIVE_FILTER_LZ4},
    {u".tar.lzma", ARCHIVE_FILTER_LZMA}, {u".tlz", ARCHIVE_FILTER_LZMA},   {u".tar.z", ARCHIVE_FILTER_COMPRESS},
};

}  // namespace

std::vector<int> filtersByName(std::u16string_view name) {
  std::u16string small(name);
  for (auto& unit : small)
    if (unit >= u'A' && unit <= u'Z')
      unit = static_cast<char16_t>(unit - u'A' + u'a');
  const auto* const found = std::find_if(std::begin(endings), std::end(endings),
                                         [&](const Ending& ending) { return small.ends_with(ending.text); });
  return found != std::end(endings) ? std::vector{found->filter} : std::vector<int>{};
}

}  // namespace foundation::storage::backend::archive::detail::library
