#include "base/CommandLine.h"

namespace dax {

Text QuotedArgument(TextView argument) {
    Text quoted = u"\"";
    size_t backslashes = 0;
    for (const char16_t unit : argument) {
        if (unit == u'"') quoted.append(backslashes + 1, u'\\');
        backslashes = unit == u'\\' ? backslashes + 1 : 0;
        quoted += unit;
    }
    return quoted.append(backslashes, u'\\') + u'"';
}

} // namespace dax
