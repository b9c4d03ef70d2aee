#pragma once

// Whether the question about automatic updates, which is asked when the application ends, is settled. A boolean.
inline constexpr const char* BRVDidAskAboutAutoUpdates = "DidAskAboutAutoUpdates";
// Whether the page of the first start was closed without an answer, so that it does not come again. A boolean.
inline constexpr const char* BRVDidDismissFirstStart = "DidDismissFirstStart";
