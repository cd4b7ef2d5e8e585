#include "ocx/lessonmap/StoryboardCollectionObject.h"

#include "base/Error.h"
#include "com/ClassObject.h"
#include "com/Enumerator.h"
#include "ocx/latebound/HostLesson.h"

#include <unordered_map>

namespace dax {

namespace {

const ClassEntry collectionEntry{&CLSID_StoryboardCollection,
                                 &IID__StoryboardCollection,
                                 nullptr,
                                 L"StoryboardCollection",
                                 L"DAX storyboards",
                                 nullptr,
                                 0};

class StoryboardCollectionObject final : public DualObject<_StoryboardCollection> {
public:
    explicit StoryboardCollectionObject(std::vector<std::shared_ptr<Storyboard>> storyboards)
        : DualObject(collectionEntry), storyboards(std::move(storyboards)) {}

    STDMETHODIMP get_Count(LONG* value) override {
        return Get(value, [this] { return storyboards.size(); });
    }
    STDMETHODIMP get_Item(VARIANT index, IDispatch** value) override {
        return Get(value, [&] { return storyboards[PlaceOf(index)]; });
    }
    STDMETHODIMP get__NewEnum(IUnknown** value) override {
        return Get(value, [this] {
            std::vector<ComPtr<IDispatch>> objects;
            for (const auto& each : storyboards) objects.emplace_back(HostObjectOf(each));
            return EnumerateVariants(std::move(objects));
        });
    }

private:
    size_t PlaceOf(const VARIANT& index) {
        const Variant plain = PlainOf(index);
        if (plain.vt == VT_BSTR) {
            if (places.empty()) {
                for (size_t i = 0; i < storyboards.size(); ++i) places.emplace(storyboards[i]->SBID(), i);
            }
            const auto found = places.find(FromBstr(plain.bstrVal));
            if (found == places.end()) throw Error(ErrorNumbers::InvalidCall, u"Invalid procedure call or argument");
            return found->second;
        }
        const int32_t place = NumberFrom(plain);
        if (place < 1 || static_cast<size_t>(place) > storyboards.size())
            throw Error(ErrorNumbers::OutOfRange, u"Subscript out of range");
        return static_cast<size_t>(place) - 1;
    }

    const std::vector<std::shared_ptr<Storyboard>> storyboards;
    std::unordered_map<Text, size_t> places; // by SBID, filled at the first lookup
};

} // namespace

_StoryboardCollection* ToInterface(std::vector<std::shared_ptr<Storyboard>> storyboards) {
    return new StoryboardCollectionObject(std::move(storyboards));
}

} // namespace dax
