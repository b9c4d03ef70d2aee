#pragma once

namespace helper {

// Defines those of the product's rights that have no definition yet. One that an administrator or the application's
// own preferences changed stays as it is. A failure is logged.
void installDefaultRights();

} // namespace helper
