#include "ocx/hosting/PropertyBags.h"

#include "com/ComError.h"
#include "com/Variant.h"

#include <algorithm>
#include <cstring>

namespace dax {

Value HostBag::ReadProperty(const Text& name, const Value& defaultValue) {
    Variant read; // hosts look at what is in it
    if (FAILED(bag.Read(ToWide(name).c_str(), &read, log))) return defaultValue;
    Value value = ToValue(read, defaultValue);
    return IsNull(value) ? defaultValue : value;
}

void HostBag::WriteProperty(const Text& name, const Value& value, const Value& defaultValue) {
    if (value == defaultValue) return;
    Variant written = Variant::FromValue(value);
    Check(bag.Write(ToWide(name).c_str(), &written));
}

namespace {

// In a stream: the mark, the length of the rest, the number of properties; for each its name, its kind (the index of
// Value's alternatives) and the value. Lengths and numbers are 32-bit, little-endian.
constexpr uint32_t Mark = 0x31584144; // "DAX1"
constexpr uint32_t LongestBody = 1 << 24;

class Writer {
public:
    void Put(const void* data, size_t size) {
        const auto* bytes = static_cast<const char*>(data);
        body.insert(body.end(), bytes, bytes + size);
    }
    void Number(uint32_t number) { Put(&number, sizeof number); }
    void Words(const Text& text) {
        Number(static_cast<uint32_t>(text.size()));
        Put(text.data(), text.size() * sizeof(char16_t));
    }
    std::vector<char> body;
};

class Reader {
public:
    explicit Reader(const std::vector<char>& body) : body(body) {}
    void Take(void* data, size_t size) {
        if (size > body.size() - at) throw ComError(E_INVALIDARG);
        std::memcpy(data, body.data() + at, size);
        at += size;
    }
    uint32_t Number() {
        uint32_t number = 0;
        Take(&number, sizeof number);
        return number;
    }
    Text TakeText() {
        const size_t length = Number();
        if (length > (body.size() - at) / sizeof(char16_t)) throw ComError(E_INVALIDARG);
        Text text(length, u'\0');
        Take(text.data(), length * sizeof(char16_t));
        return text;
    }

private:
    const std::vector<char>& body;
    size_t at = 0;
};

void PutValue(Writer& writer, const Value& value) {
    writer.Number(static_cast<uint32_t>(value.index()));
    if (const auto* isTrue = std::get_if<bool>(&value)) writer.Number(*isTrue ? 1 : 0);
    if (const auto* number = std::get_if<int64_t>(&value)) writer.Put(number, sizeof *number);
    if (const auto* real = std::get_if<double>(&value)) writer.Put(real, sizeof *real);
    if (const auto* text = std::get_if<Text>(&value)) writer.Words(*text);
    if (const auto* date = std::get_if<DateTime>(&value))
        for (const int part : {date->year, date->month, date->day, date->hour, date->minute, date->second})
            writer.Number(static_cast<uint32_t>(part));
}

Value TakeValue(Reader& reader) {
    switch (reader.Number()) {
    case 0:
        return {};
    case 1:
        return reader.Number() != 0;
    case 2: {
        int64_t number = 0;
        reader.Take(&number, sizeof number);
        return number;
    }
    case 3: {
        double real = 0;
        reader.Take(&real, sizeof real);
        return real;
    }
    case 4:
        return reader.TakeText();
    case 5: {
        DateTime date;
        for (int* part : {&date.year, &date.month, &date.day, &date.hour, &date.minute, &date.second})
            *part = static_cast<int>(reader.Number());
        return date;
    }
    default:
        throw ComError(E_INVALIDARG);
    }
}

// How much there was, at most `size`.
size_t ReadBytes(IStream& stream, void* data, size_t size) {
    size_t done = 0;
    while (done < size) {
        ULONG read = 0;
        Check(stream.Read(static_cast<char*>(data) + done, static_cast<ULONG>(size - done), &read));
        if (read == 0) break;
        done += read;
    }
    return done;
}

} // namespace

StreamBag StreamBag::Load(IStream& stream) {
    uint32_t head[2] = {};
    const size_t length = ReadBytes(stream, head, sizeof head);
    if (length == 0) return {};
    if (length < sizeof head || head[0] != Mark || head[1] > LongestBody) throw ComError(E_INVALIDARG);
    std::vector<char> body(head[1]);
    if (ReadBytes(stream, body.data(), body.size()) < body.size()) throw ComError(E_INVALIDARG);
    Reader reader(body);
    StreamBag bag;
    for (uint32_t left = reader.Number(); left > 0; --left) {
        Text name = reader.TakeText();
        bag.properties.emplace_back(std::move(name), TakeValue(reader));
    }
    return bag;
}

void StreamBag::Save(IStream& stream) const {
    Writer writer;
    writer.Number(static_cast<uint32_t>(properties.size()));
    for (const auto& [name, value] : properties) {
        writer.Words(name);
        PutValue(writer, value);
    }
    const uint32_t head[2] = {Mark, static_cast<uint32_t>(writer.body.size())};
    Check(stream.Write(head, sizeof head, nullptr));
    Check(stream.Write(writer.body.data(), head[1], nullptr));
}

Value StreamBag::ReadProperty(const Text& name, const Value& defaultValue) {
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [&name](const auto& property) { return property.first == name; });
    return found == properties.end() || found->second.index() != defaultValue.index() ? defaultValue : found->second;
}

void StreamBag::WriteProperty(const Text& name, const Value& value, const Value& defaultValue) {
    if (value != defaultValue) properties.emplace_back(name, value);
}

} // namespace dax
