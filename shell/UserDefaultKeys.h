#pragma once

// Whether the question about automatic updates, which is asked when the application ends, is settled. A boolean.
inline constexpr const char* BRVDidAskAboutAutoUpdates = "DidAskAboutAutoUpdates";
