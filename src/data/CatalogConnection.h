// From the connector to a catalog that it lists.
#pragma once

#include "base/Text.h"

namespace dax {

// The string that opens a catalog, made from the one that opens the connector: the same server with another catalog,
// login and password. An empty login keeps the connector's own. A connector in a file lists files, by their whole
// path or beside itself; a name without an ending gets the connector's. Throws Error when a quote of the string does
// not end.
Text CatalogConnection(const Text& connector, const Text& catalog, const Text& login, const Text& password);

} // namespace dax
