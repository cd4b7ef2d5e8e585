#include "base/Error.h"

namespace dax {

Error::Error(int32_t code, Text text) : number(code), description(std::move(text)), utf8(ToUtf8(description)) {}

} // namespace dax
