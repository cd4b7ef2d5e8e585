// The values of the public class Constants, as pure functions of the module's version resource and path.
#pragma once

#include "base/Text.h"

namespace dax {

struct ModuleConstants {
    int majorNumber = 0, minorNumber = 0, revision = 0;
    Text comments; // of the version resource
    Text fileName; // full path of the control library

    // "3.3 (Build 0042)  comments": the revision has at least four digits; no blanks at either end.
    Text OCXVersion() const;
    const Text& OCXFilename() const { return fileName; }
    // The folder of OCXFilename, without a separator at its end unless it is the root of a drive.
    Text OCXPath() const;
};

} // namespace dax
