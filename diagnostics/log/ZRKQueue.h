#pragma once

#include "platform/Queue.h"

#include <memory>
#include <string>

// The shared private work queue "com.zerkolin.main", made before main runs. It is not the main thread's queue.
const std::shared_ptr<platform::Queue>& ZRKQueueMain();

// A new serial queue without an explicit target.
std::shared_ptr<platform::Queue> ZRKQueueContextCreate(std::string label);

// A new serial queue that runs on another.
std::shared_ptr<platform::Queue> ZRKQueueCreate(std::string label, std::shared_ptr<platform::Queue> target);
