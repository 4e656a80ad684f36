// A file that cannot be decoded or does not qualify; what() is the short reason in Chinese.
#pragma once

#include <stdexcept>

namespace morvane {

class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace morvane
