// One template for all enumerators: of a list as it was when the enumeration began.
#pragma once

#include "com/ComError.h"
#include "com/ComObject.h"
#include "com/Library.h"
#include "com/Variant.h"

#include <memory>
#include <new>
#include <vector>

namespace dax {

// `Stored` is the type in the list, `Element` the type that the interface returns; `Copy` converts the one into the
// other, with whatever reference or memory the receiver has to free.
template <typename Interface, const IID& iid, typename Element, typename Stored, Element (*Copy)(const Stored&)>
class Enumerator final : public ComObject<Implements<Interface, iid>> {
public:
    using List = std::shared_ptr<const std::vector<Stored>>;

    explicit Enumerator(std::vector<Stored> elements)
        : Enumerator(std::make_shared<const std::vector<Stored>>(std::move(elements)), 0) {}

    // Fails with E_OUTOFMEMORY only.
    static HRESULT Create(std::vector<Stored> elements, Interface** result) {
        if (!result) return E_POINTER;
        *result = new (std::nothrow) Enumerator(std::move(elements));
        return *result ? S_OK : E_OUTOFMEMORY;
    }

    STDMETHODIMP Next(ULONG count, Element* elements, ULONG* fetched) override {
        if (fetched) *fetched = 0;
        if (!elements || (!fetched && count != 1)) return E_POINTER;
        ULONG copied = 0;
        try {
            for (; copied < count && next < list->size(); ++copied) elements[copied] = Copy((*list)[next++]);
        } catch (...) {
            if (fetched) *fetched = copied;
            return E_OUTOFMEMORY;
        }
        if (fetched) *fetched = copied;
        return copied == count ? S_OK : S_FALSE;
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
    Enumerator(List list, size_t next) : list(std::move(list)), next(next) {}

    const ModuleLock lock;
    List list;
    size_t next;
};

template <typename Stored>
VARIANT CopyToVariant(const Stored& element) {
    VARIANT copy{};
    Variant(element).MoveTo(&copy);
    return copy;
}

template <typename Stored>
using VariantEnumerator = Enumerator<IEnumVARIANT, IID_IEnumVARIANT, VARIANT, Stored, CopyToVariant<Stored>>;

// The value of a _NewEnum. Throws ComError.
template <typename Stored>
IEnumVARIANT* EnumerateVariants(std::vector<Stored> elements) {
    IEnumVARIANT* result = nullptr;
    Check(VariantEnumerator<Stored>::Create(std::move(elements), &result));
    return result;
}

} // namespace dax
