#include "base/Error.h"

#include "base/Secrets.h"

#include <new>

namespace dax {

Error::Error(int32_t code, const Text& text)
    : number(code), description(MaskPasswords(text)), utf8(ToUtf8(description)) {}

Error CurrentError() {
    try {
        throw;
    } catch (const Error& error) {
        return error;
    } catch (const std::bad_alloc&) {
        return Error(ErrorNumbers::OutOfMemory, u"Out of memory.");
    } catch (const std::exception& error) {
        return Error(FromUtf8(error.what()));
    } catch (...) {
        return Error(u"An unknown error occurred.");
    }
}

} // namespace dax
