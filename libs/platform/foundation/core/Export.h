#pragma once

/// Marks what a shared library of this project offers to others. Everything is compiled with hidden
/// visibility, so a class or function without the mark stays inside its library. Exceptions and all
/// polymorphic types that cross a library's border need it: their type information must be one.
#define FOUNDATION_EXPORT __attribute__((visibility("default")))
