#include "platform/Queue.h"

#include <cstdio>
#include <latch>
#include <memory>
#include <thread>
#include <vector>

using platform::Queue;

namespace {

// A queue that never runs out of work.
void keepBusy(const std::shared_ptr<Queue>& queue)
{
    queue->async([queue] { keepBusy(queue); });
}

} // namespace

int main()
{
    std::latch started(8);
    for (int index = 0; index < 4; ++index) {
        auto queue = Queue::createSerial("com.zerkolin.busy");
        queue->async([&started] { started.count_down(); });
        keepBusy(queue);
        Queue::global()->async([&started] {
            started.count_down();
            std::this_thread::sleep_for(std::chrono::hours(1));
        });
    }
    started.wait();
    std::puts("ready");
    return 0;
}
