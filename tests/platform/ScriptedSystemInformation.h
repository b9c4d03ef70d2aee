#pragma once

#include "platform/SystemInformation.h"

#include <cstdint>
#include <string>

// The machine and the account that a test pretends to run on. Any thread.
namespace scripted::system {

// System 14.0.0, user 501, process 812, version 1234, root "" and a home in which nothing can be made; no files.
void reset();

void setOperatingSystemVersion(platform::OperatingSystemVersion version); // before 10.10 there is no version query
void setUserIdentifiers(std::uint32_t real, std::uint32_t effective);
void setProcessIdentifier(std::int32_t identifier);
void setHomeDirectory(const std::string& path);
void setBundleVersion(const std::string& version);

// How often more sudden termination was disabled than enabled since reset().
int suddenTerminationDisabled();

// What systemPath puts before a path.
void setRoot(const std::string& root);

// Makes fileExists true for exactly this path; files on disk don't count.
void addFile(const std::string& path);
void removeFile(const std::string& path);

} // namespace scripted::system
