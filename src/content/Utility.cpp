#include "content/Utility.h"

#include <random>

namespace dax {

namespace {

constexpr TextView identifierDigits = u"0123456789abcdef";
constexpr size_t identifierLength = 32;

} // namespace

Text Utility::NewIdentifier() {
    thread_local std::random_device source;
    std::uniform_int_distribution<size_t> digit(0, identifierDigits.size() - 1);
    Text identifier;
    while (identifier.size() < identifierLength) identifier += identifierDigits[digit(source)];
    return identifier;
}

} // namespace dax
