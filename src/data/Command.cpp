#include "data/Command.h"

namespace dax {

int64_t Command::Execute(int) { return connection.ExecuteWith(commandText, parameters); }

} // namespace dax
