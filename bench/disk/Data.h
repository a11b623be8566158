#pragma once

#include "disk/Peer.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// The files that are worked on; the same in every run.
namespace bench {

inline constexpr std::size_t smallFileSize = 4096;

/// How much work there is.
struct Scale {
  std::size_t listed = 100'000;  ///< files in one folder, and in the tree
  std::size_t folders = 1'000;   ///< of the tree
  std::size_t copied = 10'000;   ///< small files
  std::uint64_t big = std::uint64_t{1} << 30;
  std::uint64_t sparse = std::uint64_t{5} << 30;
  std::size_t replaced = 2'000;
  std::size_t replacedDurably = 200;
};

/// The same work, a hundredth of it or so: to see whether all still works.
Scale smallScale();

/// A temporary folder, removed at the end with all that is in it.
class Space {
 public:
  /// Makes it in `parent`. Throws `std::system_error`.
  explicit Space(const std::string& parent);
  ~Space();
  Space(const Space&) = delete;
  Space& operator=(const Space&) = delete;

  const std::string& path() const { return path_; }
  /// Has all that was written to the file system written to the disk, so that nobody pays for what others did.
  void settle() const;
  /// Makes the folder empty, and in existence.
  std::string emptyFolder(const std::string& name) const;

 private:
  std::string path_;
};

/// Writes a file anew. Throws `std::system_error`.
void writeFile(const std::string& path, const std::string& content);

// Each of these makes its files in the space where they are not there yet. All throw `std::system_error`.

/// A folder of files with names of 19 characters, and sizes and times of their own.
std::string flatFolder(const Space& space, std::size_t files);
/// What there is to be found in it.
Tally flatTally(std::size_t files);

/// Folders with equally many empty files each.
std::string tree(const Space& space, std::size_t files, std::size_t folders);
/// Makes such a tree at `path`.
void makeTree(const std::string& path, std::size_t files, std::size_t folders);

/// Files of 4 KiB in one folder.
Paths smallFiles(const Space& space, std::size_t files);

/// A file without holes.
std::string bigFile(const Space& space, std::uint64_t size);

/// A file with 1 MiB of data in every 64 MiB.
std::string sparseFile(const Space& space, std::uint64_t size);

/// Throws `std::runtime_error` where the files differ in size or in any of the places that are looked at: the
/// first 64 KiB of every 32 MiB.
void requireSame(const std::string& expected, const std::string& found);

/// Whether enough can be written below `path`, and what is written there stays in memory (tmpfs).
bool isMemory(const std::string& path, std::uint64_t size);

}  // namespace bench
