#include <fl/filesystem/Path.h>

namespace fl::filesystem {

upath make_native_form(const upath& path) { return path; }

}  // namespace fl::filesystem
