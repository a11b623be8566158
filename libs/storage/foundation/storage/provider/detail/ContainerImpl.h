#pragma once

#include <foundation/storage/provider/detail/StorageIRIImpl.h>

namespace foundation::storage::provider::detail {

/// A location inside a container that lives at another location: scheme:inner!/path.
class ContainerImpl final : public StorageIRIImpl {
 public:
  /// Throws `AnonymousInternalException<std::runtime_error>` where `iri` is no location in a container, or in
  /// more than `nesting` of them.
  ContainerImpl(network::IRI iri, int nesting);

  /// Throws as the other constructor, and `network::IRISyntaxException` where `scheme` is no scheme.
  /// @param path  decoded; a '/' is put before a path that begins without one
  ContainerImpl(const std::u16string& scheme, Pointer inner, std::u16string path);

  std::u16string getScheme() const override { return iri_.getScheme(); }
  const Pointer& getParent() const override;
  bool hasParent() const override { return path_ != u"/"; }
  StorageIRI getRoot() const override { return withPath(u"/"); }
  bool hasPath() const override { return !path_.empty(); }
  const std::u16string& getPath() const override { return path_; }
  const std::u16string& getName() const override;
  const std::u16string& toString() const override { return iri_.text(); }
  const std::u16string& toAsciiString() const override { return asciiTextOf(iri_); }
  std::u16string getHost() const override;
  bool hasHost() const override { return false; }
  bool isOpaque() const override { return true; }
  network::IRI toIRI() const override { return iri_; }
  bool hasInnerIRI() const override { return true; }
  Pointer getInnerIRI() const override { return inner_; }
  fl::filesystem::upath toUPath() const override;
  StorageIRI withPath(const std::u16string& path) const override;

 private:
  Pointer inner_;
  std::u16string path_;
  network::IRI iri_;
  LazyValue<std::u16string> name_;
};

}  // namespace foundation::storage::provider::detail
