#include "tree/NodeTexts.h"

#include <stdexcept>

namespace dax {

void NodeTexts::Assign(const std::array<TextView, count>& texts) {
    size_t units = 0;
    bool needsTwo = false;
    for (const TextView text : texts) {
        if (text.size() > UINT32_MAX) throw std::length_error("a text of a node is too long");
        units += text.size();
        needsTwo = needsTwo || PackedText::NeedsTwoBytes(text);
    }
    std::unique_ptr<char[]> packed;
    if (units > 0) packed = std::make_unique_for_overwrite<char[]>(PackedText::BytesOf(units, needsTwo));
    char* to = packed.get();
    for (const TextView text : texts) to = PackedText::Pack(text, needsTwo, to);
    bytes = std::move(packed);
    isWide = needsTwo;
    for (size_t i = 0; i < count; ++i) lengths[i] = static_cast<uint32_t>(texts[i].size());
}

const char* NodeTexts::Begin(Which which) const {
    size_t units = 0;
    for (int before = 0; before < which; ++before) units += lengths[before];
    return bytes.get() + PackedText::BytesOf(units, isWide);
}

Text NodeTexts::Get(Which which) const {
    const char* from = Begin(which);
    return PackedText::Unpack(from, lengths[which], isWide);
}

bool NodeTexts::Is(Which which, TextView text) const {
    return text.size() == lengths[which] && PackedText::EqualsPacked(text, Begin(which), isWide);
}

void NodeTexts::Set(Which which, TextView text) {
    std::array<Text, count> kept;
    std::array<TextView, count> texts;
    for (const Which each : {Key, Caption, Tag}) {
        if (each != which) kept[each] = Get(each);
        texts[each] = each == which ? text : TextView(kept[each]);
    }
    Assign(texts);
}

} // namespace dax
