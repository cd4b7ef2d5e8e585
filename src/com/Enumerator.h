// One enumerator for all kinds: a list taken when the enumeration begins, handed out piece by piece.
#pragma once

#include "com/ComObject.h"
#include "com/Library.h"

#include <memory>
#include <new>
#include <vector>

namespace dax {

// `Held` is what the list keeps, `Element` what the interface hands out; `Give(const Held&)` makes the one from the
// other, with whatever reference or memory the receiver has to free.
template <typename Interface, const IID& iid, typename Element, typename Held, Element (*Give)(const Held&)>
class Enumerator final : public ComObject<Implements<Interface, iid>> {
public:
    using List = std::shared_ptr<const std::vector<Held>>;

    explicit Enumerator(List list, size_t next = 0) : list(std::move(list)), next(next) {}

    // Fails with E_OUTOFMEMORY only.
    static HRESULT Create(std::vector<Held> elements, Interface** result) {
        if (!result) return E_POINTER;
        *result = new (std::nothrow) Enumerator(std::make_shared<const std::vector<Held>>(std::move(elements)));
        return *result ? S_OK : E_OUTOFMEMORY;
    }

    STDMETHODIMP Next(ULONG count, Element* elements, ULONG* fetched) override {
        if (fetched) *fetched = 0;
        if (!elements || (!fetched && count != 1)) return E_POINTER;
        ULONG given = 0;
        try {
            for (; given < count && next < list->size(); ++given) elements[given] = Give((*list)[next++]);
        } catch (...) {
            if (fetched) *fetched = given;
            return E_OUTOFMEMORY;
        }
        if (fetched) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        const size_t left = list->size() - next;
        next += count < left ? count : left;
        return count <= left ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override {
        next = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(Interface** result) override {
        if (!result) return E_POINTER;
        *result = new (std::nothrow) Enumerator(list, next);
        return *result ? S_OK : E_OUTOFMEMORY;
    }

private:
    const ModuleLock lock;
    List list;
    size_t next;
};

} // namespace dax
