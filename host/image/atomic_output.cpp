#include "host/image/atomic_output.h"

#include <cstring>

namespace subsurf::image {

std::string errnoText(int error) { return std::strerror(error); }

}  // namespace subsurf::image
