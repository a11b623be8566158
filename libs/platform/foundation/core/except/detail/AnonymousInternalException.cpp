#include <foundation/core/except/detail/AnonymousInternalException.h>

namespace foundation::core::except::detail {

template class AnonymousInternalException<std::logic_error>;
template class AnonymousInternalException<std::runtime_error>;

}  // namespace foundation::core::except::detail
