#include <foundation/storage/provider/detail/ContainerImpl.h>

#include <fl/i18n/Convert.h>
#include <foundation/core/except/detail/AnonymousInternalException.h>
#include <foundation/network/IRISyntaxException.h>
#include <foundation/storage/provider/detail/Absolute.h>
#include <foundation/storage/provider/detail/PathSplit.h>

#include <stdexcept>

namespace foundation::storage::provider::detail {
namespace {

constexpr char16_t separator = u'!';

[[noreturn]] void refuse(const std::string& reason) {
  throw core::except::detail::AnonymousInternalException<std::runtime_error>(reason);
}

[[noreturn]] void refuseText(const network::IRI& iri, const std::string& reason) {
  refuse("Invalid container-style storage IRI '" + fl::i18n::to_string(iri.text()) + "'. " + reason);
}

[[noreturn]] void refuseNesting() { refuse("Containers nest at most " + std::to_string(maximalNesting) + " deep."); }

void requireInnerPath(const network::IRI& iri, const StorageIRIImpl& inner) {
  if (!inner.hasPath())
    refuse("IRI '" + fl::i18n::to_string(iri.text()) + "' does not have an absolute path component on the inner IRI.");
}

/// With another character in it, the scheme would be read as something else.
const std::u16string& requireScheme(const std::u16string& scheme) {
  if (!network::IRI::isScheme(scheme))
    throw network::IRISyntaxException(scheme, 0, "this is no scheme");
  return scheme;
}

/// In how many containers a location is.
int nestingOf(const StorageIRIImpl& location) {
  return location.hasInnerIRI() ? 1 + nestingOf(*location.getInnerIRI()) : 0;
}

/// The two sides of the separator.
struct ContainerText {
  std::u16string inner;
  std::u16string path;  ///< as it is written, with query and fragment
};

ContainerText cutAtSeparator(const network::IRI& iri) {
  const auto all = iri.getSchemeSpecificPart();
  const auto at = all.rfind(separator);
  if (at == std::u16string::npos)
    refuseText(iri, "Expected to find a '!' to begin the path section.");
  if (at + 1 == all.size() || all[at + 1] != u'/')
    refuseText(iri, "Path should begin with a '/'.");
  return {all.substr(0, at), all.substr(at + 1)};
}

std::u16string decodedPath(std::u16string_view written) {
  written = written.substr(0, written.rfind(u'?'));
  written = written.substr(0, written.rfind(u'#'));
  return network::IRI::decode(written);
}

/// The last raw separator of a text begins the path, so one inside the path has to be escaped.
std::u16string encodedPath(const std::u16string& path) {
  network::IRIArgs args;
  args.setPath(path);
  std::u16string out;
  for (const char16_t unit : args.getPath()) {
    if (unit == separator)
      out.append(u"%21");
    else
      out.push_back(unit);
  }
  return out;
}

std::u16string absolutePath(std::u16string path) { return path.starts_with(u'/') ? std::move(path) : u"/" + path; }

}  // namespace

ContainerImpl::ContainerImpl(network::IRI iri, int nesting) : iri_(std::move(iri)) {
  requireAbsolute(iri_);
  if (nesting == 0)
    refuseNesting();
  const auto text = cutAtSeparator(iri_);
  inner_ = makeImplFromIRI(network::IRI(text.inner), nesting - 1);
  requireInnerPath(iri_, *inner_);
  path_ = decodedPath(text.path);
}

ContainerImpl::ContainerImpl(const std::u16string& scheme, Pointer inner, std::u16string path)
    : inner_(std::move(inner)),
      path_(absolutePath(std::move(path))),
      iri_(requireScheme(scheme) + u":" + inner_->toString() + separator + encodedPath(path_)) {
  requireInnerPath(iri_, *inner_);
  if (nestingOf(*inner_) == maximalNesting)
    refuseNesting();
}

const StorageIRIImpl::Pointer& ContainerImpl::getParent() const {
  return seldomAsked().parent.get([this] {
    const auto parentPath = splitPath(path_).parent;
    if (parentPath.empty())
      throwHasNoParent();
    return of(withPath(std::u16string(parentPath)));
  });
}

const std::u16string& ContainerImpl::getName() const {
  return name_.get([this] { return std::u16string(splitPath(path_).name); });
}

std::u16string ContainerImpl::getHost() const {
  throw std::logic_error("StorageIRI " + fl::i18n::to_string(toString()) +
                         " is container based so by definition has no host.");
}

fl::filesystem::upath ContainerImpl::toUPath() const {
  throw std::logic_error("Can not extract a file system path from StorageIRI " + fl::i18n::to_string(toString()) +
                         " as it represents a location inside a container.");
}

StorageIRI ContainerImpl::withPath(const std::u16string& path) const {
  return wrap(std::make_shared<ContainerImpl>(iri_.getScheme(), inner_, path));
}

}  // namespace foundation::storage::provider::detail
