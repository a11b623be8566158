#pragma once

namespace fstore {

/// How what a command finds out is written.
enum class Format {
  Text,  ///< for people
  Json,  ///< for programs
};

}  // namespace fstore
