#include "content/Utility.h"

#include <random>

namespace dax {

Text Utility::NewIdentifier() {
    thread_local std::random_device source;
    Text identifier;
    identifier.reserve(32);
    for (int word = 0; word < 4; ++word) {
        const std::random_device::result_type bits = source();
        for (int shift = 28; shift >= 0; shift -= 4) identifier.push_back(u"0123456789abcdef"[(bits >> shift) & 0xF]);
    }
    return identifier;
}

} // namespace dax
