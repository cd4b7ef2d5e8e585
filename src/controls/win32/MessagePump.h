// Lets pending window messages be processed once.
#pragma once

namespace dax {

// Dispatches what waits in the calling thread's queue and returns when it is empty, or after a bounded number of
// messages when some window never ceases to post. A quit message is left for the host's own loop.
void ProcessPendingMessages();

} // namespace dax
