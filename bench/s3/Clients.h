#pragma once

#include "archive/Process.h"
#include "disk/Data.h"
#include "s3/Store.h"

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// Where and with what it is worked.
struct Bench {
  const Space& space;
  Store& store;
  std::string fstore;  ///< the path of our command
  std::size_t jobs;    ///< files at once
  std::size_t files;   ///< small ones
  std::uint64_t big;   ///< bytes of the large one
};

/// One client of the store, and how it does each piece of work. The files of a folder are those that `smallFiles`
/// makes.
struct Client {
  std::string name;
  bool isOurs = false;
  /// Writes a file under a key.
  std::function<void(const std::string& path, const std::string& key)> put{};
  /// Reads an object into a file that is not there yet.
  std::function<void(const std::string& key, const std::string& path)> get{};
  /// The same with all files in a folder; the folder that is copied to is not there yet.
  std::function<void(const std::string& folder, const std::string& key)> putAll{};
  std::function<void(const std::string& key, const std::string& folder)> getAll{};
  /// The number of objects in a folder.
  std::function<std::size_t(const std::string& key)> list{};
};

Client ourLibrary(const Bench& bench);
Client ourCommand(const Bench& bench);

/// @param atOnce  transfers at once, of several files
Client curl(const Bench& bench, std::size_t atOnce);

/// @param options  of rclone
Client rclone(const Bench& bench, const std::string& name, const std::vector<std::string>& options);

}  // namespace bench
