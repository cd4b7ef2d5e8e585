// Property bags for what hosts pass: their own bag, or a stream.
#pragma once

#include "com/ComPtr.h"
#include "controls/PropertyBag.h"

#include <ocidl.h>

#include <utility>
#include <vector>

namespace dax {

class HostBag final : public PropertyBag {
public:
    // `log` may be null; what cannot be read is reported to it.
    HostBag(IPropertyBag& bag, IErrorLog* log) : bag(bag), log(log) {}

    Value ReadProperty(const Text& name, const Value& defaultValue) override;
    // Throws ComError when the host refuses.
    void WriteProperty(const Text& name, const Value& value, const Value& defaultValue) override;

private:
    IPropertyBag& bag;
    IErrorLog* log;
};

// Properties in memory, and their form in a stream.
class StreamBag final : public PropertyBag {
public:
    // Reads just what Save has written, and nothing from an empty stream. Throws ComError for anything else.
    static StreamBag Load(IStream& stream);
    void Save(IStream& stream) const;

    Value ReadProperty(const Text& name, const Value& defaultValue) override;
    void WriteProperty(const Text& name, const Value& value, const Value& defaultValue) override;

private:
    std::vector<std::pair<Text, Value>> properties;
};

} // namespace dax
