#pragma once

#include <foundation/storage/provider/detail/InPlaceLazyValue.h>
#include <foundation/storage/provider/detail/StorageIRIImpl.h>

namespace foundation::storage::provider::detail {

/// A location of the form scheme://authority/path.
class HierarchicalImpl final : public StorageIRIImpl {
 public:
  /// Throws where `iri` is not absolute.
  explicit HierarchicalImpl(network::IRI iri);

  /// With the decoded path as it was given, for an IRI whose text need not give it back.
  HierarchicalImpl(network::IRI iri, std::u16string path);

  /// `withPath` of this path, a '/' and `name`.
  StorageIRI withChild(std::u16string_view name) const;

  bool equals(const StorageIRIImpl& other) const override;
  bool less(const StorageIRIImpl& other) const override;
  std::u16string getScheme() const override { return iri_.getScheme(); }
  const Pointer& getParent() const override;
  bool hasParent() const override { return iri_.writtenPath() != u"/"; }
  StorageIRI getRoot() const override;
  bool hasPath() const override { return !iri_.writtenPath().empty(); }
  const std::u16string& getPath() const override;
  const std::u16string& getName() const override;
  const std::u16string& toString() const override { return iri_.text(); }
  const std::u16string& toAsciiString() const override { return asciiTextOf(iri_); }
  std::u16string getHost() const override { return iri_.getHost(); }
  bool hasHost() const override { return !iri_.writtenHost().empty(); }
  bool isOpaque() const override { return false; }
  network::IRI toIRI() const override { return iri_; }
  bool hasInnerIRI() const override { return false; }
  Pointer getInnerIRI() const override { throwHasNoInnerIRI(); }
  fl::filesystem::upath toUPath() const override;
  StorageIRI withPath(const std::u16string& path) const override;

 private:
  struct Names {
    explicit Names(std::u16string thePath) : path(std::move(thePath)) {}
    std::u16string path;
    InPlaceLazyValue<std::u16string> name;
  };

  const Names& names() const;

  network::IRI iri_;
  LazyValue<Names> names_;
};

}  // namespace foundation::storage::provider::detail
