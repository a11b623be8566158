#include "disk/Peer.h"

#include <gio/gio.h>

#include <cstring>
#include <memory>
#include <stdexcept>

namespace bench {
namespace {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using Ref = std::unique_ptr<T, Unref>;

Ref<GFile> fileAt(const std::string& path) { return Ref<GFile>(g_file_new_for_path(path.c_str())); }

/// Where GIO puts what went wrong.
class Error {
 public:
  Error() = default;
  ~Error() { g_clear_error(&error_); }
  Error(const Error&) = delete;
  Error& operator=(const Error&) = delete;

  GError** operator&() { return &error_; }
  void check(bool wentWell) const {
    if (!wentWell)
      throw std::runtime_error(error_ != nullptr ? error_->message : "GIO failed");
  }

 private:
  GError* error_ = nullptr;
};

/// @param see  is given each entry's information
template <class See>
void forEach(GFile* folder, const char* attributes, const See& see) {
  Error error;
  const Ref<GFileEnumerator> entries(
      g_file_enumerate_children(folder, attributes, G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS, nullptr, &error));
  error.check(entries != nullptr);
  for (GFileInfo* info = nullptr;;) {
    error.check(g_file_enumerator_iterate(entries.get(), &info, nullptr, nullptr, &error) != FALSE);
    if (info == nullptr)
      return;
    see(info);
  }
}

Tally listNames(const std::string& folder) {
  Tally tally;
  forEach(fileAt(folder).get(), G_FILE_ATTRIBUTE_STANDARD_NAME, [&](GFileInfo* info) {
    ++tally.entries;
    tally.nameLength += std::strlen(g_file_info_get_name(info));
  });
  return tally;
}

Tally listAttributes(const std::string& folder) {
  constexpr auto attributes = G_FILE_ATTRIBUTE_STANDARD_NAME
      "," G_FILE_ATTRIBUTE_STANDARD_TYPE "," G_FILE_ATTRIBUTE_STANDARD_SIZE "," G_FILE_ATTRIBUTE_TIME_MODIFIED;
  Tally tally;
  forEach(fileAt(folder).get(), attributes, [&](GFileInfo* info) {
    ++tally.entries;
    tally.nameLength += std::strlen(g_file_info_get_name(info));
    if (g_file_info_get_file_type(info) == G_FILE_TYPE_REGULAR)
      ++tally.files;
    tally.bytes += static_cast<std::uint64_t>(g_file_info_get_size(info));
    tally.modified += static_cast<std::int64_t>(g_file_info_get_attribute_uint64(info, G_FILE_ATTRIBUTE_TIME_MODIFIED));
  });
  return tally;
}

void walkInto(GFile* folder, Tally& tally) {
  std::vector<std::string> folders;
  forEach(folder, G_FILE_ATTRIBUTE_STANDARD_NAME "," G_FILE_ATTRIBUTE_STANDARD_TYPE, [&](GFileInfo* info) {
    ++tally.entries;
    if (g_file_info_get_file_type(info) == G_FILE_TYPE_DIRECTORY)
      folders.emplace_back(g_file_info_get_name(info));
    else
      ++tally.files;
  });
  for (const auto& name : folders)
    walkInto(Ref<GFile>(g_file_get_child(folder, name.c_str())).get(), tally);
}

Tally walk(const std::string& folder) {
  Tally tally;
  walkInto(fileAt(folder).get(), tally);
  return tally;
}

using Files = std::vector<Ref<GFile>>;

std::shared_ptr<Files> files(const Paths& paths) {
  const auto all = std::make_shared<Files>();
  for (const auto& path : paths)
    all->push_back(fileAt(path));
  return all;
}

Peer::Job copier(const Paths& from, const Paths& to) {
  return [from = files(from), to = files(to)](std::size_t number) {
    Error error;
    error.check(g_file_copy((*from)[number].get(), (*to)[number].get(), G_FILE_COPY_NONE, nullptr, nullptr, nullptr,
                            &error) != FALSE);
  };
}

std::function<void(const std::string&)> replacer(const std::string& folder, const std::string& name) {
  return [target = std::shared_ptr<GFile>(fileAt(folder + "/" + name))](const std::string& content) {
    Error error;
    const Ref<GFileOutputStream> file(
        g_file_replace(target.get(), nullptr, FALSE, G_FILE_CREATE_NONE, nullptr, &error));
    error.check(file != nullptr);
    auto* stream = G_OUTPUT_STREAM(file.get());
    error.check(g_output_stream_write_all(stream, content.data(), content.size(), nullptr, nullptr, &error) != FALSE);
    error.check(g_output_stream_close(stream, nullptr, &error) != FALSE);
  };
}

std::size_t readAll(const std::string& path, char* buffer, std::size_t block) {
  Error error;
  const Ref<GFileInputStream> file(g_file_read(fileAt(path).get(), nullptr, &error));
  error.check(file != nullptr);
  std::size_t total = 0;
  for (gssize got; (got = g_input_stream_read(G_INPUT_STREAM(file.get()), buffer, block, nullptr, &error)) != 0;) {
    error.check(got > 0);
    total += static_cast<std::size_t>(got);
  }
  return total;
}

// g_file_replace syncs the new file, whether one wants that or not.
const bool added = add({.name = "GIO",
                        .listNames = listNames,
                        .listAttributes = listAttributes,
                        .walk = walk,
                        .copy = copier,
                        .replace = replacer,
                        .replaceDurably = replacer,
                        .read = readAll,
                        .replaceSyncs = true});

}  // namespace
}  // namespace bench
