#include "data/ModuleConstants.h"

namespace dax {

Text ModuleConstants::OCXVersion() const {
    Text build = ToText(revision);
    if (build.size() < 4) build.insert(0, 4 - build.size(), u'0');
    return Text(TrimBlanks(ToText(majorNumber) + u"." + ToText(minorNumber) + u" (Build " + build + u")  " + comments));
}

Text ModuleConstants::OCXPath() const {
    const size_t separator = fileName.find_last_of(u"\\/");
    if (separator == Text::npos) return {};
    const bool isRoot = separator == 0 || fileName[separator - 1] == u':';
    return fileName.substr(0, isRoot ? separator + 1 : separator);
}

} // namespace dax
