#pragma once

#include <thread>

namespace platform::ui {

// Reads the fonts' configuration on a thread of its own while the toolkit connects to the display. The toolkit, which
// would read it when the first text is measured, then finds it done.
class FontPreparation {
public:
    FontPreparation();
    ~FontPreparation() { _thread.join(); }
    FontPreparation(const FontPreparation&) = delete;
    FontPreparation& operator=(const FontPreparation&) = delete;

private:
    std::thread _thread;
};

} // namespace platform::ui
