#include "locations/Workloads.h"

#include <gio/gio.h>

#include <cstring>
#include <memory>

namespace bench {
namespace {

struct Unref {
  void operator()(GFile* file) const { g_object_unref(file); }
};

/// GFile, GIO's own idea of a location.
struct Gio {
  using Value = std::unique_ptr<GFile, Unref>;

  static std::string text(const Spelling& spelling) { return spelling.escaped; }
  static std::string name(const std::string& name) { return name; }
  static Value parse(const std::string& text) { return Value(g_file_new_for_uri(text.c_str())); }

  static std::size_t read(const Value& value) {
    // Only local files have a path here; for others the URI is the nearest thing.
    char* path = g_file_get_path(value.get());
    if (path == nullptr)
      path = g_file_get_uri(value.get());
    char* base = g_file_get_basename(value.get());
    const auto length = std::strlen(path) + std::strlen(base);
    g_free(base);
    g_free(path);
    return length;
  }

  static Value folder() { return parse(folderText); }
  static Value child(const Value& folder, const std::string& name) {
    return Value(g_file_get_child(folder.get(), name.c_str()));
  }
  static bool equal(const Value& a, const Value& b) { return g_file_equal(a.get(), b.get()) != FALSE; }
  static std::size_t hash(const Value& value) { return g_file_hash(value.get()); }
};

/// GUri, a parser of URIs.
struct GlibUri {
  struct Unref {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
  };
  using Value = std::unique_ptr<GUri, Unref>;

  static std::string text(const Spelling& spelling) { return spelling.escaped; }
  static Value parse(const std::string& text) { return Value(g_uri_parse(text.c_str(), G_URI_FLAGS_NONE, nullptr)); }
  static std::size_t read(const Value& value) {
    const char* path = g_uri_get_path(value.get());
    return std::strlen(path) + std::strlen(std::strrchr(path, '/') + 1);
  }
};

const bool added = add<Gio>("GFile") && add<GlibUri>("GUri");

}  // namespace
}  // namespace bench
