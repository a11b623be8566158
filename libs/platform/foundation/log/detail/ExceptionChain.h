#pragma once

#include <foundation/core/Export.h>

#include <string>

namespace foundation::log::detail {

/// The texts of the exception being handled and of those nested in it (`std::nested_exception`,
/// `boost::errinfo_nested_exception`), outermost first, joined by "; caused by: ". Says so where none is
/// being handled, and where an exception has no text; stops after 32 of them, for Boost's nesting can
/// lead back to an exception already told. Throws nothing but `std::bad_alloc`.
FOUNDATION_EXPORT std::string current_exception_chain_as_string();

}  // namespace foundation::log::detail
