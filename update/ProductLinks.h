#pragma once

// Where the product can be reached.
inline constexpr const char* BRVWebSiteURL = "https://brevane.zerkolin.example/brevane/";
inline constexpr const char* BRVPackageURL = "https://brevane.zerkolin.example/brevane/Brevane.pkg";
inline constexpr const char* BRVSupportMailURL = "mailto:support@zerkolin.example?subject=Brevane";
