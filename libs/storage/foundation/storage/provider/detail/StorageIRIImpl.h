#pragma once

#include <fl/filesystem/Path.h>
#include <foundation/network/IRI.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/provider/detail/LazyValue.h>
#include <foundation/storage/provider/detail/OnceWord.h>

#include <cstdint>
#include <memory>
#include <string>

namespace foundation::storage::provider::detail {

/// What a `StorageIRI` shares with its copies: one kind of location, never changed once made. The
/// accessors that return references give cached texts that live as long as this object. `StorageIRI`
/// says what each operation means.
class StorageIRIImpl {
 public:
  using Pointer = std::shared_ptr<const StorageIRIImpl>;

  StorageIRIImpl() = default;
  StorageIRIImpl(const StorageIRIImpl&) = delete;
  StorageIRIImpl& operator=(const StorageIRIImpl&) = delete;

  virtual bool equals(const StorageIRIImpl& other) const;
  virtual bool less(const StorageIRIImpl& other) const;
  virtual std::u16string getScheme() const = 0;
  virtual const Pointer& getParent() const = 0;
  virtual bool hasParent() const = 0;
  virtual StorageIRI getRoot() const = 0;
  virtual bool hasPath() const = 0;
  virtual const std::u16string& getPath() const = 0;
  virtual const std::u16string& getName() const = 0;
  virtual const std::u16string& toString() const = 0;
  virtual const std::u16string& toAsciiString() const = 0;
  virtual std::u16string getHost() const = 0;
  virtual bool hasHost() const = 0;
  virtual bool isOpaque() const = 0;
  virtual network::IRI toIRI() const = 0;
  virtual bool hasInnerIRI() const = 0;
  virtual Pointer getInnerIRI() const = 0;
  virtual fl::filesystem::upath toUPath() const = 0;
  virtual ~StorageIRIImpl();
  virtual StorageIRI withPath(const std::u16string& path) const = 0;

  /// The path with its dot segments resolved against the root "/".
  const std::u16string& getResolvedPath() const;
  std::uint64_t hashValue() const;

  static StorageIRI wrap(Pointer impl) { return StorageIRI(std::move(impl)); }
  static const Pointer& of(const StorageIRI& location) { return location.impl_; }

 protected:
  /// What few ask a location for, kept apart so that it costs one word until somebody does.
  struct SeldomAsked {
    LazyValue<std::u16string> resolvedPath;
    LazyValue<std::u16string> asciiText;
    LazyValue<Pointer> parent;
    LazyValue<StorageIRI> root;
  };

  const SeldomAsked& seldomAsked() const {
    return seldomAsked_.get([] { return SeldomAsked(); });
  }

  /// The ASCII form of `iri`, which is the text of this location; `iri` lives as long as this object.
  const std::u16string& asciiTextOf(const network::IRI& iri) const;

  [[noreturn]] static void throwHasNoParent();
  [[noreturn]] static void throwHasNoInnerIRI();

 private:
  Pointer takeParent() noexcept;

  OnceWord hash_;
  LazyValue<SeldomAsked> seldomAsked_;
};

/// How many containers may lie in one another.
inline constexpr int maximalNesting = 64;

/// The kind of location that `iri` stands for.
/// @param nesting  how many containers it may be in. Throws `AnonymousInternalException<std::runtime_error>`
///                 where it is in more, is not absolute, or no location in a container.
StorageIRIImpl::Pointer makeImplFromIRI(network::IRI iri, int nesting = maximalNesting);

}  // namespace foundation::storage::provider::detail
