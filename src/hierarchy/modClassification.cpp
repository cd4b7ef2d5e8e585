#include "hierarchy/modClassification.h"

namespace dax::modClassification {

Text GetClassification(const PropertyCollection& properties) { return GetText(properties, u"Classification", {}); }

void Summary::Add(const PropertyCollection& properties) {
    if (isMixed) return;
    Text classification = GetClassification(properties);
    if (isEmpty) {
        common = std::move(classification);
        isEmpty = false;
    } else if (classification != common) {
        isMixed = true;
    }
}

Text Summary::Result() const { return isMixed ? Text(u"[multiple classifications]") : common; }

} // namespace dax::modClassification
