#pragma once

#include <functional>

// The main thread's queue: everything a user sees, every completion and
// every notification observer runs there.
class ZuviMainQueue
{
public:
    // Queues the block to run on the main thread's event loop, later, even
    // when called from the main thread itself (the "add operation" rule).
    static void post(std::function<void()> block);

    static bool isMainThread();
};
