#pragma once

namespace platform {

// What a main loop needs to serve Queue::main(). Both are for the main thread.

// Readable while tasks wait. It stays open; the loop only watches it.
int mainQueueDescriptor();

// Runs the tasks that wait now, in order. Tasks that they add wait for the next call. Inside of one of its tasks, as
// in the loop of a modal window that a task shows, it runs nothing, because the queue is serial; the descriptor is
// not readable then.
void serveMainQueue();

} // namespace platform
