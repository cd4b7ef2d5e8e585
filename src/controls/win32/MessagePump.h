// Lets pending window messages be processed once.
#pragma once

namespace dax {

// Dispatches the calling thread's queue and returns when it is empty, or after a bounded number of
// messages when some window keeps posting. A quit message is left for the host's own loop.
void ProcessPendingMessages();

} // namespace dax
