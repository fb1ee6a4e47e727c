// Which sanitizer a test runs under, for the few tests that cannot.
#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool UNDER_SANITIZER = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool UNDER_SANITIZER = true;
#else
inline constexpr bool UNDER_SANITIZER = false;
#endif
#else
inline constexpr bool UNDER_SANITIZER = false;
#endif

#if defined(__SANITIZE_THREAD__)
inline constexpr bool UNDER_THREAD_SANITIZER = true;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
inline constexpr bool UNDER_THREAD_SANITIZER = true;
#else
inline constexpr bool UNDER_THREAD_SANITIZER = false;
#endif
#else
inline constexpr bool UNDER_THREAD_SANITIZER = false;
#endif
