#pragma once

// The login manager on the system bus.
namespace platform::LoginService {

inline constexpr const char* Name = "org.freedesktop.login1";
inline constexpr const char* Object = "/org/freedesktop/login1";
inline constexpr const char* Manager = "org.freedesktop.login1.Manager";
inline constexpr const char* Session = "org.freedesktop.login1.Session";

} // namespace platform::LoginService
