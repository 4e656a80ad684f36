#include "support/system_error.h"

#include <cerrno>
#include <cstring>

namespace morvane {

std::string systemErrorText(int error) {
    char buffer[256];
    // The GNU form: the text may or may not stand in the buffer.
    return ::strerror_r(error, buffer, sizeof buffer);
}

void throwErrno() {
    throwError(errno);
}

void throwError(int error) {
    throw std::system_error(error, std::generic_category());
}

}  // namespace morvane
