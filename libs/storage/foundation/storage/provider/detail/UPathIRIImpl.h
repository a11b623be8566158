#pragma once

#include <foundation/storage/provider/detail/StorageIRIImpl.h>

namespace foundation::storage::provider::detail {

/// A local file-system path under a scheme. It gives back the very path that it was made from.
class UPathIRIImpl final : public StorageIRIImpl {
 public:
  /// @param path  empty or absolute, in generic form
  UPathIRIImpl(std::u16string scheme, fl::filesystem::upath path);

  bool equals(const StorageIRIImpl& other) const override;
  bool less(const StorageIRIImpl& other) const override;
  std::u16string getScheme() const override { return scheme_; }
  const Pointer& getParent() const override;
  bool hasParent() const override;
  StorageIRI getRoot() const override;
  bool hasPath() const override { return !path_.empty(); }
  const std::u16string& getPath() const override { return path_.string(); }
  const std::u16string& getName() const override;
  const std::u16string& toString() const override { return iri().text(); }
  const std::u16string& toAsciiString() const override { return asciiTextOf(iri()); }
  std::u16string getHost() const override;
  bool hasHost() const override { return path_.string().starts_with(u"//"); }
  bool isOpaque() const override { return false; }
  network::IRI toIRI() const override { return iri(); }
  bool hasInnerIRI() const override { return false; }
  Pointer getInnerIRI() const override { throwHasNoInnerIRI(); }
  fl::filesystem::upath toUPath() const override { return make_native_form(path_); }
  StorageIRI withPath(const std::u16string& path) const override;

 private:
  const network::IRI& iri() const;

  std::u16string scheme_;
  fl::filesystem::upath path_;
  LazyValue<network::IRI> iri_;
  LazyValue<std::u16string> name_;
};

}  // namespace foundation::storage::provider::detail
