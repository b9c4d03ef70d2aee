#pragma once

// What a sanitizer adds to a program: memory and time of its own, and with the one for threads a thread that wakes.
#ifdef BREVANE_THREAD_SANITIZER
inline constexpr bool areThreadsChecked = true;
#else
inline constexpr bool areThreadsChecked = false;
#endif
#ifdef BREVANE_ADDRESS_SANITIZER
inline constexpr bool isInstrumented = true;
#else
inline constexpr bool isInstrumented = areThreadsChecked;
#endif
