#include <foundation/core/except/IException.h>

namespace foundation::core::except {

// Here, so that the type information stands once, in this library.
IException::~IException() = default;
IInternalException::~IInternalException() = default;

}  // namespace foundation::core::except
